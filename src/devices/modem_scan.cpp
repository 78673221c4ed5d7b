#include "devices/modem_scan.h"

using namespace Qt::StringLiterals;

namespace cvd::devices {

namespace {

constexpr int kReadIntervalMs = 100;
constexpr int kReadMaximum = 1000;

} // namespace

const QString ModemScan::kSettings = u"baud=1200 parity=n data=8 stop=1"_s;

QByteArray StripParity(QByteArray text)
{
    for (char& byte : text) {
        const auto code = static_cast<unsigned char>(byte);
        if (code > 127) {
            byte = static_cast<char>(code & 0x7FU);
        }
    }
    return text;
}

bool WaitTriggers::SetWaitTrigger(const QString& trigger)
{
    if (m_triggers.size() >= kMaximum) {
        return false;
    }
    m_triggers.append(trigger.toLower().toUtf8());
    return true;
}

int WaitTriggers::find(const QByteArray& received) const
{
    const QByteArray lower = received.toLower();
    for (qsizetype index = 0; index < m_triggers.size(); ++index) {
        if (lower.contains(m_triggers.at(index))) {
            return static_cast<int>(index + 1);
        }
    }
    return 0;
}

ModemScan::ModemScan(Callbacks callbacks) : m_callbacks(std::move(callbacks))
{
    m_tick.setInterval(kReadIntervalMs);
    QObject::connect(&m_tick, &QTimer::timeout, [this] { read_tick(); });
}

void ModemScan::start(const QStringList& devices, int limit_ms)
{
    stop();
    m_devices = devices;
    m_limit_ms = limit_ms;
    m_port = 0;
    m_running = true;
    try_port();
}

void ModemScan::stop()
{
    m_tick.stop();
    if (m_port > 0) {
        m_comm.CommClose(m_port);
    }
    m_running = false;
}

void ModemScan::try_port()
{
    // Ports that cannot be opened are passed over at once; the loop returns to the event loop only to wait.
    while (m_running && m_port < m_devices.size()) {
        ++m_port;
        const QString& device = m_devices.at(m_port - 1);
        if (device.isEmpty() || m_comm.CommOpen(m_port, device, kSettings) != 0) {
            m_comm.CommClose(m_port);
            if (m_callbacks.port_done) {
                m_callbacks.port_done(m_port, device, false);
            }
            continue;
        }
        m_comm.CommSetLine(m_port, kCommDtr, 1);
        m_comm.CommSetLine(m_port, kCommRts, 1);
        SendToModem("AT\r", true);
        m_triggers.ClearWaitTriggers();
        m_triggers.SetWaitTrigger(u"OK"_s);
        m_triggers.SetWaitTrigger(u"0"_s);
        WaitForData(m_limit_ms, true, false);
        return;
    }
    if (m_running) {
        m_running = false;
        if (m_callbacks.finished) {
            m_callbacks.finished();
        }
    }
}

void ModemScan::SendToModem(const QByteArray& text, bool clear_received)
{
    QByteArray drained;
    while (m_comm.CommRead(m_port, drained, kReadMaximum) > 0) {
    }
    if (clear_received) {
        m_received.clear();
    }
    m_comm.CommWrite(m_port, text);
}

void ModemScan::WaitForData(int limit_ms, bool read_tail, bool any_text)
{
    m_wait_limit_ms = limit_ms;
    m_read_tail = read_tail;
    m_any_text = any_text;
    m_found_trigger = 0;
    m_tail_pending = false;
    m_waited.start();
    m_tick.start();
}

void ModemScan::read_tick()
{
    QByteArray part;
    if (m_comm.CommRead(m_port, part, kReadMaximum) > 0) {
        m_received += StripParity(part);
    }
    if (m_tail_pending) {
        port_finished(m_found_trigger);
        return;
    }
    m_found_trigger = m_triggers.find(m_received);
    const bool ends = m_found_trigger > 0 || (m_any_text && !m_received.isEmpty());
    if (ends && m_read_tail) {
        m_tail_pending = true;
        return;
    }
    if (ends || m_waited.elapsed() >= m_wait_limit_ms) {
        port_finished(m_found_trigger);
    }
}

void ModemScan::port_finished(int trigger)
{
    m_tick.stop();
    m_comm.CommClose(m_port);
    if (m_callbacks.port_done) {
        m_callbacks.port_done(m_port, m_devices.at(m_port - 1), trigger > 0);
    }
    try_port();
}

} // namespace cvd::devices
