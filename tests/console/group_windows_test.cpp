// The group windows: add and edit with their Apply, the roster button, the list in its three modes,
// group_maint's two lists with the marks, and frmGroupMembers from frmInfo.
#include "console/add_group.h"
#include "console/edit_group.h"
#include "console/frm_info.h"
#include "console/group_maint.h"
#include "console/list_groups.h"
#include "console/recipient_windows.h"
#include "console_test.h"
#include "core/setting_keys.h"
#include "support/printers.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <QTreeView>

using namespace Qt::StringLiterals;

namespace cvd::testing {
namespace {

class GroupWindows : public ConsoleTest
{
protected:
    void SetUp() override
    {
        ConsoleTest::SetUp();
        db().exec(u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_group, cv_ad_hoc, cv_on_call) VALUES "
                  "('ann', 'Ann', 0, 0, 0), ('bob', 'Bob', 0, 0, 0), ('walk', 'Walk-in', 0, -1, 0), "
                  "('crew', 'Crew', -1, 0, -1), ('ops', 'Operations', -1, 0, 0)"_s);
        db().exec(u"INSERT INTO cv_groups (cv_group, cv_recipient) VALUES ('crew', 'ann'), ('crew', 'ops')"_s);
    }

    QLineEdit& box(QWidget& window, const char* name) { return control<QLineEdit>(window, name); }
    void type_and_leave(QWidget& window, const char* name, const QString& text)
    {
        QLineEdit& edit = box(window, name);
        edit.setText(text);
        emit edit.editingFinished();
    }
    QStringList column(const QString& sql)
    {
        store::Statement select = db().prepare(sql);
        QStringList texts;
        while (select.step()) {
            for (int i = 0; i < select.column_count(); ++i) {
                texts.append(select.text(i).value_or(u"<null>"_s));
            }
        }
        return texts;
    }
    static QStringList entries(const QListWidget& list)
    {
        QStringList texts;
        for (int row = 0; row < list.count(); ++row) {
            texts.append(list.item(row)->text());
        }
        return texts;
    }
    void click_entry(QListWidget& list, const QString& text, Qt::MouseButton button = Qt::LeftButton)
    {
        const QList<QListWidgetItem*> found = list.findItems(text, Qt::MatchExactly);
        ASSERT_EQ(found.size(), 1) << text.toStdString();
        QTest::mouseClick(list.viewport(), button, {}, list.visualItemRect(found.front()).center());
    }
};

TEST_F(GroupWindows, AddStoresTheGroupRowAndWaitsForAChangeAfterEachApply)
{
    console::add_group window(*context, &send_form.window());
    window.show();
    auto& apply = control<QPushButton>(window, "Command1");
    EXPECT_FALSE(apply.isEnabled());
    type_and_leave(window, "ffull_name", u"Night (Shift)"_s);
    EXPECT_EQ(box(window, "fuser").text(), u"night_shift"_s);
    EXPECT_TRUE(apply.isEnabled());
    apply.click();
    EXPECT_EQ(env.prompter.boxes.last(), (Notice{u"Illegal Characters in Description"_s, u"BAD GROUP"_s}));
    EXPECT_FALSE(apply.isEnabled());

    type_and_leave(window, "ffull_name", u"Night"_s);
    type_and_leave(window, "fuser", u"ANN"_s);
    EXPECT_EQ(box(window, "fuser").text(), u"ann"_s);
    apply.click();
    EXPECT_EQ(env.prompter.boxes.last(), (Notice{u"That Short Name is already in use"_s, u"Bad Name"_s}));

    type_and_leave(window, "fuser", u"Night"_s);
    type_and_leave(window, "fExtra1", u" pager "_s);
    control<QCheckBox>(window, "fon_call").click();
    EXPECT_TRUE(control<QPushButton>(window, "btnOnCall").isEnabled());
    apply.click();
    EXPECT_EQ(env.prompter.boxes.last(), (Notice{u"Group record added"_s, u"Group Added"_s}));
    EXPECT_EQ(column(u"SELECT cv_group, cv_full_name, cv_id, cv_carrier, cv_maxchars, cv_on_call, cv_extra1, "
                     "cv_priority FROM cv_recipients WHERE cv_name = 'night'"_s),
              (QStringList{u"-1"_s, u"Night"_s, u""_s, u""_s, u"1024"_s, u"-1"_s, u"pager"_s, u"100"_s}));
    EXPECT_EQ(box(window, "fuser").text(), QString());
    EXPECT_TRUE(control<QCheckBox>(window, "fon_call").isChecked());
    EXPECT_FALSE(apply.isEnabled());
    EXPECT_TRUE(window.isVisible());
    window.reject();
    EXPECT_EQ(send_form.show_users_calls, 1);
}

TEST_F(GroupWindows, AddClosesItselfWithoutRecipients)
{
    db().exec(u"DELETE FROM cv_recipients"_s);
    console::register_recipient_windows(*context);
    context->catalog.open(u"groups_add"_s);
    EXPECT_EQ(env.prompter.boxes,
              (QList<Notice>{{u"At Least One Recipient Must Be Setup First"_s, u"No Recipients"_s}}));
}

TEST_F(GroupWindows, RosterButtonHandsTheNameOnToTheRosterWindow)
{
    QStringList opened;
    context->catalog.add(u"frmOnCallSched"_s, [&](QWidget*) {
        opened.append(shared.selected_name + (shared.oncall_from_add ? u" from add"_s : u" from edit"_s));
    });
    console::add_group adding(*context, &send_form.window());
    type_and_leave(adding, "fuser", u"Late"_s);
    control<QCheckBox>(adding, "fon_call").click();
    control<QPushButton>(adding, "btnOnCall").click();
    shared.selected_name = u"crew"_s;
    console::edit_group editing(*context, &send_form.window());
    EXPECT_TRUE(control<QPushButton>(editing, "btnOnCall").isEnabled());
    control<QPushButton>(editing, "btnOnCall").click();
    EXPECT_EQ(opened, (QStringList{u"late from add"_s, u"crew from edit"_s}));
}

TEST_F(GroupWindows, EditTakingOnCallAwayDeletesTheRosterAndARefusalCloses)
{
    db().exec(u"INSERT INTO cv_oncalltable (cv_group, cv_recipient) VALUES ('crew', 'ann')"_s);
    shared.selected_name = u"crew"_s;
    console::edit_group window(*context, &send_form.window());
    window.show();
    EXPECT_FALSE(box(window, "fuser").isEnabled());
    EXPECT_EQ(box(window, "ffull_name").text(), u"Crew"_s);
    control<QCheckBox>(window, "fon_call").click();
    type_and_leave(window, "fExtra2", u"weekends"_s);
    control<QPushButton>(window, "Command1").click();
    EXPECT_FALSE(window.isVisible());
    EXPECT_EQ(column(u"SELECT cv_on_call, cv_extra2 FROM cv_recipients WHERE cv_name = 'crew'"_s),
              (QStringList{u"0"_s, u"weekends"_s}));
    EXPECT_EQ(scalar(u"SELECT COUNT(*) FROM cv_oncalltable"_s), 0);
    EXPECT_EQ(send_form.show_users_calls, 1);

    console::edit_group again(*context, &send_form.window());
    again.show();
    type_and_leave(again, "ffull_name", u""_s);
    control<QPushButton>(again, "Command1").click();
    EXPECT_EQ(env.prompter.boxes, (QList<Notice>{{u"A Description must be entered"_s, u"No Description"_s}}));
    EXPECT_FALSE(again.isVisible());
    EXPECT_EQ(column(u"SELECT cv_full_name FROM cv_recipients WHERE cv_name = 'crew'"_s), QStringList{u"Crew"_s});
}

TEST_F(GroupWindows, MaintMovesEntriesAndApplyReplacesTheMembers)
{
    for (const bool label_after : {false, true}) {
        SCOPED_TRACE(label_after);
        state->settings.put_setting(setting_keys::display::group_label_after, label_after);
        const QString ops = label_after ? u"Operations (G)"_s : u"(G) Operations"_s;
        db().exec(u"DELETE FROM cv_groups"_s);
        db().exec(u"INSERT INTO cv_groups (cv_group, cv_recipient) VALUES ('crew', 'ann'), ('crew', 'ops')"_s);
        shared.selected_name = u"crew"_s;
        console::group_maint window(*context, &send_form.window());
        window.show();
        EXPECT_EQ(window.windowTitle(), u"Set Group Members"_s);
        auto& members = control<QListWidget>(window, "member_list");
        auto& others = control<QListWidget>(window, "non_list");
        // Neither the group itself nor the ad hoc recipient is offered.
        EXPECT_EQ(entries(members), (QStringList{u"Ann"_s, ops}));
        EXPECT_EQ(entries(others), (QStringList{u"Bob"_s}));

        click_entry(members, u"Ann"_s, Qt::RightButton); // only the focus moves
        EXPECT_EQ(entries(members), (QStringList{u"Ann"_s, ops}));
        click_entry(members, u"Ann"_s);
        click_entry(others, u"Bob"_s);
        EXPECT_EQ(entries(others), (QStringList{u"Ann"_s}));
        others.setCurrentRow(0);
        QTest::keyClick(&others, Qt::Key_Space);
        EXPECT_EQ(entries(members), (QStringList{ops, u"Bob"_s, u"Ann"_s}));
        members.setCurrentRow(2);
        QTest::keyClick(&members, Qt::Key_Return);
        EXPECT_TRUE(window.isVisible());
        control<QPushButton>(window, "Command3").click();
        EXPECT_FALSE(window.isVisible());
        EXPECT_EQ(column(u"SELECT cv_recipient FROM cv_groups WHERE cv_group = 'crew' ORDER BY cv_recipient"_s),
                  (QStringList{u"bob"_s, u"ops"_s}));
    }
}

TEST_F(GroupWindows, ListDeletesUnlessMessagesWaitAndOpensMembersForTheChosenGroup)
{
    db().exec(u"INSERT INTO cv_groups (cv_group, cv_recipient) VALUES ('ops', 'bob'), ('elsewhere', 'ops')"_s);
    db().exec(u"INSERT INTO cv_messages (cv_recipient, cv_sent) VALUES ('ops', 0)"_s);
    console::list_groups remove(*context, console::list_groups::Mode::Delete, {}, &send_form.window());
    remove.show();
    EXPECT_EQ(remove.windowTitle(), u"Delete Group"_s);
    auto& list = control<QTreeView>(remove, "lstgroups");
    ASSERT_EQ(list.model()->rowCount(), 2);
    list.setCurrentIndex(list.model()->index(1, 0));
    control<QPushButton>(remove, "btnEdit").click();
    EXPECT_EQ(env.prompter.boxes,
              (QList<Notice>{
                  {u"A group can not be deleted if there are cv_messages pending for it"_s, u"Unable to Delete"_s}}));
    db().exec(u"UPDATE cv_messages SET cv_sent = -1"_s);
    control<QPushButton>(remove, "btnEdit").click();
    EXPECT_EQ(list.model()->rowCount(), 1);
    // Its own member rows go; the rows naming it as a member of other groups stay.
    EXPECT_EQ(column(u"SELECT cv_group || '/' || cv_recipient FROM cv_groups WHERE 'ops' IN (cv_group, "
                     "cv_recipient) ORDER BY cv_group"_s),
              (QStringList{u"crew/ops"_s, u"elsewhere/ops"_s}));
    remove.reject();
    EXPECT_EQ(send_form.show_users_calls, 1);

    console::register_recipient_windows(*context);
    when_modal([this](QWidget& window) {
        EXPECT_EQ(window.windowTitle(), u"Group List"_s);
        auto& groups = control<QTreeView>(window, "lstgroups");
        groups.setCurrentIndex(groups.model()->index(0, 0));
        when_modal([this](QWidget& maint) {
            EXPECT_EQ(entries(control<QListWidget>(maint, "member_list")), (QStringList{u"Ann"_s}));
            control<QPushButton>(maint, "btnClose").click();
        });
        control<QPushButton>(window, "btnEdit").click();
        control<QPushButton>(window, "btnClose").click();
    });
    context->catalog.open(u"groups_members"_s);
    EXPECT_EQ(shared.selected_name, u"crew"_s);
}

TEST_F(GroupWindows, InfoMembersButtonShowsTheGroupsMembersByFullName)
{
    db().exec(u"INSERT INTO cv_groups (cv_group, cv_recipient) VALUES ('crew', 'gone')"_s);
    console::register_recipient_windows(*context);
    shared.info_key = u"crew"_s;
    shared.info_group_label = u"Crew"_s;
    console::frmInfo info(*context, &send_form.window());
    info.show();
    QString caption;
    QStringList shown;
    when_modal([&](QWidget& window) {
        caption = window.windowTitle();
        shown = entries(control<QListWidget>(window, "lstMembers"));
        control<QPushButton>(window, "close").click();
    });
    control<QPushButton>(info, "btnGroupMembers").click();
    EXPECT_EQ(caption, u"Crew Members"_s);
    EXPECT_EQ(shown, (QStringList{u"Ann"_s, u"Operations"_s})); // a member without its row is skipped
}

} // namespace
} // namespace cvd::testing
