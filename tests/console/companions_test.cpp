// The send window's companions: recipient details and the list filter, the ad hoc PIN, the activity
// monitor, the failure warning and the folders.
#include "console/frm_adhoc.h"
#include "console/frm_failure_warning.h"
#include "console/frm_folders.h"
#include "console/frm_info.h"
#include "console/frm_monitor.h"
#include "console_test.h"
#include "core/settings.h"

#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMouseEvent>
#include <QPushButton>
#include <QtTest/qtestspontaneevent.h>

using namespace Qt::StringLiterals;

namespace cvd::testing {
namespace {

constexpr SettingKey kScroll{u"display", u"connection_monitor_scroll"};
constexpr SettingKey kVisible{u"display", u"connection_monitor_visible"};

class Companions : public ConsoleTest
{
protected:
    void SetUp() override
    {
        ConsoleTest::SetUp();
        db().exec(u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_group, cv_ad_hoc, cv_extra1, cv_extra2) "
                  "VALUES ('zed', 'Zed Ward', 0, 0, 'night', 'it''s'), ('ops', 'Operations', -1, 0, '', 'all')"_s);
    }

    QString text(QWidget& window, const char* box) { return control<QLineEdit>(window, box).text(); }
};

TEST_F(Companions, InfoShowsTheEntryReadOnlyAndAMissingRowEmpty)
{
    struct Case
    {
        QString key, group_label, title, full_name, extra1, extra2;
    };
    const Case cases[] = {
        {u"zed"_s, {}, u"Recipient Info"_s, u"Zed Ward"_s, u"night"_s, u"it's"_s},
        {u"ops"_s, u"Operations"_s, u"Group Info"_s, u"Operations"_s, {}, u"all"_s},
        {u"zed  7"_s, {}, u"Recipient Info"_s, {}, {}, {}},
    };
    for (const Case& c : cases) {
        shared.info_key = c.key;
        shared.info_group_label = c.group_label;
        console::frmInfo info(*context, &send_form.window());
        SCOPED_TRACE(c.key.toStdString());
        EXPECT_EQ(info.windowTitle(), c.title);
        EXPECT_EQ(text(info, "txtFullName"), c.full_name);
        EXPECT_EQ(text(info, "txtShortName"), c.key);
        EXPECT_EQ(text(info, "txtExtra1"), c.extra1);
        EXPECT_EQ(text(info, "txtExtra2"), c.extra2);
        EXPECT_TRUE(control<QLineEdit>(info, "txtExtra1").isReadOnly());
        EXPECT_EQ(control<QLabel>(info, "lblComment2").text(), u"Comment2"_s);
        auto& members = control<QPushButton>(info, "btnGroupMembers");
        EXPECT_EQ(!members.isHidden(), !c.group_label.isEmpty());
    }
}

TEST_F(Companions, FilterFillsTheListOrBringsTheWholeListBack)
{
    shared.info_filter = true;
    console::frmInfo filter(*context, &send_form.window());
    filter.show();
    EXPECT_EQ(filter.windowTitle(), u"Filter Recipients"_s);
    auto& run = control<QPushButton>(filter, "btnGroupMembers");
    EXPECT_EQ(run.text(), u"Filter"_s);

    control<QLineEdit>(filter, "txtExtra2").setText(u"nobody"_s);
    run.click();
    EXPECT_EQ(env.prompter.boxes, (QList<Notice>{{u"No matching recipients found"_s, u"No Records Found"_s}}));
    EXPECT_EQ(send_form.show_users_calls, 1);
    EXPECT_TRUE(filter.isVisible());

    control<QLineEdit>(filter, "txtExtra2").setText(u"L"_s);
    run.click();
    EXPECT_EQ(send_form.unpicked, (QList<addressbook::PickerEntry>{{u"(G) Operations"_s, u"ops"_s, {}}}));
    EXPECT_FALSE(filter.isVisible());
    EXPECT_EQ(send_form.show_users_calls, 1);
}

TEST_F(Companions, AdhocPinIsCutTo40AndCloseGivesNone)
{
    when_modal([this](QWidget& dialog) {
        control<QLineEdit>(dialog, "fpin").setText(QString(45, u'7'));
        control<QPushButton>(dialog, "btnApply").click();
    });
    EXPECT_EQ(console::frmAdhoc::ask(*context, &send_form.window()), QString(40, u'7'));
    when_modal([this](QWidget& dialog) {
        control<QLineEdit>(dialog, "fpin").setText(u"12"_s);
        control<QPushButton>(dialog, "btnCancel").click();
    });
    EXPECT_EQ(console::frmAdhoc::ask(*context, &send_form.window()), QString());
}

TEST_F(Companions, MonitorKeepsTheNewestLinesAndARightClickTogglesAutoscroll)
{
    state->settings.put_setting(kScroll, false);
    activity.add(u"line 0"_s);
    auto& monitor = windows.open<console::frmMonitor>(*context);
    for (int i = 1; i <= 500; ++i) {
        activity.add(u"line %1"_s.arg(i));
    }
    auto& log_box = control<QListWidget>(monitor, "log_box");
    ASSERT_EQ(log_box.count(), 500);
    EXPECT_EQ(log_box.item(0)->text(), u"line 1"_s);
    EXPECT_EQ(log_box.currentRow(), -1); // without autoscroll a new line does not move the current row
    EXPECT_EQ(monitor.windowTitle(), u"Activity Monitor"_s);

    QMouseEvent right(QEvent::MouseButtonPress, QPointF(4, 4), QPointF(4, 4), Qt::RightButton, Qt::RightButton,
                      Qt::NoModifier);
    QApplication::sendEvent(log_box.viewport(), &right);
    EXPECT_EQ(monitor.windowTitle(), u"Activity Monitor - autoscroll"_s);
    EXPECT_EQ(state->settings.get_setting_flag(kScroll), -1);
    EXPECT_EQ(log_box.currentRow(), 499);
    activity.add(u"line 501"_s);
    EXPECT_EQ(log_box.item(0)->text(), u"line 2"_s);
    EXPECT_EQ(log_box.currentItem()->text(), u"line 501"_s);

    // The program's end closes it in code: its place is kept and it comes back at the next start. The
    // operator's close puts it away.
    monitor.show();
    monitor.close();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(send_form.monitor_closings, 0);
    EXPECT_EQ(state->settings.get_setting_flag(kVisible), -1);
    EXPECT_GT(state->settings.get_setting_long({u"display", u"connection_monitor_width"}), 0);
    auto& again = windows.open<console::frmMonitor>(*context);
    EXPECT_EQ(control<QListWidget>(again, "log_box").count(), 500);
    QCloseEvent close;
    QSpontaneKeyEvent::setSpontaneous(&close);
    QApplication::instance()->notify(&again, &close); // as the window system delivers it
    EXPECT_EQ(send_form.monitor_closings, 1);
    EXPECT_EQ(state->settings.get_setting_flag(kVisible), 0);
    EXPECT_GT(state->settings.get_setting_long({u"display", u"connection_monitor_width"}), 0);
}

TEST_F(Companions, FailureWarningUpdatesTheCountersOnceHoweverItCloses)
{
    console::frmFailureWarning warning(*context, &send_form.window());
    when_modal([this](QWidget& dialog) { control<QPushButton>(dialog, "btnOK").click(); });
    warning.exec();
    EXPECT_EQ(send_form.counter_updates, 1);
    when_modal([](QWidget& dialog) { dialog.close(); });
    warning.exec();
    EXPECT_EQ(send_form.counter_updates, 2);
}

TEST_F(Companions, FoldersLetTheOperatorLookIntoAFolderAndOpenTheVersions)
{
    int about_opened = 0;
    context->doors.about = [&about_opened] { ++about_opened; };
    console::frmFolders folders(*context, &send_form.window());
    EXPECT_EQ(text(folders, "txtSettingsFolder"), state->user_db_folder);
    env.prompter.choose_next(u"/somewhere/else"_s);
    control<QPushButton>(folders, "btnBrowseUser").click();
    ASSERT_EQ(env.prompter.file_choices.size(), 1);
    EXPECT_EQ(env.prompter.file_choices[0].caption, u"CVD User Database Folder"_s);
    EXPECT_EQ(env.prompter.file_choices[0].start_name, state->user_db_folder);
    EXPECT_EQ(text(folders, "txtSettingsFolder"), state->user_db_folder);
    control<QPushButton>(folders, "btnVersions").click();
    EXPECT_EQ(about_opened, 1);
}

} // namespace
} // namespace cvd::testing
