// The queue's windows as an operator uses them: the folders and their refresh, sorting, Copy and Edit, Cancel
// and Requeue, the message detail, and the schedule dialog.
#include "console/bad_form.h"
#include "console/control_map.h"
#include "console/folder_form.h"
#include "console/folder_grid_model.h"
#include "console/frm_message_detail.h"
#include "console/frm_schedule.h"
#include "console/pending_form.h"
#include "console/queue_windows.h"
#include "console/sched_form.h"
#include "console/sent_form.h"
#include "console_test.h"
#include "core/settings.h"
#include "support/message_rows.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableView>
#include <QTimeEdit>
#include <QtTest/QTest>

using namespace Qt::StringLiterals;

namespace cvd::testing {
namespace {

using State = MessageRow::State;

class QueueWindows : public ConsoleTest
{
protected:
    void SetUp() override
    {
        ConsoleTest::SetUp();
        state->first_transaction = 100;
        db().exec(u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_ad_hoc) VALUES ('bob', 'Bob Smith', 0), "
                  "('amy', 'Amy Lee', 0)"_s);
        console::register_queue_windows(*context);
    }

    qint64 add(State state_of_row, const QString& recipient, const QString& text, int minute = 0)
    {
        MessageRow row;
        row.state = state_of_row;
        row.transaction = 101;
        row.recipient = recipient;
        row.message = text;
        row.requested = row.requested.addSecs(qint64{minute} * 60);
        return add_message(db(), row);
    }

    template <typename Window> Window& open(const QString& entry)
    {
        context->catalog.open(entry);
        Window* window = windows.find<Window>();
        if (window == nullptr) {
            throw std::runtime_error("window not open");
        }
        return *window;
    }

    static QStringList column(console::FolderForm& folder, int column)
    {
        QStringList texts;
        const QAbstractItemModel& model = *folder.grid().model();
        for (int row = 0; row < model.rowCount(); ++row) {
            texts.append(model.index(row, column).data().toString());
        }
        return texts;
    }

    static void select_rows(console::FolderForm& folder, std::initializer_list<int> rows)
    {
        folder.grid().clearSelection();
        for (const int row : rows) {
            folder.grid().selectionModel()->select(folder.grid().model()->index(row, 2),
                                                   QItemSelectionModel::Select | QItemSelectionModel::Rows);
        }
    }

    static void click_heading(console::FolderForm& folder, int section)
    {
        QHeaderView& header = *folder.grid().horizontalHeader();
        QTest::mouseClick(header.viewport(), Qt::LeftButton, {},
                          QPoint(header.sectionViewportPosition(section) + 4, 4));
    }

    QString display(const char* name)
    {
        return state->settings.get_setting_text({u"display", QString::fromLatin1(name)});
    }
};

TEST_F(QueueWindows, AFolderReloadsOnlyWhenItsRowsChanged)
{
    add(State::Sent, u"bob"_s, u"first"_s);
    auto& sent = open<console::sent_form>(u"sent"_s);
    EXPECT_EQ(sent.windowTitle(), u"Sent Messages"_s);
    EXPECT_EQ(column(sent, 2), QStringList{u"Bob Smith"_s});
    EXPECT_TRUE(sent.grid().isColumnHidden(0));
    EXPECT_TRUE(sent.grid().isColumnHidden(4));
    select_rows(sent, {0});

    context->doors.refresh_folders(); // nothing changed: the grid is left alone, selection and all
    EXPECT_EQ(sent.grid().selectionModel()->selectedRows().size(), 1);

    add(State::Sent, u"amy"_s, u"second"_s, 1);
    add(State::Pending, u"amy"_s, u"not here"_s);
    context->doors.refresh_folders();
    EXPECT_EQ(column(sent, 3), (QStringList{u"first"_s, u"second"_s}));
    EXPECT_TRUE(sent.grid().selectionModel()->selectedRows().isEmpty());

    // A hidden folder is not refreshed on the tick.
    sent.hide();
    add(State::Sent, u"amy"_s, u"third"_s, 2);
    context->doors.refresh_folders();
    EXPECT_EQ(sent.model().rowCount(), 2);
    control<QPushButton>(sent, "refresh_button").click();
    EXPECT_EQ(sent.model().rowCount(), 3);

    sent.close();
    EXPECT_EQ(send_form.counter_updates, 1);
    EXPECT_NE(display("sent_width"), QString());
}

TEST_F(QueueWindows, OnlyTheSentFolderTogglesFromItsOwnKey)
{
    for (const State each : {State::Sent, State::Pending}) {
        add(each, u"amy"_s, u"b"_s, each == State::Sent ? 1 : 3);
        add(each, u"bob"_s, u"a"_s, 2);
    }
    auto& sent = open<console::sent_form>(u"sent"_s);
    click_heading(sent, 3);
    EXPECT_EQ(display("sent_sort_order"), u"SortByMessageAscending"_s);
    EXPECT_EQ(column(sent, 3), (QStringList{u"a"_s, u"b"_s}));
    click_heading(sent, 3);
    EXPECT_EQ(display("sent_sort_order"), u"SortByMessageDescending"_s);
    EXPECT_EQ(column(sent, 3), (QStringList{u"b"_s, u"a"_s}));
    click_heading(sent, 1);
    EXPECT_EQ(display("sent_sort_order"), u"SortBySentAscending"_s);
    click_heading(sent, 2);

    // The pending folder follows the sent folder's key when it refreshes, where it has that routine, and reads
    // the history's key on a heading click, so a second click sorts ascending again.
    auto& pending = open<console::pending_form>(u"pending"_s);
    EXPECT_EQ(display("pend_sort_order"), u"SortByToAscending"_s);
    EXPECT_EQ(column(pending, 2), (QStringList{u"Amy Lee"_s, u"Bob Smith"_s}));
    click_heading(pending, 2);
    click_heading(pending, 2);
    EXPECT_EQ(display("pend_sort_order"), u"SortByToAscending"_s);
    EXPECT_EQ(column(pending, 2), (QStringList{u"Amy Lee"_s, u"Bob Smith"_s}));
    state->settings.put_setting({u"display", u"list_sort_order"}, u"SortByToAscending"_s);
    click_heading(pending, 2);
    EXPECT_EQ(column(pending, 2), (QStringList{u"Bob Smith"_s, u"Amy Lee"_s}));
    emit pending.grid().horizontalHeader()->sectionClicked(0); // the hidden id column sorts nothing
    EXPECT_EQ(display("pend_sort_order"), u"SortByToDescending"_s);
    EXPECT_EQ(display("list_sort_order"), u"SortByToAscending"_s); // never written here
}

TEST_F(QueueWindows, EditInTheScheduledFolderHoldsTheMessageInTheSendWindow)
{
    MessageRow row;
    row.recipient = u"bob"_s;
    row.message = u"Check the backup"_s;
    row.repeat_interval = 90;
    const qint64 id = add_message(db(), row);
    add(State::Waiting, u"amy"_s, u"stays"_s, 5);
    context->catalog.open(u"tbrSchedule"_s);
    ASSERT_NE(windows.find<console::frmSchedule>(), nullptr);

    auto& sched = open<console::sched_form>(u"scheduled"_s);
    EXPECT_EQ(control<QPushButton>(sched, "btnEdit").text(), u"Edit"_s);
    control<QPushButton>(sched, "btnEdit").click(); // nothing selected: nothing happens
    EXPECT_TRUE(send_form.loaded_messages.isEmpty());
    select_rows(sched, {0});
    control<QPushButton>(sched, "btnCopy").click(); // Copy leaves the row
    EXPECT_EQ(send_form.loaded_messages.size(), 1);
    EXPECT_EQ(scalar(u"SELECT COUNT(*) FROM cv_messages"_s), 2);

    auto& again = open<console::sched_form>(u"scheduled"_s);
    select_rows(again, {0});
    shared.schedule.clear();
    control<QPushButton>(again, "btnEdit").click();
    EXPECT_EQ(send_form.loaded_messages.last(), std::pair(u"bob"_s, u"Check the backup"_s));
    EXPECT_EQ(scalar(u"SELECT COUNT(*) FROM cv_messages WHERE cv_message_id = "_s + QString::number(id)), 0);
    EXPECT_EQ(env.prompter.box_titles(), QStringList{u"Important - Message Held"_s});
    EXPECT_TRUE(shared.schedule.schedule_flag && shared.schedule.repeat_flag && shared.schedule.dialog_applied);
    EXPECT_EQ(shared.schedule.schedule_time, row.requested);
    EXPECT_EQ(shared.schedule.repeat_stop_time, row.requested.addDays(1));
    EXPECT_EQ(shared.schedule.repeat_minutes, 90);
    EXPECT_FALSE(again.isVisible());
    QApplication::processEvents();
    EXPECT_EQ(windows.find<console::frmSchedule>(), nullptr);
}

TEST_F(QueueWindows, CancelAndRequeueTouchOnlyRowsStillInTheStateTheyExpect)
{
    add(State::Pending, u"bob"_s, u"cancel me"_s, 1);
    const qint64 finished = add(State::Pending, u"amy"_s, u"engine got it"_s, 2);
    auto& pending = open<console::pending_form>(u"pending"_s);
    db().exec(u"UPDATE cv_messages SET cv_sent = -1 WHERE cv_message_id = "_s + QString::number(finished));
    select_rows(pending, {0, 1});
    control<QPushButton>(pending, "Command1").click();
    EXPECT_EQ(scalar(u"SELECT COUNT(*) FROM cv_messages WHERE cv_error <> 0"_s), 1);
    EXPECT_EQ(send_form.counters_changed_notes, 1);
    EXPECT_EQ(pending.model().rowCount(), 0);          // reloaded
    control<QPushButton>(pending, "Command1").click(); // nothing selected: still reloads, changes nothing
    EXPECT_EQ(scalar(u"SELECT COUNT(*) FROM cv_messages WHERE cv_error <> 0"_s), 1);

    auto& bad = open<console::bad_form>(u"bad"_s);
    EXPECT_EQ(column(bad, 3), QStringList{u"cancel me"_s});
    select_rows(bad, {0});
    control<QPushButton>(bad, "Command2").click();
    EXPECT_EQ(bad.model().rowCount(), 0);
    EXPECT_EQ(scalar(u"SELECT COUNT(*) FROM cv_messages WHERE cv_sent = 0 AND cv_scheduled = 0 AND "
                     "cv_transaction <> 101"_s),
              1);
}

TEST_F(QueueWindows, DetailsShowTheSelectedRowOfTheAskingFolder)
{
    add(State::Sent, u"amy"_s, u"other"_s, 1);
    add(State::Sent, u"bob"_s, u"Disk full"_s, 2);
    auto& sent = open<console::sent_form>(u"sent"_s);
    select_rows(sent, {1});
    QString shown;
    when_modal([&shown](QWidget& detail) {
        shown = detail.findChild<QPlainTextEdit*>(u"txtDetails"_s)->toPlainText();
        detail.close();
    });
    control<QPushButton>(sent, "btnDetails").click();
    EXPECT_EQ(shared.detail_source, 3);
    EXPECT_TRUE(shown.startsWith(u"To: Bob Smith\n"_s)) << shown.toStdString();
    EXPECT_TRUE(shown.endsWith(u"Message:\nDisk full"_s));
}

TEST_F(QueueWindows, ScheduleDialogKeepsWhatWasAppliedAndRefusesAStopBeforeTheSend)
{
    context->catalog.open(u"tbrSchedule"_s);
    auto* dialog = windows.find<console::frmSchedule>();
    ASSERT_NE(dialog, nullptr);
    EXPECT_FALSE(control<QLineEdit>(*dialog, "edtRepeatDays").isEnabled());
    auto& start = control<QTimeEdit>(*dialog, "dtpStartTime");
    start.setTime(QTime(11, 0));
    control<QCheckBox>(*dialog, "chkRepeat").click();
    EXPECT_TRUE(control<QLineEdit>(*dialog, "edtRepeatDays").isEnabled());
    QLineEdit& hours = control<QLineEdit>(*dialog, "edtRepeatHours");
    hours.setText(u"30"_s);
    emit hours.editingFinished();
    EXPECT_EQ(hours.text(), u"23"_s);
    control<QLineEdit>(*dialog, "edtRepeatMinutes").setText(u"1"_s);
    control<QTimeEdit>(*dialog, "dtpStopTime").setTime(QTime(11, 0));
    control<QPushButton>(*dialog, "btnApply").click();
    EXPECT_EQ(env.prompter.box_titles(), QStringList{u"INVALID STOP DATE/TIME"_s});
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_FALSE(shared.schedule.schedule_flag);

    hours.setText(u"1"_s);
    control<QLineEdit>(*dialog, "edtRepeatMinutes").setText(u"30"_s);
    control<QTimeEdit>(*dialog, "dtpStopTime").setTime(QTime(18, 0));
    control<QPushButton>(*dialog, "btnApply").click();
    EXPECT_TRUE(shared.schedule.schedule_flag && shared.schedule.repeat_flag);
    EXPECT_EQ(shared.schedule.repeat_minutes, 90);
    EXPECT_EQ(shared.schedule.schedule_time, QDateTime(env.clock.now().date(), QTime(11, 0)));
    QApplication::processEvents();
    ASSERT_EQ(windows.find<console::frmSchedule>(), nullptr);

    context->catalog.open(u"tbrSchedule"_s);
    dialog = windows.find<console::frmSchedule>();
    EXPECT_TRUE(control<QCheckBox>(*dialog, "chkRepeat").isChecked());
    EXPECT_EQ(control<QLineEdit>(*dialog, "edtRepeatDays").text(), u"0"_s);
    EXPECT_EQ(control<QLineEdit>(*dialog, "edtRepeatHours").text(), u"1"_s);
    EXPECT_EQ(control<QLineEdit>(*dialog, "edtRepeatMinutes").text(), u"30"_s);
    control<QPushButton>(*dialog, "btnClose").click(); // Cancel keeps the earlier Apply
    EXPECT_TRUE(shared.schedule.repeat_flag);
    EXPECT_EQ(shared.schedule.repeat_minutes, 90);
}

TEST_F(QueueWindows, EveryQueueWindowPublishesItsControls)
{
    std::vector<std::unique_ptr<QWidget>> under_test;
    under_test.push_back(std::make_unique<console::sched_form>(*context));
    under_test.push_back(std::make_unique<console::pending_form>(*context));
    under_test.push_back(std::make_unique<console::sent_form>(*context));
    under_test.push_back(std::make_unique<console::bad_form>(*context));
    under_test.push_back(std::make_unique<console::frmSchedule>(*context, &send_form.window()));
    under_test.push_back(std::make_unique<console::frmMessageDetail>(*context, &send_form.window()));
    for (const std::unique_ptr<QWidget>& window : under_test) {
        for (QWidget* each : window->findChildren<QWidget*>()) {
            const QString name = each->objectName();
            if (name.isEmpty() || name.startsWith(u"qt_"_s)) {
                continue;
            }
            SCOPED_TRACE(name.toStdString());
            EXPECT_EQ(each->accessibleDescription(), name);
            EXPECT_FALSE(each->accessibleName().isEmpty());
        }
    }
}

TEST_F(QueueWindows, ScriptsFindTheScheduleDialogAndAFolderRowByTheirNames)
{
    add(State::Waiting, u"bob"_s, u"boiler"_s);
    context->catalog.open(u"tbrSchedule"_s);
    auto& scheduled = open<console::sched_form>(u"scheduled"_s);
    const QStringList map = console::program_map_text(send_form.window()).split(u'\n');
    const auto line_of = [&map](const QString& name) {
        for (const QString& line : map) {
            if (line.startsWith(name + u' ')) {
                return line.split(u' ');
            }
        }
        return QStringList{};
    };
    EXPECT_FALSE(line_of(u"frmSchedule/btnApply"_s).isEmpty());
    // The row reads as the grid shows it, and its place is the first column in view, not the hidden id.
    const QStringList row = line_of(u"sched_form/Status_Grid[0]"_s);
    ASSERT_GT(row.size(), 5);
    EXPECT_TRUE(row.join(u' ').endsWith(u"| Bob Smith | boiler"_s)) << row.join(u' ').toStdString();
    const QTableView& grid = scheduled.grid();
    EXPECT_EQ(row.at(1).toInt(), grid.viewport()->mapToGlobal(QPoint(grid.columnViewportPosition(1), 0)).x());
    EXPECT_GT(row.at(3).toInt(), 0);
}

} // namespace
} // namespace cvd::testing
