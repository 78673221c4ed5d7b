#pragma once

#include "devices/comm.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <functional>

namespace cvd::devices {

// Clears bit 7 of every byte above 127: a modem on a line with parity may answer with it set.
QByteArray StripParity(QByteArray text);

// The texts a wait for a modem's answer looks for: up to 11, kept in lower case, found by substring in the
// lower-cased text received.
class WaitTriggers
{
public:
    static constexpr int kMaximum = 11;

    void ClearWaitTriggers() { m_triggers.clear(); }
    // False, with the list unchanged, when it is full.
    bool SetWaitTrigger(const QString& trigger);
    int count() const { return static_cast<int>(m_triggers.size()); }
    // The number (from 1) of the first trigger that occurs in `received`, or 0.
    int find(const QByteArray& received) const;

private:
    QList<QByteArray> m_triggers;
};

// The scan for modems: each port in turn is opened at 1200 baud, DTR and RTS raised, "AT" and a carriage
// return sent, and the answer awaited up to the limit; a port that answers "OK" (or the numeric "0") is
// found. It runs on the event loop, a port at a time, reading every tenth of a second, so the window stays
// responsive; stop() ends it at once and closes the port in work.
class ModemScan
{
public:
    static constexpr int kDefaultLimitMs = 3000;
    static const QString kSettings;

    struct Callbacks
    {
        // A port was tried: its number, its device (empty when there is none) and whether a modem answered.
        std::function<void(int port, const QString& device, bool found)> port_done;
        std::function<void()> finished;
    };

    explicit ModemScan(Callbacks callbacks);
    ModemScan(const ModemScan&) = delete;
    ModemScan& operator=(const ModemScan&) = delete;

    // Scans ports 1 to devices.size(), port n on devices[n - 1]. The wait for each answer is `limit_ms`.
    void start(const QStringList& devices, int limit_ms = kDefaultLimitMs);
    void stop();
    bool running() const { return m_running; }
    const QByteArray& received() const { return m_received; }

private:
    void try_port();
    // Empties the input, optionally forgets what was received, and writes the text to the port.
    void SendToModem(const QByteArray& text, bool clear_received);
    // Waits up to `limit_ms` for a trigger, reading every tenth of a second; with `read_tail` one more read
    // follows a tenth of a second after a trigger is seen, so that the answer's line end is also taken; with
    // `any_text` whatever arrives ends the wait.
    void WaitForData(int limit_ms, bool read_tail, bool any_text);
    void read_tick();
    // Closes the port, reports it found when a trigger was seen, and goes on with the next.
    void port_finished(int trigger);

    Callbacks m_callbacks;
    modCOMM m_comm;
    WaitTriggers m_triggers;
    QByteArray m_received;
    QStringList m_devices;
    QTimer m_tick;
    QElapsedTimer m_waited;
    int m_limit_ms = kDefaultLimitMs;
    int m_wait_limit_ms = 0;
    int m_port = 0;
    int m_found_trigger = 0;
    bool m_read_tail = false;
    bool m_tail_pending = false;
    bool m_any_text = false;
    bool m_running = false;
};

} // namespace cvd::devices
