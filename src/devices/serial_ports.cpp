#include "devices/serial_ports.h"

#include <QFileInfo>
#include <QSerialPortInfo>
#include <algorithm>
#include <tuple>

using namespace Qt::StringLiterals;

namespace cvd::devices {

namespace {

// The sort key of a device path: the rank of its kind, its number, then its name for the kinds we do not rank.
std::tuple<int, qint64, QString> port_order(const QString& device)
{
    static const QString kKinds[] = {u"ttyS"_s, u"ttyUSB"_s, u"ttyACM"_s};
    const QString name = QFileInfo(device).fileName();
    int rank = 0;
    for (const QString& kind : kKinds) {
        if (name.startsWith(kind)) {
            bool is_number = false;
            const qint64 number = name.mid(kind.size()).toLongLong(&is_number);
            if (is_number) {
                return {rank, number, name};
            }
        }
        ++rank;
    }
    return {rank, 0, name};
}

} // namespace

QStringList ordered_serial_ports(const QStringList& devices)
{
    QStringList ordered = devices;
    std::stable_sort(ordered.begin(), ordered.end(),
                     [](const QString& left, const QString& right) { return port_order(left) < port_order(right); });
    return ordered;
}

QStringList system_serial_ports()
{
    QStringList devices;
    const QList<QSerialPortInfo> ports = QSerialPortInfo::availablePorts();
    for (const QSerialPortInfo& port : ports) {
        devices.append(port.systemLocation());
    }
    return ordered_serial_ports(devices);
}

namespace {

QString device_of(int number, const QStringList& system_ports)
{
    QString overridden = qEnvironmentVariable(qPrintable(u"CVD_COM%1"_s.arg(number)));
    if (!overridden.isEmpty()) {
        return overridden;
    }
    return number <= system_ports.size() ? system_ports.at(number - 1) : QString();
}

} // namespace

QString serial_port_device(int number)
{
    if (number < 1) {
        return {};
    }
    return device_of(number, system_serial_ports());
}

QStringList serial_port_devices(int count)
{
    const QStringList system_ports = system_serial_ports();
    QStringList devices;
    for (int number = 1; number <= count; ++number) {
        devices.append(device_of(number, system_ports));
    }
    return devices;
}

} // namespace cvd::devices
