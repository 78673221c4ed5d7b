#include "devices/comm.h"

#include <QFileInfo>
#include <QSerialPort>
#include <algorithm>
#include <cerrno>

using namespace Qt::StringLiterals;

namespace cvd::devices {

namespace {

constexpr qint64 kQueueSize = 8192;
constexpr int kReadBufferSize = 1024;
// Writes may take a second per byte, as the port's write timeouts allowed, but never longer than this.
constexpr int kWriteLimitMs = 10000;

// The errno value nearest to what the port reported.
int error_number(QSerialPort::SerialPortError error)
{
    switch (error) {
    case QSerialPort::NoError:
        return 0;
    case QSerialPort::DeviceNotFoundError:
        return ENOENT;
    case QSerialPort::PermissionError:
        return EACCES;
    case QSerialPort::OpenError:
        return EBUSY;
    case QSerialPort::NotOpenError:
        return EBADF;
    case QSerialPort::UnsupportedOperationError:
        return EOPNOTSUPP;
    case QSerialPort::TimeoutError:
        return ETIMEDOUT;
    case QSerialPort::ResourceError:
        return ENXIO;
    default:
        return EIO;
    }
}

QSerialPort::Parity to_port(CommParity parity)
{
    switch (parity) {
    case CommParity::Even:
        return QSerialPort::EvenParity;
    case CommParity::Odd:
        return QSerialPort::OddParity;
    case CommParity::Mark:
        return QSerialPort::MarkParity;
    case CommParity::Space:
        return QSerialPort::SpaceParity;
    default:
        return QSerialPort::NoParity;
    }
}

CommParity from_port(QSerialPort::Parity parity)
{
    switch (parity) {
    case QSerialPort::EvenParity:
        return CommParity::Even;
    case QSerialPort::OddParity:
        return CommParity::Odd;
    case QSerialPort::MarkParity:
        return CommParity::Mark;
    case QSerialPort::SpaceParity:
        return CommParity::Space;
    default:
        return CommParity::None;
    }
}

QSerialPort::StopBits to_port(CommStopBits stop_bits)
{
    switch (stop_bits) {
    case CommStopBits::OneAndHalf:
        return QSerialPort::OneAndHalfStop;
    case CommStopBits::Two:
        return QSerialPort::TwoStop;
    default:
        return QSerialPort::OneStop;
    }
}

CommStopBits from_port(QSerialPort::StopBits stop_bits)
{
    switch (stop_bits) {
    case QSerialPort::OneAndHalfStop:
        return CommStopBits::OneAndHalf;
    case QSerialPort::TwoStop:
        return CommStopBits::Two;
    default:
        return CommStopBits::One;
    }
}

bool is_pseudo_terminal(const QSerialPort& port)
{
    return QFileInfo(port.portName()).canonicalFilePath().startsWith(u"/dev/pts/"_s);
}

// Sets or clears one of the lines. A pseudo-terminal has no modem lines to drive: there the request has
// nothing to do, and is no failure.
bool drive_line(QSerialPort& port, int line, bool set)
{
    bool done = false;
    switch (line) {
    case kCommBreak:
        done = port.setBreakEnabled(set);
        break;
    case kCommDtr:
        done = port.setDataTerminalReady(set);
        break;
    case kCommRts:
        done = port.setRequestToSend(set);
        break;
    default:
        return false;
    }
    if (!done && port.error() == QSerialPort::UnsupportedOperationError && is_pseudo_terminal(port)) {
        port.clearError();
        done = true;
    }
    return done;
}

} // namespace

struct modCOMM::Entry
{
    QSerialPort port;
    bool open = false;
    PortState dcb;
};

modCOMM::modCOMM() = default;

modCOMM::~modCOMM()
{
    for (int port = 1; port <= kPortCount; ++port) {
        CommClose(port);
    }
}

modCOMM::Entry* modCOMM::entry(int port) const
{
    if (port < 1 || port > kPortCount) {
        return nullptr;
    }
    return m_ports.at(static_cast<size_t>(port - 1)).get();
}

bool modCOMM::is_open(int port) const
{
    const Entry* found = entry(port);
    return found != nullptr && found->open;
}

modCOMM::PortState modCOMM::port_state(int port) const
{
    const Entry* found = entry(port);
    return found != nullptr ? found->dcb : PortState{};
}

void modCOMM::clear_error()
{
    m_error = CommError{};
}

int modCOMM::fail(int number, const QString& source, const QString& message)
{
    m_error = CommError{number, source, message.trimmed()};
    return number;
}

int modCOMM::fail_port(const Entry& entry, const QString& source, bool with_flags)
{
    const QSerialPort::SerialPortError error = entry.port.error();
    const int number = error == QSerialPort::NoError ? EIO : error_number(error);
    QString message = entry.port.errorString();
    if (with_flags) {
        message += u"  COMM Error Flags = "_s + QString::number(static_cast<int>(error), 16).toUpper();
    }
    return fail(number, source, message);
}

int modCOMM::CommOpen(int port, const QString& device, const QString& settings)
{
    clear_error();
    if (port < 1 || port > kPortCount) {
        return fail(EINVAL, u"CommOpen"_s, qt_error_string(EINVAL));
    }
    auto& slot = m_ports.at(static_cast<size_t>(port - 1));
    if (slot != nullptr && slot->open) {
        return fail(-1, u"CommOpen"_s, u"Port in use."_s);
    }
    slot = std::make_unique<Entry>();
    Entry& opened = *slot;
    opened.port.setPortName(device);
    if (device.isEmpty() || !opened.port.open(QIODevice::ReadWrite)) {
        const int number = device.isEmpty() ? ENOENT : error_number(opened.port.error());
        const QString message = device.isEmpty() ? qt_error_string(ENOENT) : opened.port.errorString();
        return fail(number, u"CommOpen (CreateFile)"_s, message);
    }
    // From here on the port counts as open, also when a later step fails; the caller may close it.
    opened.open = true;
    // The queue sizes of the old setup step: the read queue is ours to size, and sizing it cannot fail.
    opened.port.setReadBufferSize(kQueueSize);
    if (!opened.port.clear(QSerialPort::AllDirections)) {
        return fail_port(opened, u"CommOpen (PurgeComm)"_s);
    }
    return apply_settings(opened, settings, u"CommOpen"_s);
}

int modCOMM::apply_settings(Entry& target, const QString& settings, const QString& routine)
{
    QSerialPort& port = target.port;
    if (!port.isOpen()) {
        return fail(EBADF, routine + u" (GetCommState)"_s, qt_error_string(EBADF));
    }
    target.dcb = PortState{port.baudRate(), from_port(port.parity()), static_cast<int>(port.dataBits()),
                           from_port(port.stopBits())};
    const std::optional<CommSettings> wanted = parse_comm_settings(settings);
    if (!wanted) {
        return fail(EINVAL, routine + u" (BuildCommDCB)"_s, qt_error_string(EINVAL));
    }
    PortState next = target.dcb;
    next.baud = wanted->baud.value_or(next.baud);
    next.parity = wanted->parity.value_or(next.parity);
    next.data_bits = wanted->data_bits.value_or(next.data_bits);
    next.stop_bits = wanted->stop_bits.value_or(next.stop_bits);
    QSerialPort::FlowControl flow = port.flowControl();
    if (wanted->hardware_flow) {
        flow = *wanted->hardware_flow ? QSerialPort::HardwareControl : QSerialPort::NoFlowControl;
    }
    if (wanted->software_flow) {
        flow = *wanted->software_flow ? QSerialPort::SoftwareControl : QSerialPort::NoFlowControl;
    }
    const bool applied = port.setBaudRate(next.baud) && port.setParity(to_port(next.parity)) &&
                         port.setDataBits(static_cast<QSerialPort::DataBits>(next.data_bits)) &&
                         port.setStopBits(to_port(next.stop_bits)) && port.setFlowControl(flow) &&
                         (!wanted->dtr || drive_line(port, kCommDtr, *wanted->dtr)) &&
                         (!wanted->rts || drive_line(port, kCommRts, *wanted->rts));
    if (!applied) {
        return fail_port(target, routine + u" (SetCommState)"_s);
    }
    target.dcb = next;
    return 0;
}

int modCOMM::CommClose(int port)
{
    clear_error();
    Entry* found = entry(port);
    if (port < 1 || port > kPortCount) {
        return fail(EINVAL, u"CommClose"_s, qt_error_string(EINVAL));
    }
    if (found == nullptr || !found->open) {
        return 0;
    }
    found->port.close();
    found->open = false;
    return 0;
}

int modCOMM::CommRead(int port, QByteArray& data, int maximum)
{
    clear_error();
    data.clear();
    Entry* found = entry(port);
    if (port < 1 || port > kPortCount) {
        return -fail(EINVAL, u"CommRead"_s, qt_error_string(EINVAL));
    }
    if (found == nullptr || !found->open) {
        return -fail(EBADF, u"CommRead (ClearCommError)"_s, qt_error_string(EBADF));
    }
    QSerialPort& serial = found->port;
    if (serial.bytesAvailable() == 0) {
        // Takes in what the device holds now without running the event loop; "nothing there" is no failure.
        serial.waitForReadyRead(0);
        if (serial.error() == QSerialPort::TimeoutError) {
            serial.clearError();
        }
    }
    if (serial.error() != QSerialPort::NoError) {
        return -fail_port(*found, u"CommRead (ReadFile)"_s, true);
    }
    const qint64 wanted = std::min<qint64>({serial.bytesAvailable(), maximum, kReadBufferSize});
    if (wanted <= 0) {
        return 0;
    }
    data = serial.read(wanted);
    if (serial.error() != QSerialPort::NoError) {
        return -fail_port(*found, u"CommRead (ReadFile)"_s, true);
    }
    return static_cast<int>(data.size());
}

int modCOMM::CommWrite(int port, const QByteArray& data)
{
    clear_error();
    Entry* found = entry(port);
    if (port < 1 || port > kPortCount) {
        return -fail(EINVAL, u"CommWrite"_s, qt_error_string(EINVAL));
    }
    if (found == nullptr || !found->open) {
        return -fail(EBADF, u"CommWrite (WriteFile)"_s, qt_error_string(EBADF));
    }
    QSerialPort& serial = found->port;
    const qint64 written = serial.write(data);
    if (written < 0) {
        return -fail_port(*found, u"CommWrite (WriteFile)"_s, true);
    }
    const int limit = static_cast<int>(std::min<qint64>(1000 * std::max<qint64>(written, 1), kWriteLimitMs));
    while (serial.bytesToWrite() > 0) {
        if (!serial.waitForBytesWritten(limit)) {
            return -fail_port(*found, u"CommWrite (GetOverlappedResult)"_s, true);
        }
    }
    return static_cast<int>(written);
}

int modCOMM::CommSetLine(int port, int line, int state)
{
    clear_error();
    Entry* found = entry(port);
    if (port < 1 || port > kPortCount) {
        return fail(EINVAL, u"CommSetLine"_s, qt_error_string(EINVAL));
    }
    const QString source = u"CommSetLine (EscapeCommFunction)"_s;
    if (found == nullptr || !found->open) {
        return fail(EBADF, source, qt_error_string(EBADF));
    }
    if (line != kCommBreak && line != kCommDtr && line != kCommRts) {
        return fail(EINVAL, source, qt_error_string(EINVAL));
    }
    const bool done = drive_line(found->port, line, state > 0);
    return done ? 0 : fail_port(*found, source);
}

int modCOMM::CommSet(int port, const QString& settings)
{
    clear_error();
    Entry* found = entry(port);
    if (port < 1 || port > kPortCount) {
        return fail(EINVAL, u"CommSet"_s, qt_error_string(EINVAL));
    }
    if (found == nullptr || !found->open) {
        return fail(EBADF, u"CommSet (GetCommState)"_s, qt_error_string(EBADF));
    }
    return apply_settings(*found, settings, u"CommSet"_s);
}

int modCOMM::CommFlush(int port)
{
    clear_error();
    Entry* found = entry(port);
    if (port < 1 || port > kPortCount) {
        return fail(EINVAL, u"CommFlush"_s, qt_error_string(EINVAL));
    }
    if (found == nullptr || !found->open) {
        return fail(EBADF, u"CommFlush (PurgeComm)"_s, qt_error_string(EBADF));
    }
    return found->port.clear(QSerialPort::AllDirections) ? 0 : fail_port(*found, u"CommFlush (PurgeComm)"_s);
}

} // namespace cvd::devices
