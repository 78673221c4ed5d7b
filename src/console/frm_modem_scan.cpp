#include "console/frm_modem_scan.h"

#include "console/busy_lock.h"
#include "console/controls.h"
#include "console/geometry.h"
#include "devices/serial_ports.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

constexpr int kRowsPerColumn = 8;
constexpr int kDeviceMinimumWidth = 140;
constexpr int kColumnGap = 16;

// The box of port 13 has always been spelt with a capital.
QByteArray box_name(int port)
{
    return QByteArray(port == 13 ? "ChkCom" : "chkCom") + QByteArray::number(port);
}

} // namespace

frmModemScan::frmModemScan(ConsoleContext& context, QWidget* parent, int answer_limit_ms)
    : QDialog(parent), m_context(context), m_answer_limit_ms(answer_limit_ms),
      m_scan({[this](int port, const QString& device, bool found) { port_done(port, device, found); },
              [this] { scan_finished(); }})
{
    setObjectName(u"frmModemScan"_s);
    build_controls();
    show_devices(devices::serial_port_devices(kPortCount));
    if (parent != nullptr) {
        adjustSize(); // the size the layout asks for, so that the window is centred as it will be shown
        center_on_form(*this, *parent);
    }
}

frmModemScan::~frmModemScan()
{
    stop_scan();
}

void frmModemScan::build_controls()
{
    setWindowTitle(u"Scan for Modems"_s);
    auto* grid = new QGridLayout(this);
    grid->setHorizontalSpacing(12);
    for (int port = 1; port <= kPortCount; ++port) {
        auto* box = make_control<QCheckBox>(this, box_name(port).constData(), u"Port %1"_s.arg(port));
        auto* device = make_control<QLabel>(this, QByteArray("lblDevice" + QByteArray::number(port)).constData());
        device->setMinimumWidth(kDeviceMinimumWidth);
        const int row = (port - 1) % kRowsPerColumn;
        // Three grid columns to a column of ports: box, device, and a gap before the next.
        const int column = (port - 1) / kRowsPerColumn * 3;
        grid->addWidget(box, row, column);
        grid->addWidget(device, row, column + 1);
        m_boxes.append(box);
        m_devices.append(device);
    }
    grid->setColumnMinimumWidth(2, kColumnGap);
    btnScan = make_control<QPushButton>(this, "btnScan", u"&Scan"_s);
    btnClose = make_control<QPushButton>(this, "btnClose", u"&Close"_s);
    btnScan->setDefault(true);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(btnScan);
    buttons->addWidget(btnClose);
    grid->addLayout(buttons, kRowsPerColumn, 0, 1, 5);
    connect(btnScan, &QPushButton::clicked, this, &frmModemScan::scan);
    connect(btnClose, &QPushButton::clicked, this, &frmModemScan::reject);
}

void frmModemScan::show_devices(const QStringList& devices)
{
    for (int index = 0; index < m_devices.size(); ++index) {
        const QString device = devices.value(index);
        m_devices.at(index)->setText(device.isEmpty() ? u"(no device)"_s : device);
    }
    publish_accessibility(*this);
}

void frmModemScan::scan()
{
    for (QCheckBox* box : std::as_const(m_boxes)) {
        box->setChecked(false);
    }
    // The ports are looked up again, so that a modem plugged in since the window opened is found.
    const QStringList devices = devices::serial_port_devices(kPortCount);
    show_devices(devices);
    m_busy = std::make_unique<BusyLock>(*this);
    m_scan.start(devices, m_answer_limit_ms);
}

void frmModemScan::port_done(int port, const QString& device, bool found)
{
    if (port < 1 || port > m_boxes.size()) {
        return;
    }
    m_boxes.at(port - 1)->setChecked(found);
    m_devices.at(port - 1)->setText(device.isEmpty() ? u"(no device)"_s : device);
}

void frmModemScan::scan_finished()
{
    m_busy.reset();
}

void frmModemScan::stop_scan()
{
    m_scan.stop();
    m_busy.reset();
}

void frmModemScan::reject()
{
    stop_scan();
    QDialog::reject();
}

void frmModemScan::closeEvent(QCloseEvent* event)
{
    stop_scan();
    QDialog::closeEvent(event);
}

} // namespace cvd::console
