#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace cvd::platform {

// The local message channel: a Unix datagram socket in the runtime folder. A datagram is a 4-byte
// little-endian kind followed by the text in UTF-8; a terminating NUL is optional. The receiver copies the
// text into a zeroed buffer of 2048 bytes and cuts it at the first NUL, so a text must stay below 2048 bytes.
inline constexpr int kDatagramTextBuffer = 2048;

struct Datagram
{
    quint32 kind = 0;
    QString text;
};

QByteArray encode_datagram(quint32 kind, const QString& text);
// nullopt for fewer than 4 bytes. The text is at most kDatagramTextBuffer bytes, cut at the first NUL, read as
// UTF-8 (Latin-1 when it is not valid UTF-8); a character cut in two by the limit is dropped.
std::optional<Datagram> decode_datagram(const QByteArray& bytes);

class DatagramReceiver
{
public:
    DatagramReceiver() = default;
    ~DatagramReceiver(); // closes and removes the socket file
    DatagramReceiver(const DatagramReceiver&) = delete;
    DatagramReceiver& operator=(const DatagramReceiver&) = delete;

    // Binds a non-blocking socket at path, replacing a stale socket file. False with error() on failure.
    bool bind(const QString& path);
    void close();
    bool is_bound() const { return m_fd >= 0; }
    // The descriptor, for an event-loop notifier; -1 when not bound.
    int fd() const { return m_fd; }
    const QString& path() const { return m_path; }
    const QString& error() const { return m_error; }

    // The next datagram waiting, without blocking; nullopt when none is waiting. Datagrams shorter than
    // 4 bytes are skipped.
    std::optional<Datagram> receive();

private:
    int m_fd = -1;
    QString m_path;
    QString m_error;
    // The socket file we made, so that close() never removes a file that someone put there since.
    quint64 m_socket_device = 0;
    quint64 m_socket_inode = 0;
};

// Sends one datagram to the socket at path. False with a reason in *error on failure.
bool send_datagram(const QString& path, quint32 kind, const QString& text, QString* error = nullptr);

} // namespace cvd::platform
