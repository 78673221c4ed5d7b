#include "devices/serial_ports.h"

#include <QFileInfo>
#include <QSerialPortInfo>
#include <algorithm>
#include <optional>
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

QString overridden_device(int number)
{
    return qEnvironmentVariable(qPrintable(u"CVD_COM%1"_s.arg(number)));
}

} // namespace

QString serial_port_device(int number)
{
    if (number < 1) {
        return {};
    }
    QString overridden = overridden_device(number);
    if (!overridden.isEmpty()) {
        return overridden;
    }
    const QStringList ports = system_serial_ports();
    return number <= ports.size() ? ports.at(number - 1) : QString();
}

QStringList serial_port_devices(int count)
{
    QStringList devices;
    // The system's list takes a while to make; it is asked for only when a number is not named by hand.
    std::optional<QStringList> system_ports;
    for (int number = 1; number <= count; ++number) {
        QString device = overridden_device(number);
        if (device.isEmpty()) {
            if (!system_ports) {
                system_ports = system_serial_ports();
            }
            device = system_ports->value(number - 1);
        }
        devices.append(device);
    }
    return devices;
}

} // namespace cvd::devices
