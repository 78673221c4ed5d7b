#include "addressbook/groups.h"
#include "addressbook/pickers.h"
#include "addressbook/recipients_store.h"
#include "core/app_state.h"
#include "core/databases.h"
#include "core/record_format.h"
#include "exchange/text_exchange.h"
#include "intake/registry_transfer.h"
#include "store/database.h"
#include "store/schema.h"
#include "support/database_test.h"
#include "support/printers.h"

#include <QDir>
#include <QFile>
#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace cvd::exchange {

namespace {

TEST(TextFormat, FieldsAreReadAsWrittenWithDoubledQuotesAndLineBreaksInsideTexts)
{
    const QString line = record_line({quoted_field(u"say \"hi\", then\r\ngo ü"_s), number_field(-12), flag_field(true),
                                      flag_field(false), null_field(), quoted_field(QString())});
    EXPECT_EQ(line, u"\"say \"\"hi\"\", then\r\ngo ü\",-12,#TRUE#,#FALSE#,#NULL#,\"\"\r\n"_s);
    const ParsedFile parsed = parse_records(line + u"\r\n  \r\n 7 , \"x\"  \n#true#"_s);
    ASSERT_FALSE(parsed.malformed);
    ASSERT_EQ(parsed.records.size(), 3);
    const Record expected_first{{Field::Kind::Quoted, u"say \"hi\", then\r\ngo ü"_s},
                                {Field::Kind::Bare, u"-12"_s},
                                {Field::Kind::Hashed, u"TRUE"_s},
                                {Field::Kind::Hashed, u"FALSE"_s},
                                {Field::Kind::Hashed, u"NULL"_s},
                                {Field::Kind::Quoted, QString()}};
    EXPECT_EQ(parsed.records.at(0), expected_first);
    const Record expected_second{{Field::Kind::Bare, u"7"_s}, {Field::Kind::Quoted, u"x"_s}};
    EXPECT_EQ(parsed.records.at(1), expected_second);
    EXPECT_EQ(parsed.records.at(2), (Record{{Field::Kind::Hashed, u"TRUE"_s}}));

    const std::pair<QString, qsizetype> malformed[] = {
        {u"\"a\",1\r\n\"open"_s, 1},       // unterminated quote
        {u"\"a\"b,1\r\n"_s, 0},            // text after a closing quote
        {u"1,2\r\n#TRUE,3\r\n4\r\n"_s, 1}, // unclosed number sign
    };
    for (const auto& [content, good_records] : malformed) {
        const ParsedFile bad = parse_records(content);
        EXPECT_TRUE(bad.malformed) << content.toStdString();
        EXPECT_EQ(bad.records.size(), good_records) << content.toStdString();
    }

    EXPECT_EQ(field_as_number({Field::Kind::Quoted, u" 42 "_s}), std::optional<std::optional<qint64>>(42));
    EXPECT_FALSE(field_as_number({Field::Kind::Bare, u"4x"_s}).has_value());
    EXPECT_FALSE(field_as_number({Field::Kind::Hashed, u"TRUE"_s}).has_value());
    EXPECT_EQ(field_as_flag({Field::Kind::Bare, u"-1"_s}), std::optional<std::optional<bool>>(true));
    EXPECT_EQ(field_as_flag({Field::Kind::Hashed, u"NULL"_s}),
              (std::optional<std::optional<bool>>{std::in_place, std::nullopt}));
    EXPECT_FALSE(field_as_flag({Field::Kind::Quoted, u"yes"_s}).has_value());
}

// The source database is the fixture's; targets are databases of their own.
class TextExchangeTest : public testing::DatabaseTest
{
protected:
    std::unique_ptr<AppState> make_db(const QString& folder)
    {
        auto target = env.make_state();
        target->global_db_folder = env.path(folder + u"/g/"_s);
        target->user_db_folder = env.path(folder + u"/u/"_s);
        QDir().mkpath(target->global_db_folder);
        QDir().mkpath(target->user_db_folder);
        store::create_global_database(global_db_path(*target));
        open_database(*target);
        return target;
    }

    // Every text column holds a quote or a separator, as real names do.
    static void add_carrier(AppState& state, const QString& name, const QString& phone, int retries = 0)
    {
        store::Statement insert = state.global_db.prepare(
            u"INSERT INTO cv_carriers (cv_name, cv_phone_number, cv_modem_settings, cv_maxchars, cv_init_string, "
            "cv_retries, cv_message_limit, cv_dial_type, cv_auth_type, cv_auth_user, cv_auth_pass, cv_relay_mail, "
            "cv_relay_server, cv_priority) VALUES (?1, ?2, '1200,E,7,1', 160, 'AT&F \"x\"', ?3, 0, 'tap', 1, 'usr', "
            "'p,w\"d', -1, NULL, 100)"_s);
        insert.bind(1, name).bind(2, phone).bind(3, retries).exec();
    }

    static void add_recipient(AppState& state, const QString& name, const QString& full_name, bool group,
                              const QString& id = u"555"_s)
    {
        store::Statement insert = state.global_db.prepare(
            u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_id, cv_carrier, cv_maxchars, cv_alpha, "
            "cv_on_call, cv_ad_hoc, cv_drop_control, cv_group, cv_SendSubject, cv_remove_from, cv_extra1, "
            "cv_extra2, cv_priority) VALUES (?1, ?2, ?3, 'net', 160, -1, 0, ?4, -1, ?4, 0, -1, 'e1, \"q\"', NULL, 7)"_s);
        insert.bind(1, name).bind(2, full_name).bind(3, id).bind_bool(4, group).exec();
    }

    static void add_member(AppState& state, const QString& group, const QString& recipient)
    {
        store::Statement insert =
            state.global_db.prepare(u"INSERT INTO cv_groups (cv_group, cv_recipient) VALUES (?1, ?2)"_s);
        insert.bind(1, group).bind(2, recipient).exec();
    }

    // Every row of a table, every column, null marked, sorted.
    static QStringList dump(AppState& state, const QString& table, const QString& columns = u"*"_s)
    {
        store::Statement query = state.global_db.prepare(u"SELECT "_s + columns + u" FROM "_s + table);
        QStringList rows;
        while (query.step()) {
            QStringList cells;
            for (int i = 0; i < query.column_count(); ++i) {
                cells.append(query.is_null(i) ? u"<null>"_s : query.text(i).value_or(QString()));
            }
            rows.append(cells.join(u'|'));
        }
        rows.sort();
        return rows;
    }

    void write_file(const QString& name, const QByteArray& content) const
    {
        QFile out(env.path(name));
        ASSERT_TRUE(out.open(QIODevice::WriteOnly));
        out.write(content);
    }

    static QByteArray read_file(const QString& path)
    {
        QFile in(path);
        return in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray();
    }
};

const QString kCarrierColumns =
    u"cv_name, cv_phone_number, cv_modem_settings, cv_maxchars, cv_init_string, cv_message_limit, cv_dial_type, "
    "cv_auth_type, cv_auth_user, cv_auth_pass, cv_relay_mail, cv_relay_server, cv_priority"_s;

TEST_F(TextExchangeTest, EveryKindExportedAndImportedIntoAFreshDatabaseGivesTheSameRows)
{
    // An empty table writes no file, removes an old one and says so; no file name, no box.
    write_file(u"carriers.txt"_s, "old");
    EXPECT_EQ(export_text(*state, ExchangeKind::Carriers, env.path(u"carriers.txt"_s)).box,
              (Notice{u"Unable to write export file. Invalid path or insufficient rights."_s, u"Export Failed"_s}));
    EXPECT_FALSE(QFile::exists(env.path(u"carriers.txt"_s)));
    EXPECT_FALSE(export_text(*state, ExchangeKind::Carriers, QString()).box.has_value());

    add_carrier(*state, u"Zeta \"Z\", Ltd"_s, u"+49 (0) 30 Müller"_s, 3);
    add_carrier(*state, u"net"_s, u"1,2\r\n3"_s);
    add_recipient(*state, u"ann"_s, u"Ann \"The\" Ólafsdóttir, MD"_s, false, u"a'b\"c"_s);
    add_recipient(*state, u"bob"_s, u"Bob"_s, false);
    add_recipient(*state, u"ops"_s, u"Operations, Nacht"_s, true);
    add_member(*state, u"ops"_s, u"ann"_s);
    add_member(*state, u"ops"_s, u"bob"_s);

    struct Case
    {
        ExchangeKind kind;
        QString noun;
        int count;
    };
    const Case cases[] = {
        {ExchangeKind::Carriers, u"carrier"_s, 2},
        {ExchangeKind::Recipients, u"recipient"_s, 2},
        {ExchangeKind::Groups, u"group"_s, 1},
        {ExchangeKind::Members, u"group member"_s, 2},
    };
    auto target = make_db(u"target"_s);
    for (const Case& item : cases) {
        const QString path = env.path(suggested_file_name(item.kind));
        const ExportResult exported = export_text(*state, item.kind, path);
        EXPECT_EQ(exported.exported, item.count);
        EXPECT_EQ(exported.box, (Notice{QString::number(item.count) + u" "_s + item.noun + u" records exported"_s,
                                        u"Export Complete"_s}));
        const ImportResult imported = import_text(*target, item.kind, path, false);
        EXPECT_EQ(imported.imported, item.count);
        EXPECT_EQ(imported.box, (Notice{QString::number(item.count) + u" "_s + item.noun + u" records imported,\n0 "_s +
                                            item.noun + u" records skipped."_s,
                                        u"Import Complete"_s}));
    }
    EXPECT_EQ(dump(*target, u"cv_carriers"_s, kCarrierColumns), dump(*state, u"cv_carriers"_s, kCarrierColumns));
    EXPECT_EQ(dump(*target, u"cv_carriers"_s, u"cv_name, cv_retries"_s),
              (QStringList{u"Zeta \"Z\", Ltd|0"_s, u"net|0"_s}));
    EXPECT_EQ(dump(*target, u"cv_recipients"_s), dump(*state, u"cv_recipients"_s));
    EXPECT_EQ(dump(*target, u"cv_groups"_s), dump(*state, u"cv_groups"_s));

    // The file itself, as other installations read it.
    EXPECT_EQ(
        read_file(env.path(u"members.txt"_s)),
        QByteArray("\"Version\",\"Group\",\"Recipient\"\r\n\"500\",\"ops\",\"ann\"\r\n\"500\",\"ops\",\"bob\"\r\n"));
    const QByteArray carriers = read_file(env.path(u"carriers.txt"_s));
    EXPECT_TRUE(
        carriers.startsWith("\"Version\",\"Name\",\"PhoneNumber\",\"ModemSettings\",\"MaxChars\",\"InitString\","
                            "\"MessageLimit\",\"DialType\",\"AuthType\",\"AuthUser\",\"AuthPassword\","
                            "\"RelayMail\",\"RelayServer\",\"Priority\"\r\n"
                            "\"500\",\"net\",\"1,2\r\n3\",\"1200,E,7,1\",160,\"AT&F \"\"x\"\"\",0,\"tap\",1,"
                            "\"usr\",\"p,w\"\"d\",#TRUE#,#NULL#,100\r\n"))
        << carriers.toStdString();
}

TEST_F(TextExchangeTest, FilesThatCannotBeImportedLeaveTheTablesAlone)
{
    const Notice error{u"Error importing records"_s, u"Import Error"_s};
    const Notice mismatch{u"Import file version mismatch"_s, u"Version Mismatch"_s};
    const QByteArray record = "\"ann\",\"Ann\",\"1\",\"net\",160,#TRUE#,#FALSE#,#FALSE#,#FALSE#,#FALSE#,#FALSE#,"
                              "#FALSE#,\"\",\"\",100\r\n";
    const std::pair<QByteArray, Notice> cases[] = {
        {"\"Version\",\"Name\",\"FullName\"\r\n", error},
        {"", error},
        {"\"499\"," + record, mismatch},
        {"\"Version\",\"Name\"\r\n\"600\"," + record, mismatch},
        {"\"five hundred\"," + record, mismatch},
        {"\"Version\"\r\n#NULL#," + record, mismatch},
    };
    int n = 0;
    for (const auto& [content, box] : cases) {
        const QString name = u"case%1.txt"_s.arg(++n);
        write_file(name, content);
        const ImportResult result = import_text(*state, ExchangeKind::Recipients, env.path(name), true);
        EXPECT_EQ(result.box, box) << content.toStdString();
        EXPECT_EQ(result.imported, 0);
    }
    EXPECT_TRUE(dump(*state, u"cv_recipients"_s).isEmpty());

    const ImportResult missing = import_text(*state, ExchangeKind::Recipients, env.path(u"nowhere.txt"_s), false);
    EXPECT_EQ(missing.box, (Notice{u"That file does not exist"_s, u"File Not Found"_s}));
    EXPECT_FALSE(import_text(*state, ExchangeKind::Recipients, QString(), false).box.has_value());

    // The heading is optional, and a bare 500 is the version as well.
    write_file(u"plain.txt"_s, "500," + record);
    const ImportResult plain = import_text(*state, ExchangeKind::Recipients, env.path(u"plain.txt"_s), false);
    EXPECT_EQ(plain.imported, 1);
    EXPECT_EQ(dump(*state, u"cv_recipients"_s, u"cv_name, cv_full_name, cv_alpha, cv_group"_s),
              QStringList{u"ann|Ann|-1|0"_s});
}

TEST_F(TextExchangeTest, OverwriteReplacesAnExistingNameAndOtherwiseSkipsIt)
{
    add_carrier(*state, u"net"_s, u"old"_s);
    add_carrier(*state, u"zed"_s, u"kept"_s);
    const QString path = env.path(u"carriers.txt"_s);
    export_text(*state, ExchangeKind::Carriers, path);
    write_file(u"carriers.txt"_s, read_file(path).replace("\"old\"", "\"new\"").replace("\"zed\"", "\"ypsilon\""));

    const ImportResult kept = import_text(*state, ExchangeKind::Carriers, path, false);
    EXPECT_EQ(kept.box, (Notice{u"1 carrier records imported,\n1 carrier records skipped."_s, u"Import Complete"_s}));
    EXPECT_EQ(dump(*state, u"cv_carriers"_s, u"cv_name, cv_phone_number"_s),
              (QStringList{u"net|old"_s, u"ypsilon|kept"_s, u"zed|kept"_s}));

    // Names compare without regard to case, as everywhere in the address book.
    write_file(u"carriers.txt"_s, read_file(path).replace("\"net\"", "\"NET\""));
    const ImportResult replaced = import_text(*state, ExchangeKind::Carriers, path, true);
    EXPECT_EQ(replaced.imported, 2);
    EXPECT_EQ(replaced.skipped, 0);
    EXPECT_EQ(dump(*state, u"cv_carriers"_s, u"cv_name, cv_phone_number"_s),
              (QStringList{u"NET|new"_s, u"ypsilon|kept"_s, u"zed|kept"_s}));
}

TEST_F(TextExchangeTest, AMalformedRecordEndsTheImportAndTheEarlierRecordsStay)
{
    const QByteArray good1 = "\"500\",\"a\",\"1\",\"9600\",160,\"\",0,\"tap\",0,\"\",\"\",#FALSE#,\"\",100\r\n";
    const QByteArray good3 = "\"500\",\"c\",\"1\",\"9600\",160,\"\",0,\"tap\",0,\"\",\"\",#FALSE#,\"\",100\r\n";
    const QByteArray bad[] = {
        "\"500\",\"b\",\"1\",\"9600\",160\r\n",                                               // too few fields
        "\"500\",\"b\",\"1\",\"9600\",lots,\"\",0,\"tap\",0,\"\",\"\",#FALSE#,\"\",100\r\n",  // not a number
        "\"500\",\"b\",\"1\",\"9600\",160,\"\",0,\"tap\",0,\"\",\"\",#MAYBE#,\"\",100\r\n",   // not a boolean
        "\"500\",\"b\",\"1\",\"9600\",160,\"\",0,\"tap\",0,\"\",\"\",#FALSE#,\"\",100,7\r\n", // too many
        "\"500\",\"b\",\"1\r\n",                                                              // open quote
    };
    int n = 0;
    for (const QByteArray& record : bad) {
        auto target = make_db(u"target%1"_s.arg(++n));
        write_file(u"bad.txt"_s, "\"Version\",\"Name\"\r\n" + good1 + record + good3);
        const ImportResult result = import_text(*target, ExchangeKind::Carriers, env.path(u"bad.txt"_s), false);
        EXPECT_EQ(result.box, (Notice{u"Error importing records"_s, u"Import Error"_s})) << record.toStdString();
        EXPECT_EQ(result.imported, 1);
        // Committed: another connection sees the record, and the run holds no transaction open.
        EXPECT_FALSE(target->global_db.in_transaction());
        store::Database other = store::Database::open(global_db_path(*target));
        store::Statement names = other.prepare(u"SELECT group_concat(cv_name) FROM cv_carriers"_s);
        ASSERT_TRUE(names.step());
        EXPECT_EQ(names.text(0), u"a"_s) << record.toStdString();
    }
}

TEST_F(TextExchangeTest, AFailedStatementLeavesNoneOfTheRunsRowsAndAnImportPublishesTheNames)
{
    for (int i = 1; i <= 5; ++i) {
        add_recipient(*state, u"r%1"_s.arg(i), u"R"_s, false);
    }
    const QString path = env.path(u"recip.txt"_s);
    ASSERT_EQ(export_text(*state, ExchangeKind::Recipients, path).exported, 5);
    auto target = make_db(u"target"_s);
    add_recipient(*target, u"kept"_s, u"Kept"_s, false);
    // The fourth insert of the run fails, as a full disk would fail it.
    target->global_db.exec(u"CREATE TRIGGER fail_fourth BEFORE INSERT ON cv_recipients WHEN (SELECT count(*) FROM "
                           "cv_recipients) >= 4 BEGIN SELECT RAISE(ABORT, 'disk full'); END"_s);

    const ImportResult failed = import_text(*target, ExchangeKind::Recipients, path, false);
    EXPECT_EQ(failed.box, (Notice{u"Error importing records"_s, u"Import Error"_s}));
    EXPECT_EQ(failed.imported, 0);
    EXPECT_EQ(dump(*target, u"cv_recipients"_s, u"cv_name"_s), QStringList{u"kept"_s});
    EXPECT_FALSE(target->global_db.in_transaction());

    target->global_db.exec(u"DROP TRIGGER fail_fourth"_s);
    // The chosen kind, not the file, decides whether a row is a group.
    const ImportResult groups = import_text(*target, ExchangeKind::Groups, path, false);
    EXPECT_EQ(groups.box, (Notice{u"5 group records imported,\n0 group records skipped."_s, u"Import Complete"_s}));
    EXPECT_EQ(dump(*target, u"cv_recipients"_s, u"cv_group"_s).count(u"-1"_s), 5);
    const auto published = [&](const QString& key) {
        return target->registry.value_names(platform::Hive::LocalMachine, key);
    };
    EXPECT_EQ(published(intake::recipients_key()), QStringList{u"kept"_s});
    EXPECT_EQ(published(intake::groups_key()), (QStringList{u"r1"_s, u"r2"_s, u"r3"_s, u"r4"_s, u"r5"_s}));
}

// Older files and other programs leave flags null; a null flag reads as false wherever rows are picked.
TEST_F(TextExchangeTest, ARowWhoseFlagsAreNullIsAPlainRecipientEverywhere)
{
    add_recipient(*state, u"ops"_s, u"Ops"_s, true);
    state->global_db.exec(
        u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_carrier) VALUES ('nul', 'Null', 'net')"_s);
    state->global_db.exec(
        u"INSERT INTO cv_messages (cv_recipient, cv_carrier, cv_message) VALUES ('nul', 'net', 'hi')"_s);

    const ExportResult exported = export_text(*state, ExchangeKind::Recipients, env.path(u"recip.txt"_s));
    EXPECT_EQ(exported.exported, 1);
    EXPECT_TRUE(read_file(env.path(u"recip.txt"_s)).contains("\r\n\"500\",\"nul\",\"Null\","));
    EXPECT_EQ(export_text(*state, ExchangeKind::Groups, env.path(u"groups.txt"_s)).exported, 1);

    using addressbook::RecipientListEntry;
    EXPECT_EQ(addressbook::recipient_list(*state), (QList<RecipientListEntry>{{u"nul"_s, u"Null"_s}}));
    EXPECT_EQ(addressbook::list_groups(*state), (QList<RecipientListEntry>{{u"ops"_s, u"Ops"_s}}));
    EXPECT_EQ(addressbook::picker_entries(*state, true),
              (QList<addressbook::PickerEntry>{{u"Null"_s, u"nul"_s, QString()}, {u"Ops (G)"_s, u"ops"_s, u"7"_s}}));
    // Its message's cv_sent is null too: not sent, so the recipient stays.
    EXPECT_EQ(
        addressbook::delete_listed_recipient(*state, u"nul"_s),
        (Notice{u"A recipient can not be deleted if there are cv_messages pending for it"_s, u"Unable to Delete"_s}));

    // Other programs find it among the recipients, not among the groups.
    intake::publish_recipients(*state);
    intake::publish_groups(*state);
    const QString transfer = u"SOFTWARE\\Halvern\\Transfer\\"_s;
    EXPECT_EQ(state->registry.value_names(platform::Hive::LocalMachine, transfer + u"Recipients"_s).size(), 1);
    EXPECT_EQ(state->registry.value_names(platform::Hive::LocalMachine, transfer + u"Groups"_s).size(), 1);
}

TEST_F(TextExchangeTest, GroupMembersWithOverwriteKeepOnlyTheLastMemberOfEachGroup)
{
    for (const QString& name : {u"ann"_s, u"bob"_s, u"cy"_s}) {
        add_recipient(*state, name, name, false);
    }
    add_recipient(*state, u"ops"_s, u"Ops"_s, true);
    add_recipient(*state, u"lab"_s, u"Lab"_s, true);
    add_member(*state, u"ops"_s, u"ann"_s);
    add_member(*state, u"lab"_s, u"zed"_s);
    const QByteArray content = "\"Version\",\"Group\",\"Recipient\"\r\n"
                               "\"500\",\"ops\",\"ann\"\r\n"
                               "\"500\",\"ops\",\"bob\"\r\n"
                               "\"500\",\"nogroup\",\"ann\"\r\n"
                               "\"500\",\"lab\",\"cy\"\r\n"
                               "\"500\",\"lab\",\"ghost\"\r\n";
    write_file(u"members.txt"_s, content);
    const QString path = env.path(u"members.txt"_s);

    const ImportResult kept = import_text(*state, ExchangeKind::Members, path, false);
    EXPECT_EQ(kept.box,
              (Notice{u"2 group member records imported,\n2 group member records skipped."_s, u"Import Complete"_s}));
    EXPECT_EQ(dump(*state, u"cv_groups"_s), (QStringList{u"lab|cy"_s, u"lab|zed"_s, u"ops|ann"_s, u"ops|bob"_s}));

    // Each record clears its group first: ops keeps only bob, and lab's last record names an unknown
    // recipient, so lab ends with no member at all. That record counts neither way.
    const ImportResult replaced = import_text(*state, ExchangeKind::Members, path, true);
    EXPECT_EQ(replaced.imported, 3);
    EXPECT_EQ(replaced.skipped, 1);
    EXPECT_EQ(dump(*state, u"cv_groups"_s), QStringList{u"ops|bob"_s});
}

TEST_F(TextExchangeTest, ACancelledRunLeavesNothingAndPublishesNothing)
{
    const int count = static_cast<int>(kProgressStep) + 10;
    {
        store::Transaction transaction(db());
        for (int i = 0; i < count; ++i) {
            add_recipient(*state, u"r%1"_s.arg(i), u"R"_s, false);
        }
        transaction.commit();
    }
    const QString path = env.path(u"recip.txt"_s);
    ASSERT_EQ(export_text(*state, ExchangeKind::Recipients, path).exported, count);
    auto target = make_db(u"target"_s);
    add_recipient(*target, u"kept"_s, u"Kept"_s, false);

    // Cancel after the first report, in the middle of the run, and at its very end.
    for (const qsizetype stop_at : {qsizetype{0}, kProgressStep, qsizetype{count}}) {
        QList<std::pair<qsizetype, qsizetype>> reports;
        const ImportResult cancelled =
            import_text(*target, ExchangeKind::Recipients, path, false, [&](qsizetype done, qsizetype total) {
                reports.append({done, total});
                return done < stop_at;
            });
        SCOPED_TRACE(stop_at);
        EXPECT_TRUE(cancelled.cancelled);
        EXPECT_FALSE(cancelled.succeeded);
        EXPECT_EQ(cancelled.box, (Notice{u"The import was cancelled. Nothing was imported."_s, u"Import Cancelled"_s}));
        EXPECT_EQ(reports.last(), std::make_pair(stop_at, qsizetype{count}));
        EXPECT_EQ(dump(*target, u"cv_recipients"_s, u"cv_name"_s), QStringList{u"kept"_s});
        EXPECT_FALSE(target->global_db.in_transaction());
    }
    EXPECT_TRUE(target->registry.value_names(platform::Hive::LocalMachine, intake::recipients_key()).isEmpty());

    // A hook that lets the run go on sees it through to the end.
    qsizetype last_done = -1;
    const ImportResult done = import_text(*target, ExchangeKind::Recipients, path, false, [&](qsizetype at, qsizetype) {
        last_done = at;
        return true;
    });
    EXPECT_TRUE(done.succeeded);
    EXPECT_EQ(done.imported, count);
    EXPECT_EQ(last_done, count);
}

TEST(ExchangeBrowse, TheChooserTakesTheFilterAndAPathWithoutExtensionGetsTxt)
{
    EXPECT_EQ(browse_name_filter(), u"Text File (*.txt)"_s);
    EXPECT_EQ(with_default_extension(u"/tmp/out"_s), u"/tmp/out.txt"_s);
    EXPECT_EQ(with_default_extension(u"/tmp/a.b/out"_s), u"/tmp/a.b/out.txt"_s);
    EXPECT_EQ(with_default_extension(u"/tmp/out.csv"_s), u"/tmp/out.csv"_s);
    EXPECT_EQ(with_default_extension(QString()), QString());
}

} // namespace
} // namespace cvd::exchange
