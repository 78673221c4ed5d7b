// The on-call roster of a group with its span dialog, and the text export and import of the File menu.
#include "console/exchange_windows.h"
#include "console/frm_add_oncall.h"
#include "console/frm_export_text.h"
#include "console/frm_import_text.h"
#include "console/frm_on_call_sched.h"
#include "console_test.h"
#include "exchange/text_exchange.h"
#include "intake/registry_transfer.h"
#include "store/database.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QProgressDialog>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QTimeEdit>

using namespace Qt::StringLiterals;

namespace cvd::testing {
namespace {

class ExchangeWindows : public ConsoleTest
{
protected:
    void SetUp() override
    {
        ConsoleTest::SetUp();
        db().exec(u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_group, cv_ad_hoc) VALUES "
                  "('ann', 'Ann Smith', 0, 0), ('bob', 'Bob Jones', 0, 0), ('ops', 'Operations', -1, 0), "
                  "('empty', 'Nobody Here', -1, 0)"_s);
        db().exec(u"INSERT INTO cv_groups (cv_group, cv_recipient) VALUES ('ops', 'ann'), ('ops', 'bob')"_s);
        db().exec(u"INSERT INTO cv_oncalltable (cv_group, cv_recipient, cv_start_day, cv_start_time, cv_stop_day, "
                  "cv_stop_time) VALUES ('ops', 'ann', 2, '1899-12-30 08:00:00', 2, '1899-12-30 17:00:00'), "
                  "('ops', 'bob', 7, '1899-12-30 22:00:00', 1, '1899-12-30 06:00:00')"_s);
    }

    QStringList roster(const QString& group)
    {
        store::Statement query = db().prepare(u"SELECT cv_recipient, cv_start_day, cv_start_time, cv_stop_day, "
                                              "cv_stop_time FROM cv_oncalltable WHERE cv_group = ?1 ORDER BY rowid"_s);
        query.bind(1, group);
        QStringList rows;
        while (query.step()) {
            QStringList cells;
            for (int i = 0; i < 5; ++i) {
                cells.append(query.text(i).value_or(QString()));
            }
            rows.append(cells.join(u'|'));
        }
        return rows;
    }

    QStringList grid_recipients(QWidget& window)
    {
        auto& grid = control<QTableWidget>(window, "OnCallGrid");
        QStringList names;
        for (int row = 0; row < grid.rowCount(); ++row) {
            names.append(grid.item(row, 1)->text());
        }
        return names;
    }

    // Fills the span dialog that the next exec() opens and applies it.
    void fill_span_and_apply(const QString& user, const QString& start_day, QTime start, const QString& stop_day,
                             QTime stop)
    {
        when_modal([=, this](QWidget& span) {
            control<QComboBox>(span, "fuser").setCurrentText(user);
            control<QComboBox>(span, "fstart_day").setCurrentText(start_day);
            control<QTimeEdit>(span, "fstart_time").setTime(start);
            control<QComboBox>(span, "fstop_day").setCurrentText(stop_day);
            control<QTimeEdit>(span, "fstop_time").setTime(stop);
            control<QPushButton>(span, "btnApply").click();
        });
    }

    QString write_file(const QString& name, const QByteArray& content)
    {
        QString path = env.path(name);
        QFile out(path);
        out.open(QIODevice::WriteOnly);
        out.write(content);
        return path;
    }

    qint64 count(const QString& sql) { return scalar(sql); }
};

TEST_F(ExchangeWindows, RosterEditsStayInTheGridUntilApplyWhichReplacesTheGroupsRows)
{
    const QStringList stored = roster(u"ops"_s);
    for (const bool apply : {false, true}) {
        SCOPED_TRACE(apply);
        console::frmOnCallSched window(*context, u"ops"_s, &send_form.window());
        EXPECT_EQ(window.windowTitle(), u"On-Call Schedule"_s);
        EXPECT_EQ(grid_recipients(window), (QStringList{u"Ann Smith"_s, u"Bob Jones"_s}));
        auto& grid = control<QTableWidget>(window, "OnCallGrid");
        EXPECT_EQ(grid.item(1, 2)->text(), u"Saturday"_s);
        EXPECT_EQ(grid.item(1, 3)->text(), u"10:00 PM"_s);

        // Edit with nothing selected does nothing; a double click on a row edits it.
        control<QPushButton>(window, "btnEdit").click();
        grid.selectRow(0);
        control<QPushButton>(window, "btnDelete").click();
        fill_span_and_apply(u"Ann Smith"_s, u"Friday"_s, QTime(18, 30), u"Monday"_s, QTime(7, 0));
        control<QPushButton>(window, "btnAdd").click();
        EXPECT_EQ(grid_recipients(window), (QStringList{u"Bob Jones"_s, u"Ann Smith"_s}));
        EXPECT_TRUE(grid.selectionModel()->selectedRows().isEmpty());
        EXPECT_EQ(roster(u"ops"_s), stored); // nothing reaches the table before Apply

        control<QPushButton>(window, apply ? "btnAccept" : "btnCancel").click();
        EXPECT_FALSE(window.isVisible());
    }
    EXPECT_EQ(roster(u"ops"_s), (QStringList{u"bob|7|1899-12-30 22:00:00|1|1899-12-30 06:00:00"_s,
                                             u"ann|6|1899-12-30 18:30:00|2|1899-12-30 07:00:00"_s}));
}

TEST_F(ExchangeWindows, SpanDialogAddsWithDefaultsAndEditsTheFirstSelectedRow)
{
    console::frmAddOncall add(*context, u"ops"_s, std::nullopt, &send_form.window());
    EXPECT_EQ(add.windowTitle(), u"Add Schedule"_s);
    EXPECT_EQ(control<QComboBox>(add, "fuser").currentText(), u"Ann Smith"_s);
    EXPECT_EQ(control<QComboBox>(add, "fstop_day").currentText(), u"Sunday"_s);
    EXPECT_EQ(control<QComboBox>(add, "fstart_day").count(), 7);
    EXPECT_EQ(control<QTimeEdit>(add, "fstart_time").time(), QTime(12, 0));
    control<QPushButton>(add, "btnApply").click();
    EXPECT_EQ(add.result(), (addressbook::RosterGridRow{u"ops"_s, u"Ann Smith"_s, u"Sunday"_s, u"12:00 PM"_s,
                                                        u"Sunday"_s, u"12:00 PM"_s}));

    // A group without members gets no row, and nothing is said.
    console::frmAddOncall nobody(*context, u"empty"_s, std::nullopt, &send_form.window());
    control<QPushButton>(nobody, "btnApply").click();
    EXPECT_FALSE(nobody.result());

    // Edit in the roster: the first selected row from the top is shown and overwritten, its group kept.
    console::frmOnCallSched window(*context, u"ops"_s, &send_form.window());
    auto& grid = control<QTableWidget>(window, "OnCallGrid");
    grid.setSelectionMode(QAbstractItemView::MultiSelection);
    grid.selectRow(1);
    grid.selectRow(0);
    QString shown;
    when_modal([&](QWidget& span) {
        shown = span.windowTitle() + u' ' + control<QComboBox>(span, "fuser").currentText() + u' ' +
                control<QComboBox>(span, "fstart_day").currentText() + u' ' +
                control<QTimeEdit>(span, "fstop_time").time().toString(u"HH:mm"_s);
        control<QComboBox>(span, "fuser").setCurrentText(u"Bob Jones"_s);
        control<QPushButton>(span, "btnApply").click();
    });
    emit grid.cellDoubleClicked(1, 0);
    EXPECT_EQ(shown, u"Edit Schedule Ann Smith Monday 17:00"_s);
    EXPECT_EQ(grid_recipients(window), (QStringList{u"Bob Jones"_s, u"Bob Jones"_s}));
    EXPECT_EQ(grid.item(0, 0)->text(), u"ops"_s);
    EXPECT_EQ(grid.item(0, 3)->text(), u"8:00 AM"_s);
}

TEST_F(ExchangeWindows, ExportOfAnEmptyTableReportsItsFailureAndAFullOneItsCount)
{
    console::frmExportText window(*context, &send_form.window());
    EXPECT_EQ(window.windowTitle(), u"Export To Text File"_s);
    control<QRadioButton>(window, "optMembers").setChecked(true);
    env.prompter.choose_next(env.path(u"members"_s));
    control<QPushButton>(window, "btnBrowse").click();
    ASSERT_EQ(env.prompter.file_choices.size(), 1);
    const FileChoice& asked = env.prompter.file_choices[0];
    EXPECT_EQ(QStringList({asked.caption, asked.filter, asked.start_name}),
              (QStringList{u"Export Group Members"_s, u"Text File (*.txt)"_s, u"members.txt"_s}));
    EXPECT_EQ(control<QLineEdit>(window, "fFile").text(), env.path(u"members.txt"_s));

    db().exec(u"DELETE FROM cv_groups"_s);
    control<QPushButton>(window, "btnApply").click();
    EXPECT_FALSE(QFile::exists(env.path(u"members.txt"_s)));
    db().exec(u"INSERT INTO cv_groups (cv_group, cv_recipient) VALUES ('ops', 'ann')"_s);
    control<QPushButton>(window, "btnApply").click();
    EXPECT_EQ(
        env.prompter.boxes,
        (QList<Notice>{{u"Unable to write export file. Invalid path or insufficient rights."_s, u"Export Failed"_s},
                       {u"1 group member records exported"_s, u"Export Complete"_s}}));
    EXPECT_TRUE(control<QPushButton>(window, "btnApply").isEnabled()); // unlocked again
}

TEST_F(ExchangeWindows, ImportSkipsExistingNamesUnlessOverwriteIsTicked)
{
    const QString path = write_file(u"recip.txt"_s, "\"Version\",\"Name\"\r\n"
                                                    "\"500\",\"ann\",\"Ann Again\",\"1\",\"net\",80,#TRUE#,#FALSE#,"
                                                    "#FALSE#,#FALSE#,#FALSE#,#FALSE#,#FALSE#,\"\",\"\",5\r\n"
                                                    "\"500\",\"cy\",\"Cy New\",\"2\",\"net\",80,#TRUE#,#FALSE#,"
                                                    "#FALSE#,#FALSE#,#FALSE#,#FALSE#,#FALSE#,\"\",\"\",5\r\n");
    console::frmImportText window(*context, &send_form.window());
    EXPECT_EQ(window.windowTitle(), u"Import From Text File"_s);
    control<QRadioButton>(window, "optRecipients").setChecked(true);
    control<QLineEdit>(window, "fFile").setText(path);
    control<QPushButton>(window, "btnApply").click();
    EXPECT_EQ(count(u"SELECT count(*) FROM cv_recipients WHERE cv_full_name = 'Ann Smith'"_s), 1);
    control<QCheckBox>(window, "fOverwrite").setChecked(true);
    control<QPushButton>(window, "btnApply").click();
    EXPECT_EQ(count(u"SELECT count(*) FROM cv_recipients WHERE cv_full_name = 'Ann Again'"_s), 1);
    EXPECT_EQ(count(u"SELECT count(*) FROM cv_recipients WHERE cv_name IN ('ann', 'cy')"_s), 2);
    // The names reach the machine store from the publishing worker.
    intake::wait_for_publishing();
    EXPECT_EQ(state->registry.value_names(platform::Hive::LocalMachine, intake::recipients_key()),
              (QStringList{u"ann"_s, u"bob"_s, u"cy"_s}));
    EXPECT_EQ(
        env.prompter.boxes,
        (QList<Notice>{{u"1 recipient records imported,\n1 recipient records skipped."_s, u"Import Complete"_s},
                       {u"2 recipient records imported,\n0 recipient records skipped."_s, u"Import Complete"_s}}));
}

TEST_F(ExchangeWindows, CancelOfARunningImportLeavesNothing)
{
    QByteArray content;
    for (int i = 0; i < 600; ++i) {
        content += "\"500\",\"new" + QByteArray::number(i) +
                   "\",\"New\",\"1\",\"net\",80,#TRUE#,#FALSE#,#FALSE#,"
                   "#FALSE#,#FALSE#,#FALSE#,#FALSE#,\"\",\"\",5\r\n";
    }
    const QString path = write_file(u"recip.txt"_s, content);
    console::frmImportText window(*context, &send_form.window());
    window.set_progress_delay(0);
    window.show();
    control<QRadioButton>(window, "optRecipients").setChecked(true);
    control<QLineEdit>(window, "fFile").setText(path);

    // The operator presses Cancel as soon as the progress shows.
    struct CancelOnShow : QObject
    {
        int shown = 0;
        bool eventFilter(QObject* watched, QEvent* event) override
        {
            if (auto* progress = qobject_cast<QProgressDialog*>(watched); progress && event->type() == QEvent::Show) {
                ++shown;
                // Escape on the window waits for the run; Cancel on the progress stops it.
                QMetaObject::invokeMethod(qobject_cast<QDialog*>(progress->parentWidget()), &QDialog::reject,
                                          Qt::QueuedConnection);
                QMetaObject::invokeMethod(progress, &QProgressDialog::cancel, Qt::QueuedConnection);
            }
            return false;
        }
    } cancel_on_show;
    qApp->installEventFilter(&cancel_on_show);
    control<QPushButton>(window, "btnApply").click();
    qApp->removeEventFilter(&cancel_on_show);

    EXPECT_EQ(cancel_on_show.shown, 1);
    EXPECT_EQ(env.prompter.boxes,
              (QList<Notice>{{u"The import was cancelled. Nothing was imported."_s, u"Import Cancelled"_s}}));
    EXPECT_EQ(count(u"SELECT count(*) FROM cv_recipients"_s), 4);
    EXPECT_EQ(window.findChild<QProgressDialog*>(), nullptr);
    EXPECT_TRUE(window.isVisible()) << "the window stayed open through the run";
}

TEST_F(ExchangeWindows, CatalogOpensTheRosterOfTheChosenGroupOverTheCaller)
{
    console::register_exchange_windows(*context);
    for (const char* entry : {"frmOnCallSched", "import_text", "export_text"}) {
        EXPECT_TRUE(context->catalog.has(QString::fromLatin1(entry))) << entry;
    }
    QWidget caller;
    shared.selected_name = u"ops"_s;
    QStringList seen;
    when_modal([&](QWidget& roster) {
        seen = grid_recipients(roster);
        seen.prepend(roster.parentWidget() == &caller ? u"caller"_s : u"other"_s);
        control<QPushButton>(roster, "btnCancel").click();
    });
    context->catalog.open(u"frmOnCallSched"_s, &caller);
    EXPECT_EQ(seen, (QStringList{u"caller"_s, u"Ann Smith"_s, u"Bob Jones"_s}));
}

TEST_F(ExchangeWindows, BoxesAreNamedByTheCaptionBesideThemForScreenReaders)
{
    console::frmImportText import(*context, &send_form.window());
    console::frmExportText exporting(*context, &send_form.window());
    console::frmAddOncall span(*context, u"ops"_s, std::nullopt, &send_form.window());
    console::frmOnCallSched roster(*context, u"ops"_s, &send_form.window());
    const std::tuple<QWidget*, const char*, QString> cases[] = {
        {&import, "fFile", u"File to Import From:"_s},
        {&import, "fOverwrite", u"Overwrite existing matching records"_s},
        {&import, "optMembers", u"Import Group Members"_s},
        {&exporting, "fFile", u"File to Export To:"_s},
        {&span, "fuser", u"Recipient"_s},
        {&span, "fstop_time", u"Stop Time"_s},
        {&roster, "btnAccept", u"Apply"_s},
    };
    for (const auto& [window, name, caption] : cases) {
        auto& box = control<QWidget>(*window, name);
        EXPECT_EQ(box.accessibleName(), caption) << name;
        EXPECT_EQ(box.accessibleDescription(), QString::fromLatin1(name));
    }
}

} // namespace
} // namespace cvd::testing
