#include "addressbook/recipients.h"
#include "addressbook/recipients_store.h"
#include "core/app_state.h"
#include "core/databases.h"
#include "store/database.h"
#include "store/schema.h"
#include "support/printers.h"
#include "support/test_environment.h"

#include <QDir>
#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace cvd::addressbook {

namespace {

// One row per protocol: the identity box, and for each flag either its check box or the constant stored.
struct FrameCase
{
    Protocol protocol;
    QString identity_box;
    QString label;
    QString missing;
    FlagSlot drop_control;
    FlagSlot send_subject;
    FlagSlot remove_from;
    FlagSlot alpha;
    QString max_chars;
    RecipientFlags defaults; // as shown by the boxes; flags without a box carry the constant
};

FlagSlot on(const QString& box)
{
    return {box, false};
}
FlagSlot constant(bool value)
{
    return {QString(), value};
}

TEST(RecipientFrames, EachProtocolOffersItsFlagsAndStoresConstantsForTheOthers)
{
    const QString phone = u"Phone #"_s;
    const QString id = u"ID / PIN"_s;
    const QString need_phone = u"You must enter a phone number"_s;
    const QString need_id = u"You must enter a ID/PIN number"_s;
    // drop_control, send_subject, remove_from, alpha
    const FrameCase cases[] = {
        {Protocol::Fax,
         u"txtFaxPhone"_s,
         phone,
         need_phone,
         constant(false),
         on(u"chkFaxSendSubject"_s),
         constant(false),
         constant(true),
         u"5000"_s,
         {false, true, false, true}},
        {Protocol::FaxSrv,
         u"txtFaxSrvPhone"_s,
         phone,
         need_phone,
         constant(false),
         on(u"chkFaxSrvSendSubject"_s),
         constant(false),
         constant(true),
         u"5000"_s,
         {false, true, false, true}},
        {Protocol::Gsmat,
         u"txtGsmatPhone"_s,
         phone,
         need_phone,
         on(u"chkGsmatStripNonPrint"_s),
         constant(false),
         on(u"chkGsmatStripSender"_s),
         on(u"chkGsmatAlpha"_s),
         u"160"_s,
         {true, false, false, true}},
        {Protocol::Smtp,
         u"txtSmtpEmail"_s,
         id,
         u"You must enter an email address"_s,
         on(u"chkSmtpStripNonPrint"_s),
         on(u"chkSmtpSendSubject"_s),
         on(u"chkSmtpStripSender"_s),
         on(u"chkSmtpAlpha"_s),
         u"500"_s,
         {false, true, false, true}},
        {Protocol::Snpp,
         u"txtSnppId"_s,
         id,
         need_id,
         on(u"chkSnppStripNonPrint"_s),
         constant(false),
         on(u"chkSnppStripSender"_s),
         on(u"chkSnppAlpha"_s),
         u"240"_s,
         {true, false, false, true}},
        {Protocol::Tap,
         u"txtTapId"_s,
         id,
         need_id,
         on(u"chkTapStripNonPrint"_s),
         constant(false),
         on(u"chkTapStripSender"_s),
         on(u"chkTapAlpha"_s),
         u"240"_s,
         {true, false, false, true}},
        {Protocol::Tone,
         u"txtTonePhone"_s,
         phone,
         need_phone,
         constant(true),
         constant(false),
         on(u"chkToneStripSender"_s),
         constant(false),
         u"10"_s,
         {true, false, true, false}},
        {Protocol::Ucp,
         u"txtUcpId"_s,
         id,
         need_id,
         on(u"chkUcpStripNonPrint"_s),
         constant(false),
         on(u"chkUcpStripSender"_s),
         on(u"chkUcpAlpha"_s),
         u"160"_s,
         {true, false, false, true}},
        {Protocol::Wctp,
         u"txtWctpId"_s,
         id,
         need_id,
         on(u"chkWctpStripNonPrint"_s),
         constant(false),
         on(u"chkWctpStripSender"_s),
         on(u"chkWctpAlpha"_s),
         u"240"_s,
         {true, false, false, true}},
    };
    ASSERT_EQ(std::size(cases), std::size_t{protocol_count});
    for (const FrameCase& c : cases) {
        SCOPED_TRACE(protocol_list_text(c.protocol).toStdString());
        const RecipientFrame& frame = recipient_frame(c.protocol);
        EXPECT_EQ(frame.protocol, c.protocol);
        EXPECT_EQ(frame.identity_box, c.identity_box);
        EXPECT_EQ(frame.identity_label, c.label);
        EXPECT_EQ(frame.missing_identity_text, c.missing);
        EXPECT_EQ(frame.drop_control, c.drop_control);
        EXPECT_EQ(frame.send_subject, c.send_subject);
        EXPECT_EQ(frame.remove_from, c.remove_from);
        EXPECT_EQ(frame.alpha, c.alpha);
        EXPECT_EQ(recipient_add_defaults(c.protocol), (RecipientDefaults{c.max_chars, c.defaults}));

        // Whatever the boxes (or an old row) say, a flag without a box stores the frame's constant.
        for (const bool shown : {false, true}) {
            const RecipientFlags stored = stored_flags(c.protocol, {shown, shown, shown, shown});
            for (const RecipientFlag flag : all_recipient_flags) {
                const FlagSlot& slot = frame.slot(flag);
                EXPECT_EQ(stored.value(flag), slot.offered() ? shown : slot.constant)
                    << recipient_flag_caption(flag).toStdString();
            }
        }
    }
    EXPECT_EQ(recipient_priority_label(), u"Priorty"_s);
    EXPECT_EQ(recipient_default_priority(), u"100"_s);
}

TEST(RecipientRules, MakeShortNameKeepsSmallLettersDigitsAndDashes)
{
    const struct
    {
        QString full;
        QString shortened;
    } cases[] = {
        {u"John Q. Public"_s, u"john_q_public"_s}, // dot and blank together make one "_"
        {u"ALLCAPS"_s, u"allcaps"_s},
        {u"Smith, Anna (Ops)"_s, u"smith_anna_ops"_s},
        {u"a--b---c"_s, u"a-b-c"_s},
        {u"x__y . z"_s, u"x_y_z"_s},
        {u"Dr. O'Neil #2!"_s, u"dr_oneil_2"_s},
        {u"M\u00fcller Jos\u00e9"_s, u"mller_jos"_s}, // letters beyond ASCII are dropped
        {u"-_-"_s, u"-_-"_s},
        {u"   "_s, u"_"_s},
        {QString(), QString()},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(make_short_name(c.full), c.shortened) << c.full.toStdString();
    }
    EXPECT_EQ(short_name_after_full_name(QString(), u"Ann Lee"_s), u"ann_lee"_s);
    EXPECT_EQ(short_name_after_full_name(u"typed"_s, u"Ann Lee"_s), u"typed"_s);
}

TEST(RecipientRules, BoxesCorrectTheirTextWhenLeft)
{
    const QString forty_five = u"  "_s + QString(41, u'n') + u"  "_s;
    const QString eighty_two = QString(79, u'c') + u"   x"_s;
    const struct
    {
        RecipientBox box;
        QString typed;
        QString shown;
    } cases[] = {
        {RecipientBox::ShortName, u"  bob  "_s, u"bob"_s},
        {RecipientBox::ShortName, forty_five, QString(38, u'n')}, // cut first, then trimmed
        {RecipientBox::FullName, QString(39, u'a') + u" b"_s, QString(39, u'a')},
        {RecipientBox::Identity, u" 5551234 "_s, u"5551234"_s},
        {RecipientBox::Identity, u"\t1"_s, u"\t1"_s}, // only blanks are trimmed
        {RecipientBox::Comment, eighty_two, QString(79, u'c')},
        {RecipientBox::MaxChars, u"5"_s, u"10"_s},
        {RecipientBox::MaxChars, u"6001"_s, u"6000"_s},
        {RecipientBox::MaxChars, u"abc"_s, u"10"_s},
        {RecipientBox::MaxChars, u"200x"_s, u"200x"_s},
        {RecipientBox::MaxChars, u"10"_s, u"10"_s},
        {RecipientBox::Priority, u"0"_s, u"1"_s},
        {RecipientBox::Priority, u""_s, u"1"_s},
        {RecipientBox::Priority, u"30001"_s, u"30000"_s},
        {RecipientBox::Priority, u"250"_s, u"250"_s},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(on_leaving(c.box, c.typed), c.shown) << c.typed.toStdString();
    }
    EXPECT_EQ(max_chars_on_carrier_selected(false, 321), std::optional<QString>(u"321"_s));
    EXPECT_EQ(max_chars_on_carrier_selected(true, 321), std::nullopt);
}

RecipientEntry valid_entry()
{
    RecipientEntry entry;
    entry.short_name = u"bob"_s;
    entry.full_name = u"Bob Smith"_s;
    entry.identity = u"5551234"_s;
    entry.carrier = u"tapnet"_s;
    entry.max_chars = u"240"_s;
    entry.priority = u"100"_s;
    return entry;
}

const Notice kBadShort{u"Illegal Characters in Short Name"_s, u"Bad Recipient"_s};
const Notice kBadFull{u"Illegal Characters in Full Name"_s, u"Bad Full Name"_s};

TEST(RecipientApplyChecks, IllegalCharactersAreRefusedAndQuotesBecomeGraveAccents)
{
    const struct
    {
        QString short_name;
        QString full_name;
        std::optional<Notice> refusal;
        QString short_shown;
        QString full_shown;
    } cases[] = {
        {u"bob smith"_s, u"Bob"_s, kBadShort, u"bob smith"_s, u"Bob"_s},
        {u"bob@home"_s, u"Bob"_s, kBadShort, u"bob@home"_s, u"Bob"_s},
        {u"b\u00f6b"_s, u"Bob"_s, kBadShort, u"b\u00f6b"_s, u"Bob"_s},
        {u"o'neil"_s, u"O\"Neil\""_s, std::nullopt, u"o`neil"_s, u"O`Neil`"_s},
        {u",-./09:;<=>?AZ_`az"_s, u" ~!"_s, std::nullopt, u",-./09:;<=>?AZ_`az"_s, u" ~!"_s},
        {u"a{"_s, u"Bob"_s, kBadShort, u"a{"_s, u"Bob"_s},
        // Quotes are replaced only up to the first refused character; the full name is not walked at all.
        {u"a'b c'd"_s, u"it's"_s, kBadShort, u"a`b c'd"_s, u"it's"_s},
        {u"bob"_s, u"Bob (Ops)"_s, kBadFull, u"bob"_s, u"Bob (Ops)"_s},
        {u"bob"_s, u"Bob's)x'"_s, kBadFull, u"bob"_s, u"Bob`s)x'"_s},
        {u"bob"_s, u"Tab\there"_s, kBadFull, u"bob"_s, u"Tab\there"_s},
    };
    for (const auto& c : cases) {
        RecipientEntry entry = valid_entry();
        entry.short_name = c.short_name;
        entry.full_name = c.full_name;
        const EntryCheck check =
            check_recipient_entry(Protocol::Tap, entry, false, [](const QString&) { return false; });
        EXPECT_EQ(check.refusal, c.refusal) << c.short_name.toStdString() << " / " << c.full_name.toStdString();
        EXPECT_EQ(check.short_name, c.short_shown);
        EXPECT_EQ(check.full_name, c.full_shown);
    }
}

TEST(RecipientApplyChecks, RefusalsComeInTheirOrder)
{
    const Notice no_short{u"A Short Name must be entered"_s, u"No Recipient"_s};
    const Notice no_full{u"A Full Name must be entered"_s, u"No Full Name"_s};
    const Notice missing_id{u"You must enter a ID/PIN number"_s, u"Missing Data"_s};
    const Notice duplicate{u"That Short Name already exists"_s, u"Duplicate Recipient"_s};
    const struct
    {
        const char* what;
        QString short_name;
        QString full_name;
        QString identity;
        RecipientType type;
        bool is_edit;
        std::optional<Notice> refusal;
        bool duplicate_asked;
    } cases[] = {
        {"all faults", QString(), QString(), QString(), RecipientType::Normal, false, no_short, false},
        {"no full name, bad short", u"a b"_s, QString(), QString(), RecipientType::Normal, false, no_full, false},
        {"bad short before bad full", u"a b"_s, u"(x)"_s, QString(), RecipientType::Normal, false, kBadShort, false},
        {"bad full before identity", u"ab"_s, u"(x)"_s, QString(), RecipientType::Normal, false, kBadFull, false},
        {"identity before duplicate", u"taken"_s, u"X"_s, QString(), RecipientType::Normal, false, missing_id, false},
        {"ad hoc needs no identity", u"taken"_s, u"X"_s, QString(), RecipientType::AdHoc, false, duplicate, true},
        {"duplicate", u"taken"_s, u"X"_s, u"1"_s, RecipientType::Normal, false, duplicate, true},
        {"edit mode finds itself", u"taken"_s, u"X"_s, u"1"_s, RecipientType::Normal, true, std::nullopt, false},
        {"free name", u"free"_s, u"X"_s, u"1"_s, RecipientType::Normal, false, std::nullopt, true},
    };
    for (const auto& c : cases) {
        RecipientEntry entry = valid_entry();
        entry.short_name = c.short_name;
        entry.full_name = c.full_name;
        entry.identity = c.identity;
        entry.type = c.type;
        bool asked = false;
        const EntryCheck check = check_recipient_entry(Protocol::Wctp, entry, c.is_edit, [&](const QString& name) {
            asked = true;
            return name == u"taken"_s;
        });
        EXPECT_EQ(check.refusal, c.refusal) << c.what;
        EXPECT_EQ(asked, c.duplicate_asked) << c.what;
    }
    // The missing-identity text is the frame's own.
    RecipientEntry entry = valid_entry();
    entry.identity.clear();
    EXPECT_EQ(check_recipient_entry(Protocol::Smtp, entry, false, [](const QString&) { return false; }).refusal,
              (Notice{u"You must enter an email address"_s, u"Missing Data"_s}));
}

TEST(RecipientApplyChecks, RowTakesTheFrameConstantsAndTheTypesIdentity)
{
    RecipientEntry entry = valid_entry();
    entry.type = RecipientType::AdHoc;
    entry.max_chars = u"5"_s;
    entry.priority = u"40000"_s;
    entry.comment1 = u"c1"_s;
    entry.comment2 = u"c2"_s;
    entry.flags = {false, true, true, true};
    const RecipientRow row = recipient_row(Protocol::Tone, entry);
    RecipientRow expected;
    expected.name = u"bob"_s;
    expected.full_name = u"Bob Smith"_s;
    expected.id = QString(); // ad hoc: the identity box is not stored
    expected.ad_hoc = true;
    expected.carrier = u"tapnet"_s;
    expected.maxchars = 10;
    expected.priority = 30000;
    expected.drop_control = true; // TONE constants
    expected.send_subject = false;
    expected.remove_from = true;
    expected.alpha = false;
    expected.extra1 = u"c1"_s;
    expected.extra2 = u"c2"_s;
    EXPECT_EQ(row, expected);

    // Edit mode loads the row back into the same boxes (ad hoc recipients have lost their identity).
    const RecipientEntry loaded = entry_of_row(row);
    EXPECT_EQ(loaded.type, RecipientType::AdHoc);
    EXPECT_EQ(loaded.max_chars, u"10"_s);
    EXPECT_EQ(loaded.flags, (RecipientFlags{true, false, true, false}));
    EXPECT_EQ(recipient_row(Protocol::Tone, loaded), row);
}

class RecipientStoreTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        state = env.make_state();
        state->global_db_folder = env.path(u"g/"_s);
        state->user_db_folder = env.path(u"u/"_s);
        QDir().mkpath(state->global_db_folder);
        QDir().mkpath(state->user_db_folder);
        store::create_global_database(global_db_path(*state));
        open_database(*state);
    }

    store::Database& db() { return state->global_db; }

    qint64 count(const QString& sql, const QString& value)
    {
        store::Statement query = db().prepare(sql);
        query.bind(1, value);
        EXPECT_TRUE(query.step());
        return query.integer(0).value_or(-1);
    }

    testing::TestEnvironment env;
    std::unique_ptr<AppState> state;
};

TEST_F(RecipientStoreTest, ApplyStoresEveryColumnAsTheFrameGivesIt)
{
    RecipientEntry entry = valid_entry();
    entry.short_name = u"o'neil"_s;
    entry.full_name = u"Pat \"Ops\" O'Neil"_s;
    entry.comment1 = u"night"_s;
    entry.flags = {true, true, false, true};
    const ApplyOutcome added = apply_recipient(*state, Protocol::Smtp, entry, false, QString());
    ASSERT_TRUE(added.stored);
    EXPECT_EQ(added.notice, (Notice{u"Recipient record added"_s, u"Recipient Added"_s}));
    EXPECT_EQ(added.short_name, u"o`neil"_s);

    store::Statement raw =
        db().prepare(u"SELECT cv_name, cv_full_name, cv_id, cv_ad_hoc, cv_group, cv_carrier, cv_maxchars, cv_priority, "
                     "cv_drop_control, cv_SendSubject, cv_remove_from, cv_alpha, cv_extra1, cv_extra2, cv_on_call "
                     "FROM cv_recipients"_s);
    ASSERT_TRUE(raw.step());
    EXPECT_EQ(raw.text(0), u"o`neil"_s);
    EXPECT_EQ(raw.text(1), u"Pat `Ops` O`Neil"_s);
    EXPECT_EQ(raw.text(2), u"5551234"_s);
    EXPECT_EQ(raw.integer(3), 0);
    EXPECT_EQ(raw.integer(4), 0);
    EXPECT_EQ(raw.text(5), u"tapnet"_s);
    EXPECT_EQ(raw.integer(6), 240);
    EXPECT_EQ(raw.integer(7), 100);
    EXPECT_EQ(raw.integer(8), -1); // booleans are -1 and 0
    EXPECT_EQ(raw.integer(9), -1);
    EXPECT_EQ(raw.integer(10), 0);
    EXPECT_EQ(raw.integer(11), -1);
    EXPECT_EQ(raw.text(12), u"night"_s);
    EXPECT_EQ(raw.text(13), QString());
    EXPECT_EQ(raw.integer(14), 0);
    EXPECT_FALSE(raw.step());

    // The duplicate test is case-blind and counts groups.
    db().exec(u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_group) VALUES ('Night-Crew', 'Crew', -1)"_s);
    const Notice duplicate{u"That Short Name already exists"_s, u"Duplicate Recipient"_s};
    for (const QString& name : {u"O`NEIL"_s, u"night-crew"_s}) {
        RecipientEntry again = valid_entry();
        again.short_name = name;
        const ApplyOutcome refused = apply_recipient(*state, Protocol::Smtp, again, false, QString());
        EXPECT_FALSE(refused.stored);
        EXPECT_EQ(refused.notice, duplicate) << name.toStdString();
    }
    RecipientRow clash;
    clash.name = u"NIGHT-CREW"_s;
    EXPECT_FALSE(add_recipient(db(), clash)); // the insert tests again inside its transaction
    EXPECT_EQ(count(u"SELECT COUNT(*) FROM cv_recipients WHERE cv_name <> ?1"_s, QString()), 2);
}

TEST_F(RecipientStoreTest, EditOverwritesTheRowAndToneForcesItsConstants)
{
    db().exec(u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_id, cv_carrier, cv_maxchars, cv_priority, "
              "cv_drop_control, cv_SendSubject, cv_remove_from, cv_alpha, cv_ad_hoc, cv_group, cv_on_call) "
              "VALUES ('Tina', 'Tina T', '555', 'beeper', 80, 7, 0, -1, 0, -1, 0, 0, 0)"_s);
    const std::optional<RecipientRow> before = read_recipient(db(), u"tina"_s);
    ASSERT_TRUE(before);
    RecipientEntry entry = entry_of_row(*before);
    entry.type = RecipientType::AdHoc;
    entry.max_chars = u"5"_s;
    const ApplyOutcome edited = apply_recipient(*state, Protocol::Tone, entry, true, u"Tina"_s);
    ASSERT_TRUE(edited.stored);
    EXPECT_EQ(edited.notice, (Notice{u"Recipient record updated"_s, u"Recipient Updated"_s}));

    const std::optional<RecipientRow> after = read_recipient(db(), u"Tina"_s);
    ASSERT_TRUE(after);
    EXPECT_TRUE(after->drop_control);
    EXPECT_FALSE(after->alpha);
    EXPECT_FALSE(after->send_subject);
    EXPECT_TRUE(after->ad_hoc);
    EXPECT_EQ(after->id, QString());
    EXPECT_EQ(after->maxchars, 10);
    EXPECT_EQ(after->priority, 7);
    EXPECT_EQ(after->full_name, u"Tina T"_s);
    EXPECT_EQ(count(u"SELECT COUNT(*) FROM cv_recipients WHERE cv_name = ?1"_s, u"tina"_s), 1);

    // A row deleted meanwhile is not brought back.
    db().exec(u"DELETE FROM cv_recipients"_s);
    const ApplyOutcome vanished = apply_recipient(*state, Protocol::Tone, entry, true, u"Tina"_s);
    EXPECT_FALSE(vanished.stored);
    EXPECT_EQ(vanished.notice, std::nullopt);
    EXPECT_EQ(count(u"SELECT COUNT(*) FROM cv_recipients WHERE cv_name <> ?1"_s, QString()), 0);
}

TEST_F(RecipientStoreTest, DeleteRemovesGroupMembershipsUnlessMessagesWait)
{
    db().exec(u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_group) VALUES "
              "('ann', 'Ann', 0), ('bob', 'Bob', 0), ('crew', 'Crew', -1)"_s);
    db().exec(u"INSERT INTO cv_groups (cv_group, cv_recipient) VALUES ('crew', 'ann'), ('crew', 'bob'), "
              "('other', 'ANN')"_s);
    db().exec(u"INSERT INTO cv_oncalltable (cv_group, cv_recipient) VALUES ('crew', 'ann')"_s);
    db().exec(u"INSERT INTO cv_messages (cv_recipient, cv_sent) VALUES ('ann', -1), ('bob', 0)"_s);

    EXPECT_EQ(list_recipients(db()),
              (QList<RecipientListEntry>{{u"ann"_s, u"Ann"_s}, {u"bob"_s, u"Bob"_s}})); // groups are not listed
    EXPECT_EQ(recipient_list_line(u"ann"_s, u"Ann"_s), u"ann\tAnn"_s);

    EXPECT_EQ(
        delete_listed_recipient(*state, u"bob"_s),
        (Notice{u"A recipient can not be deleted if there are cv_messages pending for it"_s, u"Unable to Delete"_s}));
    EXPECT_EQ(count(u"SELECT COUNT(*) FROM cv_groups WHERE cv_recipient = ?1"_s, u"bob"_s), 1);

    // Only sent messages: deleted, with every membership (names compare case-blind).
    EXPECT_EQ(delete_listed_recipient(*state, u"Ann"_s), std::nullopt);
    EXPECT_EQ(count(u"SELECT COUNT(*) FROM cv_recipients WHERE cv_name = ?1"_s, u"ann"_s), 0);
    EXPECT_EQ(count(u"SELECT COUNT(*) FROM cv_groups WHERE cv_recipient = ?1"_s, u"ann"_s), 0);
    EXPECT_EQ(count(u"SELECT COUNT(*) FROM cv_groups WHERE cv_recipient = ?1"_s, u"bob"_s), 1);
    EXPECT_EQ(count(u"SELECT COUNT(*) FROM cv_recipients WHERE cv_name = ?1"_s, u"crew"_s), 1);
    EXPECT_EQ(count(u"SELECT COUNT(*) FROM cv_oncalltable WHERE cv_recipient = ?1"_s, u"ann"_s), 1);
}

TEST_F(RecipientStoreTest, DeleteIsOneTransaction)
{
    db().exec(u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_group) VALUES ('ann', 'Ann', 0)"_s);
    db().exec(u"INSERT INTO cv_groups (cv_group, cv_recipient) VALUES ('crew', 'ann')"_s);
    // The membership delete fails after the recipient row is gone: the whole step must be undone.
    db().exec(u"CREATE TRIGGER refuse_member_delete BEFORE DELETE ON cv_groups "
              "BEGIN SELECT RAISE(ABORT, 'refused'); END"_s);
    EXPECT_THROW(delete_recipient(db(), u"ann"_s), store::Error);
    EXPECT_FALSE(db().in_transaction());
    EXPECT_EQ(count(u"SELECT COUNT(*) FROM cv_recipients WHERE cv_name = ?1"_s, u"ann"_s), 1);
    EXPECT_EQ(count(u"SELECT COUNT(*) FROM cv_groups WHERE cv_recipient = ?1"_s, u"ann"_s), 1);

    db().exec(u"DROP TRIGGER refuse_member_delete"_s);
    EXPECT_EQ(delete_recipient(db(), u"ann"_s), std::nullopt);
    EXPECT_EQ(count(u"SELECT COUNT(*) FROM cv_groups WHERE cv_recipient = ?1"_s, u"ann"_s), 0);
}

} // namespace
} // namespace cvd::addressbook
