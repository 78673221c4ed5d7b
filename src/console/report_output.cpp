#include "console/report_output.h"

#include "console/busy_lock.h"
#include "console/console_context.h"
#include "console/controls.h"
#include "console/frm_pp.h"
#include "core/app_state.h"
#include "core/prompter.h"
#include "reports/page_painter.h"
#include "reports/report_setup.h"

#include <QCheckBox>
#include <QFileInfo>
#include <QGridLayout>
#include <QGroupBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPageLayout>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QRadioButton>

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

bool choose_printer(ConsoleContext& context, QPrinter& printer, QWidget& caller)
{
    if (context.shared.choose_printer) {
        return context.shared.choose_printer(printer, &caller);
    }
    QPrintDialog dialog(&printer, &caller);
    return dialog.exec() == QDialog::Accepted;
}

} // namespace

void print_report(ConsoleContext& context, QWidget& caller, const reports::ReportRequest& request, bool preview)
{
    QPrinter printer(QPrinter::HighResolution);
    if (!choose_printer(context, printer, caller)) {
        return;
    }
    reports::ReportRequest page_request = request;
    page_request.to_file = false;
    // The pages are laid out on the chosen printer's paper in its orientation.
    const QSizeF sheet = printer.pageLayout().fullRect(QPageLayout::Point).size();
    page_request.page = reports::page_setup_for_sheet(sheet.width(), sheet.height());
    std::optional<reports::ReportResult> report;
    {
        BusyLock busy(caller);
        report = reports::run_report(context.state, page_request);
        if (!preview) {
            printer.setFullPage(true);
            reports::render_pages(report->document, printer, 1, report->document.page_count());
        }
    }
    if (preview) {
        frmPP pp(context, std::move(*report), printer, &caller);
        pp.exec();
        return;
    }
    context.state.prompter.show_box(Notice{u"The report has been sent to the printer"_s, u"Report Printed"_s});
}

void save_report_file(ConsoleContext& context, QWidget& caller, const reports::ReportRequest& request,
                      const QString& path)
{
    Notice notice;
    {
        BusyLock busy(caller);
        notice = reports::save_report(context.state, request, path);
    }
    context.state.prompter.show_box(notice);
}

QString browse_report_file(ConsoleContext& context, const QString& current)
{
    const QString start = current.trimmed().isEmpty() ? u"report.txt"_s : current.trimmed();
    const std::optional<QString> chosen = context.state.prompter.choose_save_file(
        FileChoice{u"Save Report To"_s, u"Text File (*.txt);;PDF File (*.pdf)"_s, start});
    if (!chosen || chosen->isEmpty()) {
        return {};
    }
    QString path = *chosen;
    if (!QFileInfo(path).fileName().contains(u'.')) {
        path += u".txt"_s; // the default extension
    }
    return path;
}

ReportOutputControls make_report_output(QWidget* parent)
{
    ReportOutputControls c;
    c.fraOutput = make_control<QGroupBox>(parent, "fraOutput", u"Output"_s);
    c.optPrint = make_control<QRadioButton>(c.fraOutput, "optPrint", u"Print report"_s);
    c.chkPreview = make_control<QCheckBox>(c.fraOutput, "chkPreview", u"Preview"_s);
    c.optSave = make_control<QRadioButton>(c.fraOutput, "optSave", u"Write report to file"_s);
    c.txtSaveTo = make_control<QLineEdit>(c.fraOutput, "txtSaveTo");
    c.txtSaveTo->setAccessibleName(u"File name"_s);
    c.txtSaveTo->setMinimumWidth(260);
    c.btnBrowse = make_control<QPushButton>(c.fraOutput, "btnBrowse", u"Browse..."_s);
    c.optPrint->setChecked(true);
    c.chkPreview->setChecked(true);
    c.grid = new QGridLayout(c.fraOutput);
    c.grid->addWidget(c.optPrint, 0, 0);
    c.grid->addWidget(c.chkPreview, 0, 1);
    c.grid->addWidget(c.optSave, 1, 0, 1, 2);
    c.grid->addWidget(c.txtSaveTo, 2, 0, 1, 2);
    c.grid->addWidget(c.btnBrowse, 2, 2);
    return c;
}

void fill_report_list(QListWidget& list, const QStringList& rows)
{
    list.addItem(reports::kAllRow);
    list.addItems(rows);
    list.item(0)->setSelected(true);
}

void read_report_list(const QListWidget& list, reports::ReportRequest& request)
{
    for (int i = 0; i < list.count(); ++i) {
        const QListWidgetItem* item = list.item(i);
        if (i > 0) {
            request.rows.append(item->text());
        }
        if (item->isSelected()) {
            request.selected.append(item->text());
        }
    }
}

} // namespace cvd::console
