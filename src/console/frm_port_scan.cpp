#include "console/frm_port_scan.h"

#include "console/busy_lock.h"
#include "console/console_context.h"
#include "console/controls.h"
#include "console/geometry.h"
#include "core/app_state.h"
#include "core/setting_keys.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace cvd::console {

using devices::ProbeKind;

frmPortScan::frmPortScan(ConsoleContext& context, QWidget* parent)
    : QDialog(parent), m_context(context),
      m_scan({[this](ProbeKind kind) { probe_started(kind); },
              [this](ProbeKind kind, bool passed, const QString& reason) { probe_done(kind, passed, reason); },
              [this] { scan_finished(); }})
{
    setObjectName(u"frmPortScan"_s);
    build_controls();
    prepare_boxes();
    publish_accessibility(*this);
    if (parent != nullptr) {
        adjustSize(); // the size the layout asks for, so that the window is centred as it will be shown
        center_on_form(*this, *parent);
    }
}

frmPortScan::~frmPortScan()
{
    stop_scan();
}

void frmPortScan::build_controls()
{
    setWindowTitle(u"Port Scan"_s);
    chkSmtp = make_control<QCheckBox>(this, "chkSmtp", u"Port 25 (SMTP)"_s);
    chkSslTls = make_control<QCheckBox>(this, "chkSslTls", u"Port 465 (SSL/TLS)"_s);
    chkStartTls = make_control<QCheckBox>(this, "chkStartTls", u"Port 587 (STARTTLS)"_s);
    chkWctp = make_control<QCheckBox>(this, "chkWctp", u"Port 80 (WCTP)"_s);
    chkSnpp = make_control<QCheckBox>(this, "chkSnpp", u"Port 444 (SNPP)"_s);
    m_boxes = {{ProbeKind::Smtp, chkSmtp},
               {ProbeKind::SslTls, chkSslTls},
               {ProbeKind::StartTls, chkStartTls},
               {ProbeKind::Wctp, chkWctp},
               {ProbeKind::Snpp, chkSnpp}};
    btnScan = make_control<QPushButton>(this, "btnScan", u"&Scan"_s);
    btnClose = make_control<QPushButton>(this, "btnClose", u"&Close"_s);
    btnScan->setDefault(true);

    auto* column = new QVBoxLayout(this);
    for (QCheckBox* box : {chkSmtp, chkSslTls, chkStartTls, chkWctp, chkSnpp}) {
        column->addWidget(box);
    }
    lblNote = make_control<QLabel>(this, "lblNote");
    lblNote->setWordWrap(true);
    // Room for two lines at all times, so that the window keeps its size as the line changes.
    lblNote->setMinimumHeight(2 * lblNote->fontMetrics().lineSpacing());
    lblNote->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    column->addWidget(lblNote);
    column->addSpacing(8);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(btnScan);
    buttons->addWidget(btnClose);
    column->addLayout(buttons);
    setMinimumWidth(300);
    connect(btnScan, &QPushButton::clicked, this, &frmPortScan::scan);
    connect(btnClose, &QPushButton::clicked, this, &frmPortScan::reject);
}

QString frmPortScan::setting_of(ProbeKind kind) const
{
    SettingsStore& settings = m_context.state.settings;
    switch (kind) {
    case ProbeKind::Wctp:
        return settings.get_setting_text(setting_keys::connector::scan_wctp_host);
    case ProbeKind::Snpp:
        return settings.get_setting_text(setting_keys::connector::scan_snpp_host);
    default:
        return settings.get_setting_text(setting_keys::connector::scan_smtp_host);
    }
}

void frmPortScan::prepare_boxes()
{
    int available = 0;
    for (const auto& [kind, box] : m_boxes) {
        const QString setting = setting_of(kind);
        const QString unavailable = devices::probe_unavailable_reason(kind, setting);
        box->setChecked(unavailable.isEmpty());
        box->setEnabled(unavailable.isEmpty());
        if (unavailable.isEmpty()) {
            ++available;
            const devices::Endpoint endpoint = *devices::probe_endpoint(kind, setting);
            box->setToolTip(u"Tries %1 port %2."_s.arg(endpoint.host).arg(endpoint.port));
        } else {
            box->setToolTip(unavailable);
        }
    }
    m_all_available = available == static_cast<int>(m_boxes.size());
    show_note();
    btnScan->setEnabled(available > 0);
}

void frmPortScan::show_note()
{
    // Greyed boxes alone would not say why: a line under them does.
    lblNote->setText(m_all_available ? QString()
                                     : u"A route without a test endpoint cannot be tried; the endpoints are set in "
                                       "Settings > Connection."_s);
}

void frmPortScan::probe_started(ProbeKind kind)
{
    lblNote->setText(u"Trying %1 ..."_s.arg(visible_caption(m_boxes.at(kind)->text())));
}

void frmPortScan::scan()
{
    QList<devices::PortScan::Request> requests;
    for (const auto& [kind, box] : m_boxes) {
        if (box->isChecked() && box->isEnabled()) {
            const std::optional<devices::Endpoint> endpoint = devices::probe_endpoint(kind, setting_of(kind));
            if (endpoint) {
                requests.append({kind, *endpoint, m_limits.value_or(devices::default_limits(kind))});
            }
        }
        box->setChecked(false);
    }
    if (requests.isEmpty()) {
        return;
    }
    m_busy = std::make_unique<BusyLock>(*this);
    lblNote->setEnabled(true); // the line that says what is being tried stays readable
    m_scan.start(requests);
}

void frmPortScan::probe_done(ProbeKind kind, bool passed, const QString& reason)
{
    QCheckBox* box = m_boxes.at(kind);
    box->setChecked(passed);
    box->setToolTip(reason);
}

void frmPortScan::scan_finished()
{
    m_busy.reset();
    show_note();
}

void frmPortScan::stop_scan()
{
    m_scan.stop();
    m_busy.reset();
    show_note();
}

void frmPortScan::reject()
{
    stop_scan();
    QDialog::reject();
}

void frmPortScan::closeEvent(QCloseEvent* event)
{
    stop_scan();
    QDialog::closeEvent(event);
}

} // namespace cvd::console
