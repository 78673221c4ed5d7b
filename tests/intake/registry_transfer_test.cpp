#include "core/app_state.h"
#include "core/databases.h"
#include "intake/registry_transfer.h"
#include "platform/runtime.h"
#include "store/database.h"
#include "store/schema.h"
#include "support/database_test.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace cvd::intake {
namespace {

constexpr platform::Hive kHive = platform::Hive::LocalMachine;

struct Row
{
    QString recipient;
    QString sender;
    QString message;
    QString carrier;
};

class RegistryTransferTest : public testing::DatabaseTest
{
protected:
    void SetUp() override
    {
        DatabaseTest::SetUp();
        db().exec(u"INSERT INTO cv_recipients (cv_name, cv_carrier, cv_group) VALUES "
                  "('Bob', 'tapnet', 0), ('alice', 'mailnet', 0), ('Ops Team', '', -1), "
                  "('night', '', -1)"_s);
    }

    platform::Registry& registry() { return state->registry; }

    // A message subkey as another program writes it: To, From, Message, then Ready when given.
    void write_message(const QString& name, const QString& to, const QString& from, const QString& message,
                       std::optional<qint64> ready = 1)
    {
        const QString key = messages_key() + u'\\' + name;
        ASSERT_TRUE(registry().create_key(kHive, key));
        registry().write_text(kHive, key, u"To"_s, to);
        registry().write_text(kHive, key, u"From"_s, from);
        registry().write_text(kHive, key, u"Message"_s, message);
        if (ready) {
            registry().write_number(kHive, key, u"Ready"_s, *ready);
        }
    }

    QStringList pending() { return registry().subkeys(kHive, messages_key()); }

    QList<Row> rows()
    {
        QList<Row> result;
        store::Statement select = db().prepare(
            u"SELECT cv_recipient, cv_from, cv_message, cv_carrier FROM cv_messages ORDER BY cv_message_id"_s);
        while (select.step()) {
            result.append({select.text(0).value_or(u"<null>"_s), select.text(1).value_or(u"<null>"_s),
                           select.text(2).value_or(u"<null>"_s), select.text(3).value_or(u"<null>"_s)});
        }
        return result;
    }

    QStringList row_messages()
    {
        QStringList result;
        for (const Row& row : rows()) {
            result.append(row.message);
        }
        return result;
    }
};

TEST_F(RegistryTransferTest, OnlyAStopOfOneIsARequestAndSettingsPublishHowToReachTheProgramAndClearAnOldOne)
{
    EXPECT_FALSE(IntegrationStopRequest(*state)); // no key at all
    ASSERT_TRUE(registry().create_key(kHive, transfer_key()));
    EXPECT_FALSE(IntegrationStopRequest(*state)); // no value
    // Only a Stop of one is a request.
    for (const QString& stored : {u"0"_s, u"2"_s, u"-1"_s, u"yes"_s, u"1"_s}) {
        registry().write_text(kHive, transfer_key(), u"Stop"_s, stored);
        EXPECT_EQ(IntegrationStopRequest(*state), stored == u"1"_s) << stored.toStdString();
    }
    // The last, a request left behind by a program that has since gone, is cleared.

    IntegrationState integration;
    integration.socket_path = env.runtime_dir() + u"/CorvaneDesk.sock"_s;
    UpdateIntegrationSettings(*state, integration);

    for (const QString& key : {transfer_key(), messages_key(), recipients_key(), groups_key()}) {
        EXPECT_TRUE(registry().key_exists(kHive, key)) << key.toStdString();
    }
    const QString key = transfer_key();
    EXPECT_EQ(registry().value_names(kHive, key),
              (QStringList{u"DBDir"_s, u"Handle"_s, u"PollingDirectory"_s, u"SendCommand"_s, u"Socket"_s,
                           u"StartCommand"_s, u"Stop"_s}));
    EXPECT_EQ(registry().read_text(kHive, key, u"PollingDirectory"_s), state->global_db_folder);
    EXPECT_EQ(registry().read_text(kHive, key, u"DBDir"_s), state->global_db_folder);
    EXPECT_EQ(registry().read_text(kHive, key, u"StartCommand"_s), env.program_folder() + u"cvd /minimized"_s);
    EXPECT_EQ(registry().read_text(kHive, key, u"SendCommand"_s), env.program_folder() + u"cvd"_s);
    // Handle is a number, the process id; Socket is the channel's path as text.
    EXPECT_EQ(registry().read_number(kHive, key, u"Handle"_s), QCoreApplication::applicationPid());
    EXPECT_EQ(registry().read_text(kHive, key, u"Socket"_s), integration.socket_path);
    EXPECT_EQ(registry().read_number(kHive, key, u"Socket"_s), std::nullopt);
    EXPECT_EQ(registry().read_number(kHive, key, u"Stop"_s), 0);
    EXPECT_FALSE(IntegrationStopRequest(*state));
}

TEST_F(RegistryTransferTest, TheRunningMarkerIsHeldExactlyWhileRunningSaysOne)
{
    IntegrationState integration;
    const QString runtime = state->runtime_dir;
    ASSERT_FALSE(platform::running_marker_is_held(runtime));
    const struct
    {
        int value;
        bool held;
    } steps[] = {
        {1, true},  {1, true}, // written again on each tick
        {0, false}, {0, false}, {1, true}, {0, false},
    };
    for (const auto& step : steps) {
        UpdateIntegrationRunning(*state, integration, step.value);
        EXPECT_EQ(registry().read_number(kHive, transfer_key(), u"Running"_s), step.value);
        EXPECT_EQ(platform::running_marker_is_held(runtime), step.held) << "after Running " << step.value;
    }
    UpdateIntegrationRunning(*state, integration, 1);
    integration = IntegrationState(); // the program's state goes away with it
    EXPECT_FALSE(platform::running_marker_is_held(runtime));
}

TEST_F(RegistryTransferTest, PublishingRebuildsThePlainAndTheGroupList)
{
    ASSERT_TRUE(registry().create_key(kHive, recipients_key()));
    registry().write_number(kHive, recipients_key(), u"Old Name"_s, 0); // a recipient renamed since
    publish_recipients(*state);
    publish_groups(*state);

    EXPECT_EQ(registry().value_names(kHive, recipients_key()), (QStringList{u"Bob"_s, u"alice"_s}));
    EXPECT_EQ(registry().value_names(kHive, groups_key()), (QStringList{u"Ops Team"_s, u"night"_s}));
    for (const QString& key : {recipients_key(), groups_key()}) {
        for (const QString& name : registry().value_names(kHive, key)) {
            EXPECT_EQ(registry().read_number(kHive, key, name), 0) << name.toStdString();
        }
    }

    // Again after a change: the name that went is gone, the new one is there, the rest stays.
    state->global_db.exec(u"UPDATE cv_recipients SET cv_name = 'Carol' WHERE cv_name = 'alice'"_s);
    publish_recipients(*state);
    EXPECT_EQ(registry().value_names(kHive, recipients_key()), (QStringList{u"Bob"_s, u"Carol"_s}));

    // A database failure is passed over: the key is rebuilt empty and nobody is told.
    state->global_db.close();
    publish_recipients(*state);
    EXPECT_TRUE(registry().key_exists(kHive, recipients_key()));
    EXPECT_TRUE(registry().value_names(kHive, recipients_key()).isEmpty());
    EXPECT_TRUE(env.prompter.boxes.isEmpty());
}

TEST_F(RegistryTransferTest, AReadyMessageBecomesOneRowWithTrimmedFieldsAndItsSubkeyGoes)
{
    ASSERT_TRUE(registry().create_key(kHive, messages_key()));
    write_message(u"job-17"_s, u"  BOB  "_s, u" ops desk "_s, u"  Disk full on 'db1'  "_s);
    state->error_count = 4;
    check_registry(*state);

    EXPECT_EQ(state->error_count, 0);
    const QList<Row> made = rows();
    ASSERT_EQ(made.size(), 1);
    EXPECT_EQ(made[0].recipient, u"bob"_s);
    EXPECT_EQ(made[0].sender, u"ops desk"_s);
    EXPECT_EQ(made[0].message, u"Disk full on 'db1'"_s);
    EXPECT_EQ(made[0].carrier, u"tapnet"_s);
    EXPECT_TRUE(pending().isEmpty());

    store::Statement row =
        db().prepare(u"SELECT cv_transaction, cv_last_try, cv_sent, cv_scheduled FROM cv_messages"_s);
    ASSERT_TRUE(row.step());
    EXPECT_GT(row.integer(0).value_or(0), 0);
    EXPECT_EQ(row.date(1), env.clock.now().addSecs(-15)); // due for the engine at once
    EXPECT_EQ(row.integer(2), 0);
    EXPECT_EQ(row.integer(3), 0);
}

TEST_F(RegistryTransferTest, IncompleteMessagesStayMarkedAndAnUnknownRecipientsMessageVanishes)
{
    ASSERT_TRUE(registry().create_key(kHive, messages_key()));
    write_message(u"a-no-ready"_s, u"bob"_s, u"ops"_s, u"text"_s, std::nullopt);
    write_message(u"b-ready-0"_s, u"bob"_s, u"ops"_s, u"text"_s, 0);
    write_message(u"c-no-text"_s, u"bob"_s, u"ops"_s, u"   "_s);
    write_message(u"d-no-recipient"_s, u"  "_s, u"ops"_s, u"text"_s);
    write_message(u"e-unknown"_s, u"Nobody"_s, u"ops"_s, u"hello"_s); // vanishes without a row
    for (int tick = 0; tick < 2; ++tick) {
        check_registry(*state);
    }
    EXPECT_EQ(pending(), (QStringList{u"a-no-ready"_s, u"b-ready-0"_s, u"c-no-text"_s, u"d-no-recipient"_s}));
    const struct
    {
        QString name;
        std::optional<qint64> status;
    } expected[] = {
        {u"a-no-ready"_s, std::nullopt}, {u"b-ready-0"_s, std::nullopt}, {u"c-no-text"_s, 1}, {u"d-no-recipient"_s, 1}};
    for (const auto& e : expected) {
        EXPECT_EQ(registry().read_number(kHive, messages_key() + u'\\' + e.name, u"Status"_s), e.status)
            << e.name.toStdString();
    }
    EXPECT_TRUE(rows().isEmpty());
    EXPECT_TRUE(env.prompter.boxes.isEmpty());

    // Once the writer finishes, the message is taken.
    registry().write_number(kHive, messages_key() + u"\\a-no-ready"_s, u"Ready"_s, 1);
    check_registry(*state);
    EXPECT_EQ(row_messages(), QStringList{u"text"_s});
    EXPECT_FALSE(pending().contains(u"a-no-ready"_s));
}

TEST_F(RegistryTransferTest, AtMostEverySecondReadyMessageIsTakenPerTick)
{
    ASSERT_TRUE(registry().create_key(kHive, messages_key()));
    for (const QString& name : {u"m1"_s, u"m2"_s, u"m3"_s, u"m4"_s, u"m5"_s}) {
        write_message(name, u"alice"_s, QString(), name);
    }
    // After a deletion the next subkey moves up to the index just used and waits for the next tick.
    const QList<QStringList> ticks = {
        {u"m1"_s, u"m3"_s, u"m5"_s},
        {u"m1"_s, u"m3"_s, u"m5"_s, u"m2"_s},
        {u"m1"_s, u"m3"_s, u"m5"_s, u"m2"_s, u"m4"_s},
    };
    for (const QStringList& taken : ticks) {
        check_registry(*state);
        EXPECT_EQ(row_messages(), taken);
    }
    EXPECT_TRUE(pending().isEmpty());
    EXPECT_EQ(rows().first().carrier, u"mailnet"_s);
    EXPECT_EQ(rows().first().sender, QString()); // a sender may be empty
}

TEST_F(RegistryTransferTest, AnyNameOfASubkeyIsTakenOrPassedOverAlone)
{
    const QStringList odd{u"%"_s, u"50%"_s, u"job 1"_s, u"ünï"_s, u"h1"_s, u"h2"_s, u"h3"_s};
    for (const QString& name : odd) {
        write_message(name, u"alice"_s, QString(), name);
    }
    // Folders renamed by hand to names no key path can reach: the lone "%", "%2F" and a backslash.
    const QString folder = registry().key_folder(kHive, messages_key()) + u'/';
    const QStringList hand_made{u"%"_s, u"x%2Fy"_s, u"a\\b"_s};
    for (int i = 0; i < hand_made.size(); ++i) {
        ASSERT_TRUE(QDir().rename(folder + odd.at(4 + i), folder + hand_made.at(i)));
    }
    for (int tick = 0; tick < 4; ++tick) {
        check_registry(*state);
    }
    QStringList taken = row_messages();
    taken.sort();
    EXPECT_EQ(taken, odd.mid(0, 4)); // in byte order already
    for (const QString& name : hand_made) {
        EXPECT_TRUE(QDir(folder + name).exists()) << name.toStdString();
    }
}

TEST_F(RegistryTransferTest, AValueThatCannotBeReadIsNamedAndItsSubkeyPassedOver)
{
    for (const QString& name : {u"a-fifo"_s, u"b-device"_s, u"c-huge"_s, u"d-good"_s}) {
        write_message(name, u"alice"_s, QString(), name);
    }
    const QString folder = registry().key_folder(kHive, messages_key()) + u'/';
    const QByteArray fifo = QFile::encodeName(folder + u"a-fifo/Message"_s);
    ASSERT_TRUE(QFile::remove(QFile::decodeName(fifo)) && ::mkfifo(fifo.constData(), 0600) == 0);
    ASSERT_TRUE(QFile::remove(folder + u"b-device/Ready"_s) &&
                QFile::link(u"/dev/zero"_s, folder + u"b-device/Ready"_s));
    registry().write_text(kHive, messages_key() + u"\\c-huge"_s, u"To"_s, QString(64 * 1024 + 1, u'a'));

    ::testing::internal::CaptureStderr();
    check_registry(*state);
    const QString said = QString::fromStdString(::testing::internal::GetCapturedStderr());
    EXPECT_EQ(row_messages(), QStringList{u"d-good"_s});
    EXPECT_EQ(pending(), (QStringList{u"a-fifo"_s, u"b-device"_s, u"c-huge"_s}));
    const QStringList lines = said.split(u'\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 3) << said.toStdString();
    EXPECT_TRUE(lines[0].contains(u"a-fifo\\Message"_s)) << lines[0].toStdString();
    EXPECT_TRUE(lines[1].contains(u"b-device\\Ready"_s)) << lines[1].toStdString();
    EXPECT_TRUE(lines[2].contains(u"c-huge\\To"_s)) << lines[2].toStdString();
}

} // namespace
} // namespace cvd::intake
