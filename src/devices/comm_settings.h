#pragma once

#include <QString>
#include <optional>

namespace cvd::devices {

enum class CommParity { None, Even, Odd, Mark, Space };
enum class CommStopBits { One, OneAndHalf, Two };

// What a settings text asks of a port. A field the text does not name stays as the port has it.
struct CommSettings
{
    std::optional<qint32> baud;
    std::optional<CommParity> parity;
    std::optional<int> data_bits;
    std::optional<CommStopBits> stop_bits;
    // The line states the text may ask for: "dtr=on|off", "rts=on|off".
    std::optional<bool> dtr;
    std::optional<bool> rts;
    // "xon=on" or a trailing "x" asks for software flow control; "octs=on" or a trailing "p" for hardware.
    std::optional<bool> software_flow;
    std::optional<bool> hardware_flow;

    bool operator==(const CommSettings&) const = default;
};

// Reads a port's settings text in either of the forms ports have always taken: keywords
// ("baud=1200 parity=n data=8 stop=1", any order, other keywords such as "to=off" accepted) or the short form
// of positions ("1200,n,8,1", optionally led by "COM1:" and ending in "x" or "p"; a two-digit baud is the old
// abbreviation, "96" for 9600). nullopt when the text is malformed: an unknown keyword or value, a data size
// outside 5 to 8, a stop size other than 1, 1.5 and 2.
std::optional<CommSettings> parse_comm_settings(const QString& text);

} // namespace cvd::devices
