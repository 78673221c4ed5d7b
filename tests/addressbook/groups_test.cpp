#include "addressbook/groups.h"
#include "addressbook/recipients_store.h"
#include "core/databases.h"
#include "core/error_path.h"
#include "store/database.h"
#include "support/database_test.h"
#include "support/printers.h"

#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace cvd::addressbook {

namespace {

TEST(GroupBoxes, LeavingABoxCutsAndTheDescriptionFillsAnEmptyShortName)
{
    EXPECT_EQ(on_leaving(GroupBox::ShortName, u"  Night Shift "_s), u"night shift"_s);
    EXPECT_EQ(on_leaving(GroupBox::ShortName, QString(45, u'A')), QString(40, u'a'));
    EXPECT_EQ(on_leaving(GroupBox::Description, QString(41, u'x') + u"y"_s), QString(40, u'x'));
    EXPECT_EQ(on_leaving(GroupBox::Comment, QString(90, u'c')), QString(80, u'c'));

    EXPECT_EQ(group_short_name_after_description(QString(), u"Night (Ops)"_s), u"night_ops"_s);
    EXPECT_EQ(group_short_name_after_description(u"kept"_s, u"Night Ops"_s), u"kept"_s);
}

TEST(GroupBoxes, MarksGoAndComeOffWhereTheSettingPutsThem)
{
    EXPECT_EQ(group_mark_text(u"Ops"_s, true, true), u"Ops (G)"_s);
    EXPECT_EQ(group_mark_text(u"Ops"_s, true, false), u"(G) Ops"_s);
    EXPECT_EQ(group_mark_text(u"Ann"_s, false, false), u"Ann"_s);
    EXPECT_EQ(without_group_mark(u"Ops (G)"_s, true), u"Ops"_s);
    EXPECT_EQ(without_group_mark(u"(G) Ops"_s, false), u"Ops"_s);
    // The mark is cut only where the setting puts it.
    EXPECT_EQ(without_group_mark(u"(G) Ops"_s, true), u"(G) Ops"_s);
    EXPECT_EQ(without_group_mark(u"Ops (G)"_s, false), u"Ops (G)"_s);

    EXPECT_EQ(group_members_caption(u"Ops"_s), u"Ops Members"_s);
}

class GroupStoreTest : public testing::DatabaseTest
{
protected:
    void add_person(const QString& name, const QString& full_name, bool ad_hoc = false)
    {
        RecipientRow row;
        row.name = name;
        row.full_name = full_name;
        row.ad_hoc = ad_hoc;
        row.carrier = u"net"_s;
        ASSERT_TRUE(add_recipient(db(), row));
    }

    QStringList stored_members(const QString& group)
    {
        store::Statement query =
            db().prepare(u"SELECT cv_recipient FROM cv_groups WHERE cv_group = ?1 ORDER BY rowid"_s);
        query.bind(1, group);
        QStringList names;
        while (query.step()) {
            names.append(query.text(0).value_or(QString()));
        }
        return names;
    }
};

TEST_F(GroupStoreTest, AddRefusesInOrderAndStoresTheGroupRow)
{
    EXPECT_EQ(add_group_window_refusal(*state),
              (Notice{u"At Least One Recipient Must Be Setup First"_s, u"No Recipients"_s}));
    add_person(u"ann"_s, u"Ann Smith"_s);
    EXPECT_FALSE(add_group_window_refusal(*state));

    const std::pair<GroupEntry, Notice> refusals[] = {
        {{u"  "_s, u"("_s, {}, {}, false}, {u"A Short Name must be entered"_s, u"No Group Name"_s}},
        {{u"ops"_s, u" "_s, {}, {}, false}, {u"A Description must be entered"_s, u"No Description"_s}},
        {{u"o ps"_s, u"(x)"_s, {}, {}, false}, {u"Illegal Characters in the Short Name"_s, u"BAD GROUP"_s}},
        {{u"ops"_s, u"Ops (day)"_s, {}, {}, false}, {u"Illegal Characters in Description"_s, u"BAD GROUP"_s}},
        {{u"ANN"_s, u"Another"_s, {}, {}, false}, {u"That Short Name is already in use"_s, u"Bad Name"_s}},
    };
    for (const auto& [entry, notice] : refusals) {
        const GroupApplyOutcome outcome = add_group(*state, entry);
        EXPECT_EQ(outcome.notice, notice) << entry.short_name.toStdString();
        EXPECT_FALSE(outcome.stored);
    }
    EXPECT_EQ(scalar(u"SELECT count(*) FROM cv_recipients WHERE cv_name <> 'ann'"_s), 0);

    const GroupApplyOutcome added = add_group(*state, {u" o'ps "_s, u" Night Ops "_s, u" c1 "_s, u"c2"_s, true});
    EXPECT_TRUE(added.stored);
    EXPECT_EQ(added.notice, (Notice{u"Group record added"_s, u"Group Added"_s}));
    EXPECT_EQ(added.short_name, u"o`ps"_s);
    // A group's row has no carrier, no identity and fixed numbers; booleans are -1 and 0.
    EXPECT_EQ(
        scalar(u"SELECT count(*) FROM cv_recipients WHERE cv_name = 'o`ps' AND cv_full_name = 'Night Ops' "
               "AND cv_extra1 = 'c1' AND cv_extra2 = 'c2' AND cv_group = -1 AND cv_on_call = -1 "
               "AND cv_carrier = '' AND cv_id = '' AND cv_maxchars = 1024 AND cv_priority = 100 AND cv_ad_hoc = 0 "
               "AND cv_alpha = 0 AND cv_drop_control = 0 AND cv_SendSubject = 0 AND cv_remove_from = 0"_s),
        1);
    EXPECT_TRUE(env.prompter.boxes.isEmpty());
}

TEST_F(GroupStoreTest, EditKeepsTheNameAndTakingOnCallAwayDeletesTheRoster)
{
    add_person(u"ann"_s, u"Ann Smith"_s);
    ASSERT_TRUE(add_group(*state, {u"ops"_s, u"Ops"_s, {}, {}, true}).stored);
    ASSERT_TRUE(add_group(*state, {u"day"_s, u"Day"_s, {}, {}, true}).stored);
    db().exec(u"INSERT INTO cv_oncalltable (cv_group, cv_recipient, cv_start_day) VALUES ('ops', 'ann', 1), "
              "('day', 'ann', 1)"_s);

    const std::optional<GroupEntry> loaded = load_group(*state, u"ops"_s);
    ASSERT_TRUE(loaded);
    EXPECT_EQ(*loaded, (GroupEntry{u"ops"_s, u"Ops"_s, {}, {}, true}));
    EXPECT_FALSE(load_group(*state, u"gone"_s));

    // Refused entries leave the row and the roster as they were.
    EXPECT_EQ(edit_group(*state, u"ops"_s, true, {u"ops"_s, u"  "_s, {}, {}, false}),
              (Notice{u"A Description must be entered"_s, u"No Description"_s}));
    EXPECT_EQ(edit_group(*state, u"ops"_s, true, {u"ops"_s, u"a)"_s, {}, {}, false}),
              (Notice{u"Illegal Characters in Description"_s, u"BAD GROUP"_s}));
    EXPECT_EQ(read_recipient(db(), u"ops"_s)->full_name, u"Ops"_s);
    EXPECT_EQ(scalar(u"SELECT count(*) FROM cv_oncalltable WHERE cv_group = 'ops'"_s), 1);

    // On-call kept: the roster stays.
    EXPECT_FALSE(edit_group(*state, u"day"_s, true, {u"day"_s, u"Day Shift"_s, {}, {}, true}));
    EXPECT_EQ(scalar(u"SELECT count(*) FROM cv_oncalltable WHERE cv_group = 'day'"_s), 1);

    EXPECT_FALSE(edit_group(*state, u"ops"_s, true, {u"ops"_s, u" New Ops "_s, u" e1 "_s, u"e2"_s, false}));
    EXPECT_EQ(read_recipient(db(), u"ops"_s), group_row({u"ops"_s, u"New Ops"_s, u"e1"_s, u"e2"_s, false}));
    EXPECT_EQ(scalar(u"SELECT count(*) FROM cv_oncalltable WHERE cv_group = 'ops'"_s), 0);
    EXPECT_EQ(scalar(u"SELECT count(*) FROM cv_oncalltable WHERE cv_group = 'day'"_s), 1);

    // Checking the box again brings nothing back.
    EXPECT_FALSE(edit_group(*state, u"ops"_s, false, {u"ops"_s, u"New Ops"_s, {}, {}, true}));
    EXPECT_TRUE(read_recipient(db(), u"ops"_s)->on_call);
    EXPECT_EQ(scalar(u"SELECT count(*) FROM cv_oncalltable WHERE cv_group = 'ops'"_s), 0);
}

TEST_F(GroupStoreTest, MembershipIsStoredByFullNameWithTheMarkCutOff)
{
    add_person(u"ann"_s, u"Ann Smith"_s);
    add_person(u"bob"_s, u"Bob O'Neil"_s);
    add_person(u"walkin"_s, u"Walk In"_s, true);
    add_person(u"ann2"_s, u"Ann Smith"_s); // same full name: the first row wins
    ASSERT_TRUE(add_group(*state, {u"ops"_s, u"Ops"_s, {}, {}, false}).stored);
    ASSERT_TRUE(add_group(*state, {u"night"_s, u"Night"_s, {}, {}, false}).stored);

    EXPECT_TRUE(stored_members(u"ops"_s).isEmpty());
    const MemberLists before = group_maint_lists(*state, u"ops"_s, true);
    EXPECT_TRUE(before.members.isEmpty());
    EXPECT_EQ(before.non_members, (QStringList{u"Ann Smith"_s, u"Bob O'Neil"_s, u"Ann Smith"_s, u"Night (G)"_s}));

    apply_group_members(*state, u"ops"_s, {u"Night (G)"_s, u"Bob O'Neil"_s, u"Ann Smith"_s}, true);
    EXPECT_EQ(stored_members(u"ops"_s), (QStringList{u"night"_s, u"bob"_s, u"ann"_s}));

    const MemberLists after = group_maint_lists(*state, u"ops"_s, false);
    EXPECT_EQ(after.members, (QStringList{u"Ann Smith"_s, u"Bob O'Neil"_s, u"(G) Night"_s}));
    EXPECT_EQ(after.non_members, (QStringList{u"Ann Smith"_s}));

    // Apply replaces the rows; the mark in front is cut with the setting off.
    apply_group_members(*state, u"ops"_s, {u"(G) Night"_s}, false);
    EXPECT_EQ(stored_members(u"ops"_s), (QStringList{u"night"_s}));

    // The member list shows full names and skips a member whose recipient is gone.
    apply_group_members(*state, u"night"_s, {u"Ann Smith"_s, u"Bob O'Neil"_s}, true);
    ASSERT_FALSE(delete_recipient(db(), u"bob"_s));
    db().exec(u"INSERT INTO cv_groups (cv_group, cv_recipient) VALUES ('night', 'x')"_s);
    EXPECT_EQ(group_member_names(*state, u"night"_s), (QStringList{u"Ann Smith"_s}));
    EXPECT_EQ(group_member_names(*state, u"ops"_s), (QStringList{u"Night"_s}));
}

TEST_F(GroupStoreTest, DeleteWaitsForPendingMessagesAndRemovesOnlyOwnMemberRows)
{
    add_person(u"ann"_s, u"Ann Smith"_s);
    ASSERT_TRUE(add_group(*state, {u"ops"_s, u"Ops"_s, {}, {}, true}).stored);
    ASSERT_TRUE(add_group(*state, {u"all"_s, u"All"_s, {}, {}, false}).stored);
    apply_group_members(*state, u"ops"_s, {u"Ann Smith"_s}, true);
    apply_group_members(*state, u"all"_s, {u"Ops (G)"_s}, true);
    db().exec(u"INSERT INTO cv_oncalltable (cv_group, cv_recipient) VALUES ('ops', 'ann')"_s);
    db().exec(u"INSERT INTO cv_messages (cv_recipient, cv_message, cv_sent) VALUES ('ops', 'hi', 0)"_s);

    EXPECT_EQ(list_groups(*state), (QList<RecipientListEntry>{{u"all"_s, u"All"_s}, {u"ops"_s, u"Ops"_s}}));
    EXPECT_EQ(delete_group(*state, u"ops"_s),
              (Notice{u"A group can not be deleted if there are cv_messages pending for it"_s, u"Unable to Delete"_s}));
    EXPECT_TRUE(read_recipient(db(), u"ops"_s));

    db().exec(u"UPDATE cv_messages SET cv_sent = -1"_s);
    EXPECT_FALSE(delete_group(*state, u"ops"_s));
    EXPECT_FALSE(read_recipient(db(), u"ops"_s));
    EXPECT_TRUE(stored_members(u"ops"_s).isEmpty());
    EXPECT_EQ(stored_members(u"all"_s), (QStringList{u"ops"_s}));
    EXPECT_EQ(scalar(u"SELECT count(*) FROM cv_oncalltable WHERE cv_group = 'ops'"_s), 1);
    EXPECT_EQ(list_groups(*state), (QList<RecipientListEntry>{{u"all"_s, u"All"_s}}));
}

TEST_F(GroupStoreTest, MemberApplyIsOneTransaction)
{
    add_person(u"ann"_s, u"Ann Smith"_s);
    add_person(u"bob"_s, u"Bob Jones"_s);
    ASSERT_TRUE(add_group(*state, {u"ops"_s, u"Ops"_s, {}, {}, false}).stored);
    apply_group_members(*state, u"ops"_s, {u"Ann Smith"_s}, true);

    store::Database::open(global_db_path(*state))
        .exec(u"CREATE TRIGGER refuse_bob BEFORE INSERT ON cv_groups WHEN NEW.cv_recipient = 'bob' "
              "BEGIN SELECT RAISE(ABORT, 'refused'); END"_s);
    EXPECT_THROW(apply_group_members(*state, u"ops"_s, {u"Bob Jones"_s}, true), ProgramHalted);
    ASSERT_EQ(env.prompter.boxes.size(), 1);
    EXPECT_TRUE(env.prompter.boxes.front().text.contains(u"Procedure: group_maint command3"_s));
    EXPECT_EQ(stored_members(u"ops"_s), (QStringList{u"ann"_s}));
    EXPECT_FALSE(db().in_transaction());
}

} // namespace

} // namespace cvd::addressbook
