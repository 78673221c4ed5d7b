// The report windows: the choice of a report, its refusals, and where it goes (file, PDF, printer, preview,
// a message to a recipient).
#include "console/frm_pp.h"
#include "console/frm_recipient_list.h"
#include "console/frm_reports.h"
#include "console/report_windows.h"
#include "console_test.h"
#include "support/printers.h"

#include <QCheckBox>
#include <QDateEdit>
#include <QFile>
#include <QLineEdit>
#include <QListWidget>
#include <QPrinter>
#include <QPushButton>
#include <QRadioButton>
#include <QTimeEdit>

using namespace Qt::StringLiterals;

namespace cvd::testing {
namespace {

class ReportWindows : public ConsoleTest
{
protected:
    void SetUp() override
    {
        ConsoleTest::SetUp();
        db().exec(u"INSERT INTO cv_carriers (cv_name, cv_dial_type) VALUES ('TapNet', 'tap'), ('MailNet', 'eml'), "
                  "('FaxOut', 'fxs')"_s);
        db().exec(u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_carrier, cv_maxchars, cv_group) VALUES "
                  "('zed', 'Zed Ward', 'TapNet', 80, 0), ('amy', 'Amy Fox', 'MailNet', 60, 0), "
                  "('fx', 'Fax Room', 'FaxOut', 0, 0), ('ops', 'Operations', '', 0, -1)"_s);
        db().exec(u"INSERT INTO cv_messages (cv_recipient, cv_pin, cv_message, cv_date_time_requested, "
                  "cv_date_time_sent, cv_sent, cv_scheduled, cv_error) VALUES "
                  "('zed', '555', 'Pump 3 down', '2026-11-23 08:00:00', '2026-11-23 08:00:30', -1, -1, 0)"_s);
        register_report_windows_once();
    }

    void register_report_windows_once() { console::register_report_windows(*context); }

    QString read(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

    // Runs the frmReports of `type` modally, doing `act` on it, then closes it.
    void with_reports(const QString& entry, const std::function<void(QWidget&)>& act)
    {
        when_modal([act](QWidget& dialog) {
            act(dialog);
            dialog.close();
        });
        context->catalog.open(entry, &send_form.window());
    }
};

TEST_F(ReportWindows, EveryReportEntryOpensItsWindowWithItsSetup)
{
    struct Case
    {
        const char* entry;
        int type;
        QString title;
        bool list;
    };
    const Case cases[] = {
        {"rptSentRecipient", 1, u"Sent Messages - by Recipient"_s, true},
        {"rptSentDate", 2, u"Sent Messages - by Date/Time"_s, false},
        {"rptSentCarrier", 3, u"Sent Messages - by Carrier"_s, true},
        {"mnuScheduledRecipient", 11, u"Scheduled Messages - by Recipient"_s, true},
        {"rptScheduledDate", 12, u"Scheduled Messages - by Date/Time"_s, false},
        {"rptScheduledCarrier", 13, u"Scheduled Messages - by Carrier"_s, true},
        {"mnuStatisticsRecipient", 21, u"Statistics - by Recipient"_s, true},
        {"mnuStatisticsDate", 22, u"Statistics - by Date/Time"_s, false},
        {"mnuStatisticsCarrier", 23, u"Statistics - by Carrier"_s, true},
        {"mnuListRecipients", 31, u"Recipient List"_s, true},
        {"mnuListGroups", 32, u"Group List"_s, true},
        {"mnuListCarriers", 33, u"Carrier List"_s, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.entry);
        QString title;
        bool list_shown = false;
        QStringList rows;
        with_reports(QString::fromLatin1(c.entry), [&](QWidget& dialog) {
            title = dialog.windowTitle();
            auto& list = control<QListWidget>(dialog, "lstRecipients");
            list_shown = !list.isHidden();
            for (int i = 0; i < list.count(); ++i) {
                rows.append(list.item(i)->text() + (list.item(i)->isSelected() ? u"*"_s : QString()));
            }
        });
        EXPECT_EQ(shared.report_type, c.type);
        EXPECT_EQ(title, c.title);
        EXPECT_EQ(list_shown, c.list);
        if (c.type == 1) {
            EXPECT_EQ(rows,
                      (QStringList{u"(ALL)*"_s, u"Amy Fox"_s, u"Fax Room"_s, u"(G) Operations"_s, u"Zed Ward"_s}));
        } else if (c.type == 32) {
            EXPECT_EQ(rows, (QStringList{u"(ALL)*"_s, u"Operations"_s}));
        } else if (c.type == 33 || c.type == 3) {
            EXPECT_EQ(rows, (QStringList{u"(ALL)*"_s, u"FaxOut"_s, u"MailNet"_s, u"TapNet"_s}));
        }
    }
}

TEST_F(ReportWindows, DateFamilyHidesTheListAndOffersSendingWithTheRangeOfToday)
{
    shared.report_type = 2;
    console::frmReports window(*context, &send_form.window());
    EXPECT_TRUE(control<QCheckBox>(window, "chkZero").isHidden());
    EXPECT_TRUE(control<QRadioButton>(window, "optSend").isEnabled());
    EXPECT_EQ(control<QDateEdit>(window, "dtpStartDate").date(), QDate(2026, 11, 23));
    EXPECT_EQ(control<QTimeEdit>(window, "dtpStartTime").time(), QTime(0, 0));
    EXPECT_EQ(control<QTimeEdit>(window, "dtpEndTime").time(), QTime(9, 30));
    control<QRadioButton>(window, "optSave").setChecked(true);
    EXPECT_FALSE(control<QCheckBox>(window, "chkPreview").isEnabled());
    EXPECT_TRUE(control<QPushButton>(window, "btnBrowse").isEnabled());
    shared.report_type = 1;
    console::frmReports by_recipient(*context, &send_form.window());
    EXPECT_FALSE(control<QRadioButton>(by_recipient, "optSend").isEnabled());
}

TEST_F(ReportWindows, ApplyRefusesWithoutASelectionOrAFileNameAndWritesNothing)
{
    shared.report_type = 1;
    console::frmReports window(*context, &send_form.window());
    control<QListWidget>(window, "lstRecipients").clearSelection();
    control<QPushButton>(window, "btnPrint").click();
    control<QListWidget>(window, "lstRecipients").item(4)->setSelected(true);
    control<QRadioButton>(window, "optSave").setChecked(true);
    control<QLineEdit>(window, "txtSaveTo").setText(u"   "_s);
    control<QPushButton>(window, "btnPrint").click();
    ASSERT_EQ(env.prompter.boxes.size(), 2);
    EXPECT_EQ(env.prompter.boxes[0], (Notice{u"No recipients were selected"_s, u"Can't Generate Report"_s}));
    EXPECT_EQ(env.prompter.boxes[1], (Notice{u"No file name was specified"_s, u"Can't Generate Report"_s}));
}

TEST_F(ReportWindows, SaveWritesTheTextFormOrAPdfAndBrowseSuggestsReportTxt)
{
    shared.report_type = 1;
    console::frmReports window(*context, &send_form.window());
    control<QRadioButton>(window, "optSave").setChecked(true);
    env.prompter.choose_next(env.path(u"out/sent"_s));
    env.prompter.choose_next(std::nullopt);
    control<QPushButton>(window, "btnBrowse").click();
    control<QPushButton>(window, "btnBrowse").click();
    EXPECT_EQ(env.prompter.file_choices.at(0).start_name, u"report.txt"_s);
    EXPECT_EQ(env.prompter.file_choices.at(0).caption, u"Save Report To"_s);
    auto& name = control<QLineEdit>(window, "txtSaveTo");
    EXPECT_EQ(name.text(), env.path(u"out/sent.txt"_s));

    const QString text_path = env.path(u"sent.txt"_s);
    const QString pdf_path = env.path(u"sent.pdf"_s);
    for (const QString& path : {text_path, pdf_path}) {
        name.setText(path);
        control<QPushButton>(window, "btnPrint").click();
    }
    EXPECT_EQ(env.prompter.boxes.size(), 2);
    EXPECT_EQ(env.prompter.boxes.last(), (Notice{u"The file has been written"_s, u"File Saved"_s}));
    EXPECT_TRUE(read(text_path).contains(u"\"Zed Ward 555\","_s));
    EXPECT_TRUE(read(text_path).contains(u"\"Zed Ward Total:\",1\r\n"_s));
    EXPECT_TRUE(read(pdf_path).startsWith(u"%PDF"_s));
}

TEST_F(ReportWindows, PrintingGoesThroughThePrinterChoiceAndCancellingGeneratesNothing)
{
    const QString printed = env.path(u"printed.pdf"_s);
    bool go_on = false;
    shared.choose_printer = [&](QPrinter& printer, QWidget*) {
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(printed);
        return go_on;
    };
    shared.report_type = 33;
    console::frmRecipientList window(*context, &send_form.window());
    control<QCheckBox>(window, "chkPreview").setChecked(false);
    control<QPushButton>(window, "btnPrint").click();
    EXPECT_TRUE(env.prompter.boxes.isEmpty());
    EXPECT_FALSE(QFile::exists(printed));
    go_on = true;
    control<QPushButton>(window, "btnPrint").click();
    EXPECT_EQ(env.prompter.boxes.value(0), (Notice{u"The report has been sent to the printer"_s, u"Report Printed"_s}));
    EXPECT_TRUE(read(printed).startsWith(u"%PDF"_s));
}

TEST_F(ReportWindows, PreviewShowsThePagesOfTheReport)
{
    shared.choose_printer = [](QPrinter&, QWidget*) { return true; };
    shared.report_type = 1;
    console::frmReports window(*context, &send_form.window());
    control<QCheckBox>(window, "chkPageBreaks").setChecked(true);
    QString title;
    qsizetype pages = 0;
    int after_next = 0;
    when_modal([&](QWidget& dialog) {
        title = dialog.windowTitle();
        auto& preview = dynamic_cast<console::frmPP&>(dialog);
        pages = preview.page_count();
        control<QPushButton>(dialog, "btnLast").click();
        after_next = preview.current_page();
        dialog.close();
    });
    control<QPushButton>(window, "btnPrint").click();
    EXPECT_EQ(title, u"Print Preview"_s);
    EXPECT_EQ(pages, 2); // Zed's entry, then the grand total after its page break
    EXPECT_EQ(after_next, 2);
}

TEST_F(ReportWindows, CarrierListToFileWithItsRecipients)
{
    shared.report_type = 33;
    console::frmRecipientList window(*context, &send_form.window());
    EXPECT_EQ(control<QCheckBox>(window, "chkRecipients").text(), u"Recipients"_s);
    control<QCheckBox>(window, "chkRecipients").setChecked(true);
    control<QRadioButton>(window, "optSave").setChecked(true);
    const QString path = env.path(u"carriers.txt"_s);
    control<QLineEdit>(window, "txtSaveTo").setText(path);
    control<QPushButton>(window, "btnPrint").click();
    EXPECT_TRUE(
        read(path).contains(u"\"TapNet\",\"TAP\",\"\",\"\"\r\n\"Short Name :\",\"zed\",\"Full Name:\",\"Zed Ward\""_s));
}

TEST_F(ReportWindows, SendReportQueuesTheTextCutAtTheRecipientsLimit)
{
    QStringList offered;
    with_reports(u"rptSentDate"_s, [&](QWidget& reports_window) {
        control<QRadioButton>(reports_window, "optSend").setChecked(true);
        when_modal([&](QWidget& dialog) {
            auto& list = control<QListWidget>(dialog, "lstRecipients");
            for (int i = 0; i < list.count(); ++i) {
                offered.append(list.item(i)->text());
            }
            list.setCurrentRow(0);
            control<QPushButton>(dialog, "btnSend").click();
        });
        control<QPushButton>(reports_window, "btnPrint").click();
    });
    EXPECT_EQ(offered, (QStringList{u"Amy Fox  (MailNet)"_s, u"Fax Room  (FaxOut)"_s}));
    store::Statement row = db().prepare(
        u"SELECT cv_recipient, cv_message, cv_sent, cv_scheduled, cv_error FROM cv_messages WHERE cv_recipient = 'amy'"_s);
    ASSERT_TRUE(row.step());
    const QString text = row.text(1).value_or(QString());
    EXPECT_EQ(text.size(), 60);
    EXPECT_TRUE(text.startsWith(u"\"Sent Message Report - By Date/Time - "_s));
    EXPECT_FALSE(row.flag(2) || row.flag(3) || row.flag(4));
    ASSERT_EQ(env.prompter.boxes.size(), 1);
    EXPECT_TRUE(env.prompter.boxes[0].text.startsWith(u"60 characters of the report were queued for Amy Fox."_s));
    EXPECT_TRUE(env.prompter.boxes[0].text.contains(u"cut"_s));
}

} // namespace
} // namespace cvd::testing
