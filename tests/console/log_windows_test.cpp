// The history, the engine's activity log and the search window over both.
#include "console/control_map.h"
#include "console/frm_find.h"
#include "console/log_form.h"
#include "console/log_windows.h"
#include "console/modem_log_form.h"
#include "console/printer_choice.h"
#include "console_test.h"
#include "core/settings.h"
#include "support/printers.h"
#include "support/scripted_prompter.h"

#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QHeaderView>
#include <QLineEdit>
#include <QListView>
#include <QPrinter>
#include <QPushButton>
#include <QTableView>
#include <QTest>

using namespace Qt::StringLiterals;

namespace cvd::testing {
namespace {

constexpr SettingKey kListSortOrder{u"display", u"list_sort_order"};

class LogWindows : public ConsoleTest
{
protected:
    void SetUp() override
    {
        ConsoleTest::SetUp();
        console::register_log_windows(*context);
        db().exec(u"INSERT INTO cv_recipients (cv_name, cv_full_name) VALUES ('zed', 'Zed Ward')"_s);
    }
    void TearDown() override
    {
        console::set_printer_chooser({});
        ConsoleTest::TearDown();
    }

    // flags as scheduled, sent, error (-1/0)
    qint64 add(const QString& recipient, const QString& text, const QString& requested, int scheduled, int sent,
               int error)
    {
        store::Statement insert = db().prepare(
            u"INSERT INTO cv_messages (cv_recipient, cv_pin, cv_message, cv_date_time_requested, cv_repeat_stop, "
            "cv_repeat_interval, cv_scheduled, cv_sent, cv_error, cv_transaction) "
            "VALUES (?1, '', ?2, ?3, ?3, 30, ?4, ?5, ?6, 7)"_s);
        insert.bind(1, recipient).bind(2, text).bind(3, requested).bind(4, scheduled).bind(5, sent).bind(6, error);
        insert.exec();
        return db().last_insert_id();
    }

    console::log_form& open_history()
    {
        context->catalog.open(u"history"_s);
        auto* history = windows.find<console::log_form>();
        if (history == nullptr) {
            throw std::runtime_error("no history window");
        }
        return *history;
    }

    QTableView& grid(QWidget& history) { return control<QTableView>(history, "Status_Grid"); }

    QStringList column(QWidget& history, int position)
    {
        QAbstractItemModel* model = grid(history).model();
        QStringList values;
        for (int row = 0; row < model->rowCount(); ++row) {
            values.append(model->index(row, position).data().toString());
        }
        return values;
    }

    void select_rows(QWidget& history, std::initializer_list<int> rows)
    {
        QTableView& table = grid(history);
        for (const int row : rows) {
            table.selectionModel()->select(table.model()->index(row, 1),
                                           QItemSelectionModel::Select | QItemSelectionModel::Rows);
        }
    }

    void click_heading(QWidget& history, int column)
    {
        QHeaderView* headings = grid(history).horizontalHeader();
        QTest::mouseClick(headings->viewport(), Qt::LeftButton, {},
                          QPoint(headings->sectionViewportPosition(column) + 5, headings->height() / 2));
    }

    console::frmFind& open_find(QWidget& log)
    {
        QTest::mouseClick(&control<QPushButton>(log, "btnFind"), Qt::LeftButton);
        auto* find = windows.find<console::frmFind>();
        if (find == nullptr) {
            throw std::runtime_error("no search window");
        }
        return *find;
    }

    void search(console::frmFind& find, const QString& text, const char* button)
    {
        control<QLineEdit>(find, "txtFind").setText(text);
        QTest::mouseClick(&control<QPushButton>(find, button), Qt::LeftButton);
    }

    QString log_path() const { return state->user_db_folder + u"/cvd.log"_s; }
    void write_log(const QByteArray& bytes)
    {
        QFile file(log_path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
};

TEST_F(LogWindows, HistoryOpensInRequestOrderAndHeadingsSortAndToggleThroughTheStoredOrder)
{
    const qint64 late = add(u"zed"_s, u"late"_s, u"2026-11-20 10:00:00"_s, -1, -1, 0);
    const qint64 early = add(u"amy"_s, u"early"_s, u"2026-11-20 08:00:00"_s, 0, 0, 0);
    const qint64 failed = add(u"bob"_s, u"failed"_s, u"2026-11-20 09:00:00"_s, -1, -1, -1);
    console::log_form& history = open_history();
    EXPECT_EQ(history.windowTitle(), u"Message History"_s);
    const auto ids = [](std::initializer_list<qint64> list) {
        QStringList texts;
        for (const qint64 id : list) {
            texts.append(QString::number(id));
        }
        return texts;
    };
    EXPECT_EQ(column(history, 0), ids({early, failed, late}));
    EXPECT_EQ(column(history, 3), (QStringList{u"Scheduled"_s, u"Failed"_s, u"Successful"_s}));
    EXPECT_EQ(column(history, 4), (QStringList{u"amy"_s, u"bob"_s, u"Zed Ward"_s}));
    EXPECT_EQ(state->settings.get_setting_text(kListSortOrder), u"SortByRequestedAscending"_s);

    click_heading(history, 3);
    EXPECT_EQ(column(history, 0), ids({failed, early, late}));
    EXPECT_EQ(state->settings.get_setting_text(kListSortOrder), u"SortByStatusAscending"_s);
    click_heading(history, 3);
    EXPECT_EQ(column(history, 0), ids({late, early, failed}));
    EXPECT_EQ(state->settings.get_setting_text(kListSortOrder), u"SortByStatusDescending"_s);
    EXPECT_EQ(grid(history).horizontalHeader()->sortIndicatorSection(), 3);
    EXPECT_EQ(grid(history).horizontalHeader()->sortIndicatorOrder(), Qt::DescendingOrder);
    // The stored order of another window makes the first click ascending.
    state->settings.put_setting(kListSortOrder, u"SortByRequestedAscending"_s);
    click_heading(history, 4);
    EXPECT_EQ(column(history, 4), (QStringList{u"amy"_s, u"bob"_s, u"Zed Ward"_s}));
}

TEST_F(LogWindows, ScriptsReadAHistoryRowWithItsStatusFromTheMap)
{
    add(u"zed"_s, u"failed"_s, u"2026-11-20 09:00:00"_s, -1, -1, -1);
    open_history();
    const QString map = console::program_map_text(send_form.window());
    const qsizetype at = map.indexOf(u"\nlog_form/Status_Grid[0] "_s);
    ASSERT_NE(at, -1) << map.toStdString();
    const QString row = map.mid(at + 1, map.indexOf(u'\n', at + 1) - at - 1);
    EXPECT_TRUE(row.contains(u" | Failed | Zed Ward | "_s)) << row.toStdString();
}

TEST_F(LogWindows, RequeueSendsTheSelectedRowsAgainAndShowsThemPending)
{
    const qint64 sent = add(u"zed"_s, u"sent"_s, u"2026-11-20 08:00:00"_s, -1, -1, 0);
    const qint64 pending = add(u"amy"_s, u"pending"_s, u"2026-11-20 09:00:00"_s, -1, 0, 0);
    const qint64 kept = add(u"bob"_s, u"kept"_s, u"2026-11-20 10:00:00"_s, -1, -1, 0);
    console::log_form& history = open_history();
    select_rows(history, {0, 1});
    QTest::mouseClick(&control<QPushButton>(history, "btnRequeue"), Qt::LeftButton);

    EXPECT_EQ(scalar(u"SELECT count(*) FROM cv_messages WHERE cv_scheduled = 0 AND cv_sent = 0 AND cv_error = 0 "
                     "AND cv_transaction <> 7 AND cv_date_time_requested = '2026-11-23 09:30:00'"_s),
              2);
    EXPECT_EQ(scalar(u"SELECT cv_sent FROM cv_messages WHERE cv_message_id = %1"_s.arg(kept)), -1);
    // Rebuilt in request order: the requeued rows are due now, after the one left alone, and show as pending;
    // between them the one never sent comes first.
    EXPECT_EQ(column(history, 0),
              (QStringList{QString::number(kept), QString::number(pending), QString::number(sent)}));
    EXPECT_EQ(column(history, 3), (QStringList{u"Successful"_s, u"Pending"_s, u"Pending"_s}));
    EXPECT_TRUE(grid(history).selectionModel()->selectedRows().isEmpty());
    EXPECT_TRUE(control<QPushButton>(history, "btnRequeue").isEnabled());
}

TEST_F(LogWindows, CopyLoadsTheMessageWithItsScheduleAndDetailsNamesTheRow)
{
    add(u"amy"_s, u"first"_s, u"2026-11-20 08:00:00"_s, -1, -1, 0);
    const qint64 second = add(u"zed"_s, u"second"_s, u"2026-11-20 09:00:00"_s, -1, -1, 0);
    int details_opened = 0;
    context->catalog.add(u"frmMessageDetail"_s, [&](QWidget*) { ++details_opened; });
    console::log_form& history = open_history();
    QTest::mouseClick(&control<QPushButton>(history, "btnEdit"), Qt::LeftButton);
    EXPECT_TRUE(send_form.loaded_messages.isEmpty()); // nothing selected
    select_rows(history, {1});
    QTest::mouseClick(&control<QPushButton>(history, "btnDetails"), Qt::LeftButton);
    EXPECT_EQ(details_opened, 1);
    EXPECT_EQ(shared.detail_source, 5);
    EXPECT_EQ(shared.detail_message_id, second);

    QTest::mouseClick(&control<QPushButton>(history, "btnEdit"), Qt::LeftButton);
    ASSERT_EQ(send_form.loaded_messages.size(), 1);
    EXPECT_EQ(send_form.loaded_messages.front(), std::make_pair(u"zed"_s, u"second"_s));
    EXPECT_TRUE(shared.schedule.schedule_flag && shared.schedule.repeat_flag && shared.schedule.dialog_applied);
    EXPECT_EQ(shared.schedule.schedule_time, QDateTime(QDate(2026, 11, 20), QTime(9, 0)));
    EXPECT_EQ(shared.schedule.repeat_minutes, 30);
    QApplication::processEvents();
    EXPECT_EQ(windows.find<console::log_form>(), nullptr);
    EXPECT_EQ(scalar(u"SELECT count(*) FROM cv_messages"_s), 2);
}

TEST_F(LogWindows, FindWalksFromTheMarkReadsHiddenColumnsAndSaysSoPastTheEnd)
{
    add(u"amy"_s, u"call back"_s, u"2026-11-20 08:00:00"_s, 0, 0, 0);
    add(u"bob"_s, u"lunch"_s, u"2026-11-20 09:00:00"_s, 0, 0, 0);
    const qint64 third = add(u"zed"_s, u"CALL now"_s, u"2026-11-20 10:00:00"_s, 0, 0, 0);
    console::log_form& history = open_history();
    console::frmFind& find = open_find(history);
    EXPECT_EQ(shared.find_target, 2);
    const auto marked = [&] {
        QList<int> rows;
        for (const QModelIndex& index : grid(history).selectionModel()->selectedRows()) {
            rows.append(index.row());
        }
        return rows;
    };
    search(find, u"call"_s, "btnFindNext");
    EXPECT_EQ(marked(), QList<int>{0});
    search(find, u"call"_s, "btnFindNext");
    EXPECT_EQ(marked(), QList<int>{2});
    search(find, u"call"_s, "btnFindNext");
    EXPECT_TRUE(marked().isEmpty());
    ASSERT_EQ(env.prompter.boxes.size(), 1);
    EXPECT_EQ(env.prompter.boxes.front(), (Notice{u"Not matches found"_s, u"No Match"_s}));
    // From no mark, Prev starts at the last row.
    search(find, u"call"_s, "btnFindPrev");
    EXPECT_EQ(marked(), QList<int>{2});
    search(find, u"call"_s, "btnFindPrev");
    EXPECT_EQ(marked(), QList<int>{0});
    // The request time as a number is out of sight and still found.
    grid(history).clearSelection();
    search(find, u"46346.41"_s, "btnFindNext");
    EXPECT_EQ(marked(), QList<int>{2});
    EXPECT_EQ(grid(history).model()->index(2, 0).data().toString(), QString::number(third));
}

TEST_F(LogWindows, PrintAndClipboardLayTheListOutAsText)
{
    add(u"zed"_s, u"hello\tthere"_s, u"2026-11-20 08:00:00"_s, -1, -1, 0);
    console::log_form& history = open_history();
    QTest::mouseClick(&control<QPushButton>(history, "Command3"), Qt::LeftButton);
    const QStringList lines = QApplication::clipboard()->text().split(u"\r\n"_s);
    ASSERT_EQ(lines.size(), 4);
    EXPECT_TRUE(lines[0].startsWith(u"Requested            Sent"_s));
    EXPECT_TRUE(lines[2].contains(u" Successful Zed Ward" + QString(33 + 41, u' ') + u"hello there"_s))
        << lines[2].toStdString();
    EXPECT_EQ(lines[3], QString());

    const QString pdf = env.path(u"history.pdf"_s);
    int asked = 0;
    console::set_printer_chooser([&](QPrinter&) {
        ++asked;
        return false;
    });
    QTest::mouseClick(&control<QPushButton>(history, "Command1"), Qt::LeftButton);
    EXPECT_EQ(asked, 1);
    EXPECT_FALSE(QFile::exists(pdf));
    EXPECT_TRUE(control<QPushButton>(history, "Command1").isEnabled());
    console::set_printer_chooser([&](QPrinter& printer) {
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(pdf);
        return true;
    });
    QTest::mouseClick(&control<QPushButton>(history, "Command1"), Qt::LeftButton);
    EXPECT_GT(QFileInfo(pdf).size(), 0);
}

TEST_F(LogWindows, ActivityLogShowsItsEndPurgesOnYesAndCopiesItsLines)
{
    write_log("dial 5551234\r\nCONNECT 9600\r\nhang up\r\n");
    context->catalog.open(u"log"_s);
    auto* log = windows.find<console::modem_log_form>();
    ASSERT_NE(log, nullptr);
    EXPECT_EQ(log->windowTitle(), u"Activity Log"_s);
    QListView& list = control<QListView>(*log, "log_list");
    ASSERT_EQ(list.model()->rowCount(), 3);
    EXPECT_EQ(list.currentIndex().row(), 2);
    EXPECT_TRUE(list.selectionModel()->selectedRows().isEmpty());

    QTest::mouseClick(&control<QPushButton>(*log, "Command3"), Qt::LeftButton);
    EXPECT_EQ(QApplication::clipboard()->text(), u"dial 5551234\r\nCONNECT 9600\r\nhang up\r\n"_s);

    console::frmFind& find = open_find(*log);
    EXPECT_EQ(shared.find_target, 1);
    search(find, u"connect"_s, "btnFindNext");
    EXPECT_EQ(list.selectionModel()->selectedRows().value(0).row(), 1);

    // The history closing leaves the activity log's search open.
    context->catalog.open(u"history"_s);
    windows.find<console::log_form>()->close();
    QApplication::processEvents();
    EXPECT_NE(windows.find<console::frmFind>(), nullptr);

    QTest::mouseClick(&control<QPushButton>(*log, "Command4"), Qt::LeftButton); // answered No
    EXPECT_TRUE(QFile::exists(log_path()));
    env.prompter.answer_next(BoxAnswer::Yes);
    QTest::mouseClick(&control<QPushButton>(*log, "Command4"), Qt::LeftButton);
    EXPECT_EQ(env.prompter.boxes.back(), (Notice{u"Are you sure you want to delete this log?"_s,
                                                 u"Purge Confirmation"_s, BoxIcon::None, BoxButtons::YesNo}));
    EXPECT_FALSE(QFile::exists(log_path()));
    EXPECT_EQ(list.model()->rowCount(), 0);

    // Its own search goes when the log goes.
    log->close();
    QApplication::processEvents();
    QApplication::processEvents();
    EXPECT_EQ(windows.find<console::frmFind>(), nullptr);
}

} // namespace
} // namespace cvd::testing
