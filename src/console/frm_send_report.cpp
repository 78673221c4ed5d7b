#include "console/frm_send_report.h"

#include "console/busy_lock.h"
#include "console/console_context.h"
#include "console/controls.h"
#include "core/app_state.h"
#include "core/error_path.h"
#include "core/prompter.h"
#include "reports/report_setup.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace cvd::console {

frmSendReport::frmSendReport(ConsoleContext& context, reports::ReportRequest request, QWidget* parent)
    : QDialog(parent), m_context(context), m_request(std::move(request))
{
    setWindowTitle(u"Send Report"_s);
    build_controls();
    AppState& state = m_context.state;
    state.clear_error_counters();
    m_addressees = with_retry(state, u"Procedure: frmSendReport load"_s,
                              [&] { return reports::report_addressees(state.global_db); });
    for (const reports::ReportAddressee& addressee : m_addressees) {
        const QString label = addressee.full_name.isEmpty() ? addressee.name : addressee.full_name;
        lstRecipients->addItem(label + u"  ("_s + addressee.carrier + u')');
    }
    if (!m_addressees.isEmpty()) {
        lstRecipients->setCurrentRow(0);
    }
    btnSend->setEnabled(!m_addressees.isEmpty());
    publish_accessibility(*this);
}

void frmSendReport::build_controls()
{
    lblRecipient = make_control<QLabel>(this, "lblRecipient", u"Send the report to"_s);
    lstRecipients = make_control<QListWidget>(this, "lstRecipients");
    lstRecipients->setMinimumSize(300, 220);
    lblRecipient->setBuddy(lstRecipients);
    btnSend = make_control<QPushButton>(this, "btnSend", u"&Send"_s);
    btnClose = make_control<QPushButton>(this, "btnClose", u"Close"_s);
    btnSend->setDefault(true);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(btnSend);
    buttons->addWidget(btnClose);
    auto* column = new QVBoxLayout(this);
    column->addWidget(lblRecipient);
    column->addWidget(lstRecipients, 1);
    column->addLayout(buttons);
    connect(btnSend, &QPushButton::clicked, this, &frmSendReport::send);
    connect(btnClose, &QPushButton::clicked, this, &QDialog::reject);
}

void frmSendReport::send()
{
    const int row = lstRecipients->currentRow();
    if (row < 0 || row >= m_addressees.size()) {
        m_context.state.prompter.show_box(Notice{u"No recipient was selected"_s, u"Can't Send Report"_s});
        return;
    }
    reports::SentReport sent;
    {
        BusyLock busy(*this);
        reports::ReportRequest request = m_request;
        request.to_file = true;
        const reports::ReportResult report = reports::run_report(m_context.state, request);
        sent = reports::queue_report(m_context.state, m_addressees.at(row), report.file_text);
    }
    m_context.state.prompter.show_box(sent.notice);
    accept();
}

} // namespace cvd::console
