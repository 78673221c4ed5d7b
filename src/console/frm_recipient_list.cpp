#include "console/frm_recipient_list.h"

#include "console/console_context.h"
#include "console/controls.h"
#include "console/report_output.h"
#include "core/app_state.h"
#include "core/clock.h"
#include "core/error_path.h"
#include "core/prompter.h"
#include "reports/report_setup.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace cvd::console {

frmRecipientList::frmRecipientList(ConsoleContext& context, QWidget* parent)
    : QDialog(parent), m_context(context), m_type(context.shared.report_type)
{
    build_controls();
    set_up();
    publish_accessibility(*this);
}

void frmRecipientList::build_controls()
{
    lblRecipient = make_control<QLabel>(this, "lblRecipient", u"Recipient(s)"_s);
    lstRecipients = make_control<QListWidget>(this, "lstRecipients");
    lstRecipients->setSelectionMode(QAbstractItemView::ExtendedSelection);
    lstRecipients->setMinimumSize(240, 220);
    lblRecipient->setBuddy(lstRecipients);
    auto* depth = make_control<QGroupBox>(this, "fraDepth", u"Depth"_s);
    optSummary = make_control<QRadioButton>(depth, "optSummary", u"Summary"_s);
    optDetail = make_control<QRadioButton>(depth, "optDetail", u"Details"_s);
    chkRecipients = make_control<QCheckBox>(this, "chkRecipients", u"Recipients"_s);
    const ReportOutputControls output = make_report_output(this);
    optPrint = output.optPrint;
    chkPreview = output.chkPreview;
    optSave = output.optSave;
    txtSaveTo = output.txtSaveTo;
    btnBrowse = output.btnBrowse;
    btnPrint = make_control<QPushButton>(this, "btnPrint", u"Print"_s);
    btnClose = make_control<QPushButton>(this, "btnClose", u"Close"_s);
    optSummary->setChecked(true);
    btnPrint->setDefault(true);

    auto* depth_row = new QVBoxLayout(depth);
    depth_row->addWidget(optSummary);
    depth_row->addWidget(optDetail);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(btnPrint);
    buttons->addWidget(btnClose);
    auto* grid = new QGridLayout(this);
    grid->addWidget(lblRecipient, 0, 0);
    grid->addWidget(lstRecipients, 1, 0, 3, 1);
    grid->addWidget(depth, 1, 1);
    grid->addWidget(chkRecipients, 2, 1);
    grid->addWidget(output.fraOutput, 3, 1);
    grid->addLayout(buttons, 4, 0, 1, 2);

    connect(optPrint, &QRadioButton::toggled, this, &frmRecipientList::output_changed);
    connect(optSave, &QRadioButton::toggled, this, &frmRecipientList::output_changed);
    connect(btnBrowse, &QPushButton::clicked, this, [this] {
        const QString chosen = browse_report_file(m_context, txtSaveTo->text());
        if (!chosen.isEmpty()) {
            txtSaveTo->setText(chosen);
        }
    });
    connect(btnPrint, &QPushButton::clicked, this, &frmRecipientList::apply);
    connect(btnClose, &QPushButton::clicked, this, &QDialog::reject);
}

void frmRecipientList::set_up()
{
    const reports::ListSetup setup = reports::list_setup(m_type);
    setWindowTitle(setup.caption);
    lblRecipient->setText(setup.list_caption);
    chkRecipients->setVisible(!setup.members_caption.isEmpty());
    chkRecipients->setText(setup.members_caption);
    output_changed();
    AppState& state = m_context.state;
    state.clear_error_counters();
    const QStringList rows = with_retry(state, u"Procedure: frmRecipientList "_s + setup.routine,
                                        [&] { return reports::directory_list_rows(state.global_db, m_type); });
    fill_report_list(*lstRecipients, rows);
}

void frmRecipientList::output_changed()
{
    chkPreview->setEnabled(optPrint->isChecked());
    txtSaveTo->setEnabled(optSave->isChecked());
    btnBrowse->setEnabled(optSave->isChecked());
}

reports::ReportRequest frmRecipientList::report_request() const
{
    reports::ReportRequest request;
    request.type = m_type;
    read_report_list(*lstRecipients, request);
    request.now = m_context.state.clock.now();
    request.depth = optDetail->isChecked() ? reports::Depth::Detail : reports::Depth::Summary;
    request.members = !chkRecipients->isHidden() && chkRecipients->isChecked();
    request.to_file = optSave->isChecked();
    return request;
}

void frmRecipientList::apply()
{
    const reports::ReportRequest request = report_request();
    const std::optional<Notice> refusal = reports::apply_refusal(m_type, true, request.to_file, txtSaveTo->text());
    if (refusal) {
        m_context.state.prompter.show_box(*refusal);
        return;
    }
    if (optSave->isChecked()) {
        save_report_file(m_context, *this, request, txtSaveTo->text());
    } else {
        print_report(m_context, *this, request, chkPreview->isChecked());
    }
}

} // namespace cvd::console
