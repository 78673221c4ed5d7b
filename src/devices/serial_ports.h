#pragma once

#include <QString>
#include <QStringList>

namespace cvd::devices {

// The device behind port number n (1 and up): `$CVD_COM<n>` when that is set, otherwise the n-th serial port
// the system lists, ordered as ordered_serial_ports does, so that USB modems are found too. Empty when there
// is no such port. The modem scan and the modem setup's `port` use this one mapping.
QString serial_port_device(int number);

// The devices of ports 1 to `count` by that same mapping, listing the system's ports once; an empty text
// where a number has no device.
QStringList serial_port_devices(int count);

// The system's serial ports (full device paths) in the order port numbers count them: ttyS, then ttyUSB, then
// ttyACM, each by its number; any other kind after those, by name.
QStringList ordered_serial_ports(const QStringList& devices);

// The serial ports the system lists now, in that order.
QStringList system_serial_ports();

} // namespace cvd::devices
