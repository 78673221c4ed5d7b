#include "console/frm_reports.h"

#include "console/console_context.h"
#include "console/controls.h"
#include "console/geometry.h"
#include "console/report_output.h"
#include "core/app_state.h"
#include "core/clock.h"
#include "core/error_path.h"
#include "core/prompter.h"
#include "reports/report_setup.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QDateEdit>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTimeEdit>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace cvd::console {

frmReports::frmReports(ConsoleContext& context, QWidget* parent)
    : QDialog(parent), m_context(context), m_type(context.shared.report_type)
{
    build_controls();
    lay_out_controls();
    set_up();
    publish_accessibility(*this);
}

void frmReports::build_controls()
{
    lblRecipient = make_control<QLabel>(this, "lblRecipient", u"Recipient(s)"_s);
    lstRecipients = make_control<QListWidget>(this, "lstRecipients");
    lstRecipients->setSelectionMode(QAbstractItemView::ExtendedSelection);
    lblRecipient->setBuddy(lstRecipients);
    fraDates = make_control<QGroupBox>(this, "fraDates", u"Date Range"_s);
    lblStartDate = make_control<QLabel>(fraDates, "lblStartDate", u"Start Date/Time"_s);
    dtpStartDate = make_control<QDateEdit>(fraDates, "dtpStartDate");
    dtpStartTime = make_control<QTimeEdit>(fraDates, "dtpStartTime");
    lblEndDate = make_control<QLabel>(fraDates, "lblEndDate", u"End Date/Time"_s);
    dtpEndDate = make_control<QDateEdit>(fraDates, "dtpEndDate");
    dtpEndTime = make_control<QTimeEdit>(fraDates, "dtpEndTime");
    for (QDateEdit* date : {dtpStartDate, dtpEndDate}) {
        date->setCalendarPopup(true);
    }
    for (QTimeEdit* time : {dtpStartTime, dtpEndTime}) {
        time->setDisplayFormat(u"HH:mm:ss"_s);
    }
    lblStartDate->setBuddy(dtpStartDate);
    lblEndDate->setBuddy(dtpEndDate);
    // The time boxes share their date's label, so each says which time it is.
    dtpStartTime->setToolTip(u"Start Time"_s);
    dtpEndTime->setToolTip(u"End Time"_s);
    fraDepth = make_control<QGroupBox>(this, "fraDepth", u"Depth"_s);
    optSummary = make_control<QRadioButton>(fraDepth, "optSummary", u"Summary"_s);
    optDetail = make_control<QRadioButton>(fraDepth, "optDetail", u"Details"_s);
    optTotals = make_control<QRadioButton>(fraDepth, "optTotals", u"Totals Only"_s);
    fraWhich = make_control<QGroupBox>(this, "fraWhich", u"Messages"_s);
    optAll = make_control<QRadioButton>(fraWhich, "optAll", u"All Msgs"_s);
    optBad = make_control<QRadioButton>(fraWhich, "optBad", u"Bad Msgs"_s);
    optGood = make_control<QRadioButton>(fraWhich, "optGood", u"Good Msgs"_s);
    chkZero = make_control<QCheckBox>(this, "chkZero", u"Zero Values"_s);
    chkPageBreaks = make_control<QCheckBox>(this, "chkPageBreaks", u"Page Breaks"_s);
    const ReportOutputControls output = make_report_output(this);
    fraOutput = output.fraOutput;
    optPrint = output.optPrint;
    chkPreview = output.chkPreview;
    optSave = output.optSave;
    txtSaveTo = output.txtSaveTo;
    btnBrowse = output.btnBrowse;
    optSend = make_control<QRadioButton>(fraOutput, "optSend", u"Email/Fax report to recipient"_s);
    output.grid->addWidget(optSend, 3, 0, 1, 3);
    btnPrint = make_control<QPushButton>(this, "btnPrint", u"Apply"_s);
    btnClose = make_control<QPushButton>(this, "btnClose", u"Close"_s);
    optSummary->setChecked(true);
    optAll->setChecked(true);
    btnPrint->setDefault(true);

    connect(optPrint, &QRadioButton::toggled, this, &frmReports::output_changed);
    connect(optSave, &QRadioButton::toggled, this, &frmReports::output_changed);
    connect(optSend, &QRadioButton::toggled, this, &frmReports::output_changed);
    connect(btnBrowse, &QPushButton::clicked, this, &frmReports::browse);
    connect(btnPrint, &QPushButton::clicked, this, &frmReports::apply);
    connect(btnClose, &QPushButton::clicked, this, &QDialog::reject);
}

void frmReports::lay_out_controls()
{
    auto* dates = new QGridLayout(fraDates);
    dates->addWidget(lblStartDate, 0, 0);
    dates->addWidget(dtpStartDate, 0, 1);
    dates->addWidget(dtpStartTime, 0, 2);
    dates->addWidget(lblEndDate, 1, 0);
    dates->addWidget(dtpEndDate, 1, 1);
    dates->addWidget(dtpEndTime, 1, 2);
    auto* depth = new QHBoxLayout(fraDepth);
    for (QRadioButton* option : {optSummary, optDetail, optTotals}) {
        depth->addWidget(option);
    }
    auto* which = new QHBoxLayout(fraWhich);
    for (QRadioButton* option : {optAll, optBad, optGood}) {
        which->addWidget(option);
    }

    auto* checks = new QHBoxLayout;
    checks->addWidget(chkZero);
    checks->addWidget(chkPageBreaks);
    checks->addStretch();
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(btnPrint);
    buttons->addWidget(btnClose);

    auto* grid = new QGridLayout(this);
    grid->addWidget(lblRecipient, 0, 0);
    grid->addWidget(lstRecipients, 1, 0, 5, 1);
    lstRecipients->setMinimumSize(240, 220);
    grid->addWidget(fraDates, 1, 1);
    grid->addWidget(fraDepth, 2, 1);
    grid->addWidget(fraWhich, 3, 1);
    grid->addLayout(checks, 4, 1);
    grid->addWidget(fraOutput, 5, 1);
    grid->addLayout(buttons, 6, 0, 1, 2);
}

void frmReports::set_up()
{
    const reports::ReportsSetup setup = reports::reports_setup(m_type);
    setWindowTitle(setup.caption);
    const QDateTime now = m_context.state.clock.now();
    const reports::DateRange range = reports::default_range(now);
    dtpStartDate->setDate(range.start.date());
    dtpStartTime->setTime(range.start.time());
    dtpEndDate->setDate(range.end.date());
    dtpEndTime->setTime(range.end.time());
    fraDates->setVisible(setup.dates);
    fraDepth->setVisible(setup.depth);
    fraWhich->setVisible(setup.which);
    chkZero->setVisible(setup.zero);
    chkPageBreaks->setVisible(setup.page_breaks);
    optSend->setEnabled(setup.send);
    output_changed();
    if (setup.list_caption.isEmpty()) {
        MoveControls();
        return;
    }
    lblRecipient->setText(setup.list_caption);
    AppState& state = m_context.state;
    state.clear_error_counters();
    const QStringList rows = with_retry(state, u"Procedure: frmReports "_s + setup.routine,
                                        [&] { return reports::report_list_rows(state.global_db, setup.carriers); });
    fill_report_list(*lstRecipients, rows);
}

// The date reports have no list: it goes, and the controls below move up into its place.
void frmReports::MoveControls()
{
    lblRecipient->hide();
    lstRecipients->hide();
    chkZero->hide();
    adjustSize();
    if (m_context.send_form != nullptr) {
        center_on_form(*this, m_context.send_form->window());
    }
}

void frmReports::output_changed()
{
    const bool print = optPrint->isChecked();
    const bool save = optSave->isChecked();
    for (QWidget* control : std::initializer_list<QWidget*>{chkPreview, chkZero, chkPageBreaks}) {
        control->setEnabled(print);
    }
    txtSaveTo->setEnabled(save);
    btnBrowse->setEnabled(save);
}

void frmReports::browse()
{
    const QString chosen = browse_report_file(m_context, txtSaveTo->text());
    if (!chosen.isEmpty()) {
        txtSaveTo->setText(chosen);
    }
}

reports::ReportRequest frmReports::report_request() const
{
    reports::ReportRequest request;
    request.type = m_type;
    read_report_list(*lstRecipients, request);
    request.start = QDateTime(dtpStartDate->date(), dtpStartTime->time());
    request.end = QDateTime(dtpEndDate->date(), dtpEndTime->time());
    request.now = m_context.state.clock.now();
    request.depth = optDetail->isChecked()   ? reports::Depth::Detail
                    : optTotals->isChecked() ? reports::Depth::Totals
                                             : reports::Depth::Summary;
    request.which = optBad->isChecked()    ? reports::Which::Bad
                    : optGood->isChecked() ? reports::Which::Good
                                           : reports::Which::All;
    request.zero = chkZero->isChecked();
    request.page_breaks = chkPageBreaks->isChecked();
    request.to_file = optSave->isChecked();
    return request;
}

void frmReports::apply()
{
    const reports::ReportRequest request = report_request();
    const std::optional<Notice> refusal =
        reports::apply_refusal(m_type, !request.selected.isEmpty(), request.to_file, txtSaveTo->text());
    if (refusal) {
        m_context.state.prompter.show_box(*refusal);
        return;
    }
    if (optPrint->isChecked()) {
        print_report(m_context, *this, request, chkPreview->isChecked());
    } else if (optSave->isChecked()) {
        save_report_file(m_context, *this, request, txtSaveTo->text());
    } else {
        m_context.catalog.open(u"frmSendReport"_s, this);
    }
}

} // namespace cvd::console
