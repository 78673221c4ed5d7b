#include "addressbook/recipients.h"
#include "addressbook/recipients_store.h"
#include "store/database.h"
#include "support/database_test.h"
#include "support/printers.h"

#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace cvd::addressbook {

namespace {

TEST(RecipientFrames, FlagsWithoutABoxStoreTheFrameConstant)
{
    // Per flag (drop control, send subject, remove from, alpha): 'b' a check box, '0' or '1' the constant stored.
    const struct
    {
        Protocol protocol;
        const char* boxes;
        QString max_chars;
        RecipientFlags defaults; // as shown by the boxes; flags without a box carry the constant
    } cases[] = {
        {Protocol::Fax, "0b01", u"5000"_s, {false, true, false, true}},
        {Protocol::FaxSrv, "0b01", u"5000"_s, {false, true, false, true}},
        {Protocol::Gsmat, "b0bb", u"160"_s, {true, false, false, true}},
        {Protocol::Smtp, "bbbb", u"500"_s, {false, true, false, true}},
        {Protocol::Snpp, "b0bb", u"240"_s, {true, false, false, true}},
        {Protocol::Tap, "b0bb", u"240"_s, {true, false, false, true}},
        {Protocol::Tone, "10b0", u"10"_s, {true, false, true, false}},
        {Protocol::Ucp, "b0bb", u"160"_s, {true, false, false, true}},
        {Protocol::Wctp, "b0bb", u"240"_s, {true, false, false, true}},
    };
    ASSERT_EQ(std::size(cases), std::size_t{protocol_count});
    for (const auto& c : cases) {
        SCOPED_TRACE(protocol_list_text(c.protocol).toStdString());
        const RecipientFrame& frame = recipient_frame(c.protocol);
        EXPECT_EQ(frame.protocol, c.protocol);
        EXPECT_EQ(recipient_add_defaults(c.protocol), (RecipientDefaults{c.max_chars, c.defaults}));
        // Whatever the boxes (or an old row) say, a flag without a box stores the frame's constant.
        for (const bool shown : {false, true}) {
            const RecipientFlags stored = stored_flags(c.protocol, {shown, shown, shown, shown});
            for (std::size_t i = 0; i < std::size(all_recipient_flags); ++i) {
                const RecipientFlag flag = all_recipient_flags[i];
                const bool offered = c.boxes[i] == 'b';
                EXPECT_EQ(frame.slot(flag).offered(), offered) << i;
                EXPECT_EQ(stored.value(flag), offered ? shown : c.boxes[i] == '1') << i;
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
    // Per box, pairs of the text typed and the text shown after leaving the box.
    const std::pair<RecipientBox, QStringList> cases[] = {
        // The short name is cut first, then trimmed.
        {RecipientBox::ShortName, {u"  bob  "_s, u"bob"_s, forty_five, QString(38, u'n')}},
        {RecipientBox::FullName, {QString(39, u'a') + u" b"_s, QString(39, u'a')}},
        {RecipientBox::Identity, {u" 5551234 "_s, u"5551234"_s, u"\t1"_s, u"\t1"_s}}, // only blanks are trimmed
        {RecipientBox::Comment, {eighty_two, QString(79, u'c')}},
        {RecipientBox::MaxChars,
         {u"5"_s, u"10"_s, u"6001"_s, u"6000"_s, u"abc"_s, u"10"_s, u"200x"_s, u"200x"_s, u"10"_s, u"10"_s}},
        {RecipientBox::Priority, {u"0"_s, u"1"_s, u""_s, u"1"_s, u"30001"_s, u"30000"_s, u"250"_s, u"250"_s}},
    };
    for (const auto& [box, texts] : cases) {
        for (qsizetype i = 0; i + 1 < texts.size(); i += 2) {
            EXPECT_EQ(on_leaving(box, texts[i]), texts[i + 1]) << texts[i].toStdString();
        }
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

using RecipientStoreTest = testing::DatabaseTest;

// Every column of every row a query selects, as stored text; a null reads "<null>".
QStringList stored_texts(store::Database& db, const QString& sql)
{
    store::Statement select = db.prepare(sql);
    QStringList texts;
    while (select.step()) {
        for (int column = 0; column < select.column_count(); ++column) {
            texts.append(select.text(column).value_or(u"<null>"_s));
        }
    }
    return texts;
}

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

    // Booleans are stored as -1 and 0.
    EXPECT_EQ(stored_texts(db(), u"SELECT cv_name, cv_full_name, cv_id, cv_ad_hoc, cv_group, cv_carrier, cv_maxchars, "
                                 "cv_priority, cv_drop_control, cv_SendSubject, cv_remove_from, cv_alpha, cv_extra1, "
                                 "cv_extra2, cv_on_call FROM cv_recipients"_s),
              (QStringList{u"o`neil"_s, u"Pat `Ops` O`Neil"_s, u"5551234"_s, u"0"_s, u"0"_s, u"tapnet"_s, u"240"_s,
                           u"100"_s, u"-1"_s, u"-1"_s, u"0"_s, u"-1"_s, u"night"_s, u""_s, u"0"_s}));

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
    EXPECT_EQ(scalar(u"SELECT COUNT(*) FROM cv_recipients"_s), 2);
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
    entry.priority = u"40000"_s;
    entry.comment2 = u"c2"_s;
    entry.flags.remove_from = true;
    const ApplyOutcome edited = apply_recipient(*state, Protocol::Tone, entry, true, u"Tina"_s);
    ASSERT_TRUE(edited.stored);
    EXPECT_EQ(edited.notice, (Notice{u"Recipient record updated"_s, u"Recipient Updated"_s}));

    // One row still, under its old name, without the identity of an ad hoc recipient; the numbers within their
    // limits; TONE's constants replace the flags the row held, its one box keeps what was ticked.
    EXPECT_EQ(stored_texts(db(), u"SELECT cv_name, cv_full_name, cv_id, cv_ad_hoc, cv_maxchars, cv_priority, "
                                 "cv_drop_control, cv_SendSubject, cv_remove_from, cv_alpha, cv_extra2 FROM "
                                 "cv_recipients"_s),
              (QStringList{u"Tina"_s, u"Tina T"_s, u""_s, u"-1"_s, u"10"_s, u"30000"_s, u"-1"_s, u"0"_s, u"-1"_s,
                           u"0"_s, u"c2"_s}));
    // Edit mode loads the row back into the same boxes.
    const RecipientRow after = *read_recipient(db(), u"Tina"_s);
    const RecipientEntry loaded = entry_of_row(after);
    EXPECT_EQ(loaded.type, RecipientType::AdHoc);
    EXPECT_EQ(loaded.max_chars, u"10"_s);
    EXPECT_EQ(recipient_row(Protocol::Tone, loaded), after);

    // A row deleted meanwhile is not brought back.
    db().exec(u"DELETE FROM cv_recipients"_s);
    const ApplyOutcome vanished = apply_recipient(*state, Protocol::Tone, entry, true, u"Tina"_s);
    EXPECT_FALSE(vanished.stored);
    EXPECT_EQ(vanished.notice, std::nullopt);
    EXPECT_EQ(scalar(u"SELECT COUNT(*) FROM cv_recipients"_s), 0);
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
    // Only sent messages: deleted, with every membership (names compare case-blind); the roster stays.
    EXPECT_EQ(delete_listed_recipient(*state, u"Ann"_s), std::nullopt);
    EXPECT_EQ(stored_texts(db(), u"SELECT cv_name FROM cv_recipients ORDER BY cv_name"_s),
              (QStringList{u"bob"_s, u"crew"_s}));
    EXPECT_EQ(
        stored_texts(db(), u"SELECT cv_recipient FROM cv_groups UNION ALL SELECT cv_recipient FROM cv_oncalltable"_s),
        (QStringList{u"bob"_s, u"ann"_s}));
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
    EXPECT_EQ(stored_texts(db(), u"SELECT cv_name FROM cv_recipients UNION ALL SELECT cv_recipient FROM cv_groups"_s),
              (QStringList{u"ann"_s, u"ann"_s}));

    db().exec(u"DROP TRIGGER refuse_member_delete"_s);
    EXPECT_EQ(delete_recipient(db(), u"ann"_s), std::nullopt);
    EXPECT_EQ(scalar(u"SELECT COUNT(*) FROM cv_groups WHERE cv_recipient = 'ann'"_s), 0);
}

TEST_F(RecipientStoreTest, DialogListsCarriersByNameWithTypeCodeAndRefusesWithoutAny)
{
    EXPECT_EQ(recipient_dialog_carriers(*state), QList<RecipientCarrier>{});
    EXPECT_EQ(refuse_recipient_window(false),
              (Notice{u"At Least One Carrier Must Be Setup First"_s, u"No Carriers"_s}));
    EXPECT_EQ(refuse_recipient_window(true), std::nullopt);

    // A null type or limit reads as empty and 0; the type keeps only its first three letters.
    db().exec(u"INSERT INTO cv_carriers (cv_name, cv_dial_type, cv_maxchars) VALUES ('zeta', 'wctp 1.3', 240), "
              "('alpha', 'tapx', 80), ('mid', NULL, NULL)"_s);
    EXPECT_EQ(recipient_dialog_carriers(*state),
              (QList<RecipientCarrier>{{u"alpha"_s, u"tap"_s, 80}, {u"mid"_s, u""_s, 0}, {u"zeta"_s, u"wct"_s, 240}}));
}

TEST_F(RecipientStoreTest, LoadGivesTheBoxesOfTheRowOrNothingWhenItIsGone)
{
    db().exec(u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_id, cv_carrier, cv_maxchars, cv_priority, "
              "cv_drop_control, cv_SendSubject, cv_remove_from, cv_alpha, cv_ad_hoc, cv_group, cv_extra1) "
              "VALUES ('Tina', 'Tina T', '', 'beeper', 80, 7, 0, -1, -1, 0, -1, 0, 'days')"_s);
    const std::optional<RecipientEntry> entry = load_recipient(*state, u"tina"_s);
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->short_name, u"Tina"_s);
    EXPECT_EQ(entry->type, RecipientType::AdHoc);
    EXPECT_EQ(entry->carrier, u"beeper"_s);
    EXPECT_EQ(entry->max_chars, u"80"_s);
    EXPECT_EQ(entry->comment1, u"days"_s);
    EXPECT_EQ(entry->flags, (RecipientFlags{false, true, true, false}));
    EXPECT_EQ(load_recipient(*state, u"gone"_s), std::nullopt);
}

} // namespace
} // namespace cvd::addressbook
