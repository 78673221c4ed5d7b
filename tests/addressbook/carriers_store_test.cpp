#include "addressbook/carriers_store.h"
#include "store/database.h"
#include "store/schema.h"
#include "store/tables.h"
#include "support/database_test.h"
#include "support/printers.h"
#include "support/test_environment.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd::addressbook {

namespace {

using CarriersStoreTest = testing::DatabaseTest;

CarrierFrame named(Protocol protocol, const QString& name)
{
    CarrierFrame frame = default_frame(protocol);
    set_name_and_priority(frame, name, u"250"_s);
    return frame;
}

TEST_F(CarriersStoreTest, EveryProtocolsFrameIsStoredAndLoadedBackAndAnEditRewritesEveryColumn)
{
    SmtpFrame smtp = std::get<SmtpFrame>(named(Protocol::Smtp, u"mail"_s));
    smtp.domain = u"o'neil.example"_s;
    smtp.port = u"587 STARTTLS"_s;
    smtp.relay = true;
    smtp.relay_server = u"relay.example"_s;
    smtp.auth = AuthType::ForceLogin;
    smtp.username = u"ops"_s;
    smtp.password = u"p\"w"_s;
    TapFrame tap = std::get<TapFrame>(named(Protocol::Tap, u"tapnet"_s));
    tap.phone_number = u"+49 30 1234"_s;
    tap.line = {u"9600"_s, Parity::None, u"8"_s, u"2"_s};
    tap.msg_limit = u"12"_s;
    WctpFrame wctp = std::get<WctpFrame>(named(Protocol::Wctp, u"web"_s));
    wctp.host = u"wctp.example"_s;
    wctp.send_method = WctpSendMethod::EnterpriseHost;
    const CarrierFrame frames[] = {smtp, tap, wctp, named(Protocol::Tone, u"tone"_s), named(Protocol::Fax, u"fax"_s)};

    for (const CarrierFrame& frame : frames) {
        SCOPED_TRACE(frame_name(frame).toStdString());
        const CarrierApplyOutcome added = apply_carrier(*state, frame, false, QString());
        EXPECT_TRUE(added.stored);
        EXPECT_EQ(added.notice, (Notice{u"Carrier record added"_s, u"Carrier Added"_s}));
        EXPECT_EQ(read_carrier(db(), frame_name(frame)), encode_carrier(frame));
        EXPECT_EQ(load_carrier(*state, frame_name(frame).toUpper()), decode_carrier(encode_carrier(frame)));
    }

    // The mail carrier becomes a dial-up one: nothing of the SMTP frame stays, and the engine's count restarts.
    db().exec(u"UPDATE cv_carriers SET cv_retries = 3"_s);
    const CarrierApplyOutcome edited = apply_carrier(*state, named(Protocol::Tap, u"mail"_s), true, u"mail"_s);
    EXPECT_TRUE(edited.stored);
    EXPECT_EQ(edited.notice, (Notice{u"Carrier record updated"_s, u"Carrier Updated"_s}));
    EXPECT_EQ(read_carrier(db(), u"mail"_s), encode_carrier(named(Protocol::Tap, u"mail"_s)));

    // An edit whose row has gone stores nothing and says nothing; a null column reads back as null.
    EXPECT_EQ(apply_carrier(*state, frames[0], true, u"gone"_s), CarrierApplyOutcome{});
    EXPECT_FALSE(load_carrier(*state, u"gone"_s));
    db().exec(u"INSERT INTO cv_carriers (cv_name) VALUES ('bare')"_s);
    CarrierRow bare;
    bare.name = u"bare"_s;
    EXPECT_EQ(read_carrier(db(), u"bare"_s), bare);
}

TEST_F(CarriersStoreTest, DeleteIsRefusedWhileARecipientOrAnUnsentMessageNamesTheCarrier)
{
    ASSERT_TRUE(add_carrier(db(), encode_carrier(named(Protocol::Tap, u"tapnet"_s))));
    EXPECT_FALSE(add_carrier(db(), encode_carrier(named(Protocol::Smtp, u"TAPNET"_s))));
    EXPECT_EQ(apply_carrier(*state, named(Protocol::Smtp, u"TapNet"_s), false, QString()).notice,
              (Notice{u"A carrier with that name already exists"_s, u"Duplicate Carrier"_s}));

    const Notice in_use{u"A carrier can not be deleted if there are recipients using it"_s, u"Unalbe to Delete"_s};
    const Notice pending{u"A carrier can not be deleted if there are cv_messages pending for it"_s,
                         u"Unable to Delete"_s};
    db().exec(u"INSERT INTO cv_recipients (cv_name, cv_carrier) VALUES ('bob', 'TapNet')"_s);
    db().exec(u"INSERT INTO cv_messages (cv_recipient, cv_carrier, cv_sent) VALUES ('bob', 'tapnet', 0)"_s);
    EXPECT_TRUE(carrier_in_use(db(), u"tapnet"_s));
    EXPECT_EQ(delete_listed_carrier(*state, u"tapnet"_s), in_use); // the recipient is asked about first

    db().exec(u"DELETE FROM cv_recipients"_s);
    EXPECT_EQ(delete_listed_carrier(*state, u"tapnet"_s), pending);
    // A message whose cv_sent is null has not been sent either.
    db().exec(u"UPDATE cv_messages SET cv_sent = NULL"_s);
    EXPECT_TRUE(carrier_has_unsent_messages(db(), u"tapnet"_s));
    EXPECT_EQ(delete_listed_carrier(*state, u"tapnet"_s), pending);
    EXPECT_TRUE(carrier_exists(db(), u"tapnet"_s));

    db().exec(u"UPDATE cv_messages SET cv_sent = -1"_s);
    EXPECT_EQ(delete_listed_carrier(*state, u"tapnet"_s), std::nullopt);
    EXPECT_FALSE(carrier_exists(db(), u"tapnet"_s));
}

TEST_F(CarriersStoreTest, TheListGoesByNameAndNamesCompareWithoutRegardToCase)
{
    for (const QString& name : {u"zeta"_s, u"Alpha"_s, u"mid"_s, u"beta"_s}) {
        ASSERT_TRUE(add_carrier(db(), encode_carrier(named(Protocol::Snpp, name))));
    }
    QStringList listed;
    for (const CarrierRow& row : carrier_list(*state)) {
        listed.append(row.name.value_or(QString()));
    }
    EXPECT_EQ(listed, (QStringList{u"Alpha"_s, u"beta"_s, u"mid"_s, u"zeta"_s}));
    EXPECT_TRUE(carrier_exists(db(), u"ALPHA"_s));
    EXPECT_TRUE(carrier_exists(db(), u"Beta"_s));
    EXPECT_FALSE(carrier_exists(db(), u"alph"_s));
    EXPECT_FALSE(carrier_exists(db(), u"alpha'"_s));
}

// The names of tables.h are those of the tables both kinds of database are made with.
TEST(TableNames, EveryTableListsTheColumnsOfTheSchemaInTheirOrder)
{
    testing::TestEnvironment env;
    const QString global = env.path(u"cvd.mdb"_s);
    const QString user = env.path(u"user.mdb"_s);
    store::create_global_database(global);
    store::create_user_database(user);
    namespace t = store::tables;
    const auto names = [](const auto& all) {
        QStringList list;
        for (const t::Name name : all) {
            list.append(name.toString());
        }
        return list;
    };
    const std::pair<t::Name, QStringList> global_tables[] = {
        {t::messages::table, names(t::messages::all)}, {t::recipients::table, names(t::recipients::all)},
        {t::carriers::table, names(t::carriers::all)}, {t::settings::table, names(t::settings::all)},
        {t::counters::table, names(t::counters::all)}, {t::groups::table, names(t::groups::all)},
        {t::on_call::table, names(t::on_call::all)},   {t::presets::table, names(t::presets::all)},
    };
    store::Database db = store::Database::open(global);
    for (const auto& [table, columns] : global_tables) {
        EXPECT_EQ(db.column_names(table.toString()), columns) << table.toString().toStdString();
    }
    store::Database user_db = store::Database::open(user);
    EXPECT_EQ(user_db.column_names(t::settings::table.toString()), names(t::settings::all));
    EXPECT_EQ(user_db.column_names(t::presets::table.toString()), names(t::presets::all));
}

} // namespace

} // namespace cvd::addressbook
