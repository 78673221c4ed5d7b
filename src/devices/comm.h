#pragma once

#include "devices/comm_settings.h"

#include <QByteArray>
#include <QString>
#include <array>
#include <memory>

class QSerialPort;

namespace cvd::devices {

// The last failure of the port layer: a number (an errno value, -1 for "Port in use."), the routine and the
// step of opening or using a port that failed ("CommOpen (SetCommState)"), and the system's text for it.
struct CommError
{
    int number = 0;
    QString source;
    QString message;
};

// The lines CommSetLine drives.
enum CommLine { kCommBreak = 1, kCommDtr = 2, kCommRts = 3 };

// The serial port layer: a table of 64 ports by number, each opened on a device with a settings text, and the
// last error of any routine. CommOpen, CommClose, CommSetLine, CommSet and CommFlush return 0 or the error
// number; CommRead and CommWrite return the count moved, or the error number negated. Nothing is shown: the
// caller reads the result and last_error().
class modCOMM
{
public:
    static constexpr int kPortCount = 64;

    modCOMM();
    ~modCOMM();
    modCOMM(const modCOMM&) = delete;
    modCOMM& operator=(const modCOMM&) = delete;

    int CommOpen(int port, const QString& device, const QString& settings);
    int CommClose(int port);
    // Takes what the device has now, up to `maximum` bytes (and at most 1024), into `data`; never waits.
    int CommRead(int port, QByteArray& data, int maximum);
    int CommWrite(int port, const QByteArray& data);
    // `line` is one of CommLine; a state above 0 sets it, otherwise it is cleared.
    int CommSetLine(int port, int line, int state);
    int CommSet(int port, const QString& settings);
    int CommFlush(int port);

    bool is_open(int port) const;
    const CommError& last_error() const { return m_error; }

    // The port's present line settings, as the settings text applied them.
    struct PortState
    {
        qint32 baud = 0;
        CommParity parity = CommParity::None;
        int data_bits = 8;
        CommStopBits stop_bits = CommStopBits::One;
    };
    PortState port_state(int port) const;

private:
    struct Entry;

    Entry* entry(int port) const;
    int fail(int number, const QString& source, const QString& message);
    int fail_port(const Entry& entry, const QString& source, bool with_flags = false);
    void clear_error();
    // GetCommState, BuildCommDCB and SetCommState: the settings text applied over what the port has.
    int apply_settings(Entry& entry, const QString& settings, const QString& routine);

    std::array<std::unique_ptr<Entry>, kPortCount> m_ports;
    CommError m_error;
};

} // namespace cvd::devices
