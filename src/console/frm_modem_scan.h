#pragma once

#include "devices/modem_scan.h"

#include <QDialog>
#include <QList>
#include <memory>

class QCheckBox;
class QLabel;
class QPushButton;

namespace cvd::console {

class BusyLock;
struct ConsoleContext;

// Finds which serial ports answer like a modem: ports 1 to 16, each box ticked where a modem answered, the
// device tried shown beside it. The scan runs on the event loop; closing the window stops it.
class frmModemScan : public QDialog
{
    Q_OBJECT

public:
    static constexpr int kPortCount = 16;

    // `answer_limit_ms` is how long each port is given to answer.
    frmModemScan(ConsoleContext& context, QWidget* parent, int answer_limit_ms = devices::ModemScan::kDefaultLimitMs);
    ~frmModemScan() override;

    void reject() override;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void build_controls();
    void show_devices(const QStringList& devices);
    void scan();
    void port_done(int port, const QString& device, bool found);
    void scan_finished();
    void stop_scan();

    ConsoleContext& m_context;
    int m_answer_limit_ms;
    devices::ModemScan m_scan;
    std::unique_ptr<BusyLock> m_busy;
    QList<QCheckBox*> m_boxes;
    QList<QLabel*> m_devices;
    QPushButton* btnScan = nullptr;
    QPushButton* btnClose = nullptr;
};

} // namespace cvd::console
