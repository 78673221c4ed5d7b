#include "devices/comm_settings.h"
#include "devices/serial_ports.h"
#include "support/scoped_environment.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd::devices {
namespace {

TEST(CommSettings, BothFormsReadAsThePortsAlwaysTookThem)
{
    struct Case
    {
        QString text;
        std::optional<CommSettings> expected;
    };
    CommSettings modem;
    modem.baud = 1200;
    modem.parity = CommParity::None;
    modem.data_bits = 8;
    modem.stop_bits = CommStopBits::One;
    CommSettings old_rate = modem;
    old_rate.baud = 9600;
    old_rate.parity = CommParity::Even;
    old_rate.data_bits = 7;
    old_rate.stop_bits = CommStopBits::Two;
    old_rate.software_flow = true;
    CommSettings keywords;
    keywords.baud = 19200;
    keywords.parity = CommParity::Mark;
    keywords.stop_bits = CommStopBits::OneAndHalf;
    keywords.dtr = false;
    keywords.hardware_flow = true;
    CommSettings baud_only;
    baud_only.baud = 2400;
    const Case cases[] = {
        {u"baud=1200 parity=n data=8 stop=1"_s, modem},
        {u"  BAUD=1200   Parity=N DATA=8 stop=1 to=off "_s, modem},
        {u"1200,n,8,1"_s, modem},
        {u"COM3: 1200,N,8,1"_s, modem},
        {u"96,e,7,2,x"_s, old_rate},
        {u"stop=1.5 parity=m baud=19200 dtr=off rts=hs"_s, keywords},
        {u"2400"_s, baud_only},
        {u"baud=2400"_s, baud_only},
        {u""_s, std::nullopt},
        {u"baud=fast"_s, std::nullopt},
        {u"baud=1200 data=9"_s, std::nullopt},
        {u"baud=1200 stop=3"_s, std::nullopt},
        {u"baud=1200 parity=q"_s, std::nullopt},
        {u"baud=1200 speed=2"_s, std::nullopt},
        {u"baud 1200"_s, std::nullopt},
        {u"1200,n,8,1,z"_s, std::nullopt},
        {u"1200,n,8,1,x,9"_s, std::nullopt},
        {u"-300,n,8,1"_s, std::nullopt},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text.toStdString());
        EXPECT_EQ(parse_comm_settings(c.text), c.expected);
    }
}

TEST(SerialPorts, NumbersCountTheSystemsPortsByKindAndNumber)
{
    const QStringList listed = {u"/dev/ttyACM0"_s, u"/dev/ttyUSB1"_s, u"/dev/ttyS10"_s, u"/dev/rfcomm0"_s,
                                u"/dev/ttyS2"_s,   u"/dev/ttyUSB0"_s, u"/dev/ttyS0"_s};
    const QStringList expected = {u"/dev/ttyS0"_s,   u"/dev/ttyS2"_s,   u"/dev/ttyS10"_s, u"/dev/ttyUSB0"_s,
                                  u"/dev/ttyUSB1"_s, u"/dev/ttyACM0"_s, u"/dev/rfcomm0"_s};
    EXPECT_EQ(ordered_serial_ports(listed), expected);
}

TEST(SerialPorts, AnEnvironmentVariableNamesAPortsDevice)
{
    testing::ScopedEnvironment environment;
    environment.set("CVD_COM7", u"/tmp/modem-seven"_s);
    EXPECT_EQ(serial_port_device(7), u"/tmp/modem-seven"_s);
    EXPECT_TRUE(serial_port_device(0).isEmpty());
    EXPECT_TRUE(serial_port_device(-3).isEmpty());
    environment.unset("CVD_COM7");
    const QStringList system = system_serial_ports();
    EXPECT_EQ(serial_port_device(7), system.value(6));
    environment.set("CVD_COM2", u"/tmp/modem-two"_s);
    const QStringList numbered = serial_port_devices(3);
    const QStringList expected = {system.value(0), u"/tmp/modem-two"_s, system.value(2)};
    EXPECT_EQ(numbered, expected);
}

} // namespace
} // namespace cvd::devices
