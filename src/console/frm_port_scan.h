#pragma once

#include "devices/port_scan.h"

#include <QDialog>
#include <map>
#include <memory>
#include <optional>

class QCheckBox;
class QLabel;
class QPushButton;

namespace cvd::console {

class BusyLock;
struct ConsoleContext;

// Finds which outbound routes of the carriers are open from this machine: each box checked is tried against
// its test endpoint (settings of category connector) and ticked when the route answered. A box whose
// endpoint is not set stays clear and says why in its tooltip.
class frmPortScan : public QDialog
{
    Q_OBJECT

public:
    frmPortScan(ConsoleContext& context, QWidget* parent);
    ~frmPortScan() override;

    // For tests: the waits of each route and the TLS settings (trusted authorities) of the encrypted ones.
    void set_limits(const devices::ProbeLimits& limits) { m_limits = limits; }
    void set_tls_configuration(const QSslConfiguration& tls) { m_scan.set_tls_configuration(tls); }

    void reject() override;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void build_controls();
    void prepare_boxes();
    void show_note();
    void scan();
    void probe_started(devices::ProbeKind kind);
    void probe_done(devices::ProbeKind kind, bool passed, const QString& reason);
    void scan_finished();
    void stop_scan();
    QString setting_of(devices::ProbeKind kind) const;

    ConsoleContext& m_context;
    devices::PortScan m_scan;
    std::optional<devices::ProbeLimits> m_limits;
    std::unique_ptr<BusyLock> m_busy;
    bool m_all_available = false;
    std::map<devices::ProbeKind, QCheckBox*> m_boxes;
    QCheckBox* chkSmtp = nullptr;
    QCheckBox* chkSslTls = nullptr;
    QCheckBox* chkStartTls = nullptr;
    QCheckBox* chkWctp = nullptr;
    QCheckBox* chkSnpp = nullptr;
    QLabel* lblNote = nullptr;
    QPushButton* btnScan = nullptr;
    QPushButton* btnClose = nullptr;
};

} // namespace cvd::console
