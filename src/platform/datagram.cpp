#include "platform/datagram.h"

#include "platform/files.h"

#include <QFile>
#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace cvd::platform {

namespace {

// Big enough for any datagram a sender of ours makes, so that recv never cuts the text short of the limit.
constexpr qsizetype kReceiveBuffer = 65536;

// The address of a socket file; false when the path does not fit into sun_path.
bool make_address(const QString& path, sockaddr_un* address, QString* error)
{
    const QByteArray encoded = QFile::encodeName(path);
    *address = {};
    address->sun_family = AF_UNIX;
    if (encoded.isEmpty() || static_cast<size_t>(encoded.size()) >= sizeof address->sun_path) {
        *error = u"socket path is empty or too long: "_s + path;
        return false;
    }
    std::memcpy(address->sun_path, encoded.constData(), static_cast<size_t>(encoded.size()));
    return true;
}

const sockaddr* as_sockaddr(const sockaddr_un* address)
{
    return reinterpret_cast<const sockaddr*>(address);
}

// Drops a UTF-8 sequence that the length limit cut in two, so that the rest of the text still reads as UTF-8.
void drop_cut_character(QByteArray& bytes)
{
    for (qsizetype back = 1; back <= 4 && back <= bytes.size(); ++back) {
        const auto byte = static_cast<unsigned char>(bytes.at(bytes.size() - back));
        if ((byte & 0xC0) == 0x80) {
            continue; // a continuation byte: the sequence started further back
        }
        const qsizetype expected = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
        if (back < expected) {
            bytes.chop(back);
        }
        return;
    }
}

// Whether a live receiver answers at the socket file; a socket file left by a dead one refuses.
bool socket_is_live(const sockaddr_un& address)
{
    const int probe = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (probe < 0) {
        return false;
    }
    const bool live = ::connect(probe, as_sockaddr(&address), sizeof address) == 0;
    ::close(probe);
    return live;
}

} // namespace

QByteArray encode_datagram(quint32 kind, const QString& text)
{
    QByteArray bytes;
    for (int shift = 0; shift < 32; shift += 8) {
        bytes += static_cast<char>((kind >> shift) & 0xFF);
    }
    return bytes + text.toUtf8();
}

std::optional<Datagram> decode_datagram(const QByteArray& bytes)
{
    if (bytes.size() < 4) {
        return std::nullopt;
    }
    Datagram datagram;
    for (int i = 3; i >= 0; --i) {
        datagram.kind = (datagram.kind << 8) | static_cast<unsigned char>(bytes.at(i));
    }
    QByteArray text = bytes.mid(4, kDatagramTextBuffer);
    const qsizetype nul = text.indexOf('\0');
    if (nul >= 0) {
        text.truncate(nul);
    } else if (bytes.size() - 4 > kDatagramTextBuffer) {
        drop_cut_character(text);
    }
    datagram.text = text_from_bytes(text);
    return datagram;
}

DatagramReceiver::~DatagramReceiver()
{
    close();
}

bool DatagramReceiver::bind(const QString& path)
{
    close();
    m_error.clear();
    sockaddr_un address{};
    if (!make_address(path, &address, &m_error)) {
        return false;
    }
    struct stat existing
    {
    };
    if (::lstat(address.sun_path, &existing) == 0 && S_ISSOCK(existing.st_mode)) {
        if (socket_is_live(address)) {
            m_error = u"another receiver is bound at "_s + path;
            return false;
        }
        ::unlink(address.sun_path); // left by a receiver that ended without cleaning up
    }
    const int fd = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        m_error = u"cannot make a socket: "_s + error_text(errno);
        return false;
    }
    struct stat made
    {
    };
    if (::bind(fd, as_sockaddr(&address), sizeof address) != 0 || ::lstat(address.sun_path, &made) != 0) {
        m_error = u"cannot bind "_s + path + u": "_s + error_text(errno);
        ::close(fd);
        return false;
    }
    m_fd = fd;
    m_path = path;
    m_socket_device = made.st_dev;
    m_socket_inode = made.st_ino;
    return true;
}

void DatagramReceiver::close()
{
    if (m_fd < 0) {
        return;
    }
    ::close(m_fd);
    m_fd = -1;
    const QByteArray encoded = QFile::encodeName(m_path);
    struct stat current
    {
    };
    if (::lstat(encoded.constData(), &current) == 0 && current.st_dev == m_socket_device &&
        current.st_ino == m_socket_inode) {
        ::unlink(encoded.constData());
    }
    m_path.clear();
}

std::optional<Datagram> DatagramReceiver::receive()
{
    if (m_fd < 0) {
        return std::nullopt;
    }
    QByteArray buffer(kReceiveBuffer, Qt::Uninitialized);
    for (;;) {
        const ssize_t got = ::recv(m_fd, buffer.data(), static_cast<size_t>(buffer.size()), 0);
        if (got < 0) {
            if (errno == EINTR) {
                continue;
            }
            if (errno != EAGAIN && errno != EWOULDBLOCK) {
                m_error = u"cannot receive: "_s + error_text(errno);
            }
            return std::nullopt;
        }
        if (std::optional<Datagram> datagram = decode_datagram(buffer.left(got))) {
            return datagram;
        }
        // Too short to carry a kind: not one of ours, so look at the next.
    }
}

bool send_datagram(const QString& path, quint32 kind, const QString& text, QString* error)
{
    QString reason;
    sockaddr_un address{};
    if (!make_address(path, &address, &reason)) {
        if (error) {
            *error = reason;
        }
        return false;
    }
    // Non-blocking, so that a receiver that has stopped reading makes the sender fail instead of hang.
    const int fd = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        if (error) {
            *error = u"cannot make a socket: "_s + error_text(errno);
        }
        return false;
    }
    const QByteArray bytes = encode_datagram(kind, text);
    ssize_t sent =
        ::sendto(fd, bytes.constData(), static_cast<size_t>(bytes.size()), 0, as_sockaddr(&address), sizeof address);
    while (sent < 0 && errno == EINTR) {
        sent = ::sendto(fd, bytes.constData(), static_cast<size_t>(bytes.size()), 0, as_sockaddr(&address),
                        sizeof address);
    }
    const int send_error = errno;
    ::close(fd);
    if (sent == bytes.size()) {
        return true;
    }
    if (error) {
        if (send_error == ENOENT) {
            *error = u"no socket at "_s + path;
        } else if (send_error == ECONNREFUSED) {
            *error = u"nobody is receiving at "_s + path;
        } else {
            *error = u"cannot send to "_s + path + u": "_s + error_text(send_error);
        }
    }
    return false;
}

} // namespace cvd::platform
