#pragma once

#include <QByteArray>
#include <QObject>
#include <QSerialPort>
#include <QString>

namespace cvd::testing {

// The far end of a pseudo-terminal pair playing a modem: it answers "AT" followed by a carriage return with
// "OK" (every byte with its parity bit set, as a modem on a 7-bit line may send it), or keeps silent.
class ModemDouble : public QObject
{
public:
    enum class Answer { Ok, Silent };

    ModemDouble(const QString& device, Answer answer) : m_answer(answer)
    {
        m_port.setPortName(device);
        m_open = m_port.open(QIODevice::ReadWrite);
        QObject::connect(&m_port, &QSerialPort::readyRead, this, [this] { take_input(); });
    }

    bool is_open() const { return m_open; }
    const QByteArray& heard() const { return m_heard; }

private:
    void take_input()
    {
        m_heard += m_port.readAll();
        if (m_answer == Answer::Silent || !m_heard.endsWith("AT\r")) {
            return;
        }
        QByteArray reply("\r\nOK\r\n");
        for (char& byte : reply) {
            byte = static_cast<char>(static_cast<unsigned char>(byte) | 0x80U);
        }
        m_port.write(reply);
    }

    QSerialPort m_port;
    Answer m_answer;
    bool m_open = false;
    QByteArray m_heard;
};

} // namespace cvd::testing
