#include "platform/datagram.h"
#include "platform/files.h"
#include "platform_test_support.h"

#include <QFile>
#include <QTemporaryDir>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace cvd::platform {
namespace {

sockaddr_un address_of(const QString& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray encoded = QFile::encodeName(path);
    std::memcpy(address.sun_path, encoded.constData(), static_cast<size_t>(encoded.size()));
    return address;
}

// Sends bytes as they are, for datagrams that send_datagram would never make.
bool send_raw(const QString& path, const QByteArray& bytes)
{
    const int fd = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const sockaddr_un address = address_of(path);
    const ssize_t sent = ::sendto(fd, bytes.constData(), static_cast<size_t>(bytes.size()), 0,
                                  reinterpret_cast<const sockaddr*>(&address), sizeof address);
    ::close(fd);
    return sent == bytes.size();
}

// A socket file with nobody behind it, as a receiver that was killed leaves it.
void leave_stale_socket(const QString& path)
{
    const int fd = ::socket(AF_UNIX, SOCK_DGRAM, 0);
    const sockaddr_un address = address_of(path);
    ASSERT_EQ(::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ::close(fd);
}

// The text of the next datagram waiting, if any.
std::optional<QString> next_text(DatagramReceiver& receiver)
{
    const std::optional<Datagram> datagram = receiver.receive();
    return datagram ? std::optional<QString>(datagram->text) : std::nullopt;
}

QByteArray with_kind(quint32 kind, const QByteArray& text)
{
    return encode_datagram(kind, QString()) + text;
}

TEST(DatagramFormat, KindIsFourBytesLittleEndianFollowedByUtf8)
{
    EXPECT_EQ(encode_datagram(0x04030201, QString()), QByteArray("\x01\x02\x03\x04", 4));
    EXPECT_EQ(encode_datagram(2, u"Grüße"_s), QByteArray("\x02\x00\x00\x00Gr\xc3\xbc\xc3\x9f\x65", 11));
}

TEST(DatagramFormat, DecodingCutsAtNulOrTheBufferAndFallsBackToLatin1)
{
    const QByteArray limit(kDatagramTextBuffer, 'a');
    struct Case
    {
        const char* name;
        QByteArray bytes;
        std::optional<quint32> kind;
        QString text;
    };
    const Case cases[] = {
        {"empty", QByteArray(), std::nullopt, {}},
        {"three bytes", QByteArray("\x02\x00\x00", 3), std::nullopt, {}},
        {"kind only", with_kind(3, ""), 3, u""_s},
        {"high kind", QByteArray("\x00\x00\x00\x80x", 5), 0x80000000u, u"x"_s},
        {"no NUL", with_kind(2, "hello"), 2, u"hello"_s},
        {"NUL ended", with_kind(2, QByteArray("hello\0", 6)), 2, u"hello"_s},
        {"NUL inside", with_kind(2, QByteArray("hel\0lo\0", 7)), 2, u"hel"_s},
        {"UTF-8", with_kind(3, "caf\xc3\xa9"), 3, u"café"_s},
        {"Latin-1", with_kind(3, "caf\xe9"), 3, u"café"_s},
        {"just below the limit", with_kind(2, limit.left(kDatagramTextBuffer - 1) + '\0'), 2,
         QString(kDatagramTextBuffer - 1, u'a')},
        {"exactly the limit", with_kind(2, limit), 2, QString(kDatagramTextBuffer, u'a')},
        {"over the limit", with_kind(2, limit + "bcd"), 2, QString(kDatagramTextBuffer, u'a')},
        {"NUL past the limit", with_kind(2, limit + QByteArray("b\0", 2)), 2, QString(kDatagramTextBuffer, u'a')},
        {"character cut by the limit", with_kind(2, limit.left(kDatagramTextBuffer - 1) + "\xc3\xa9z"), 2,
         QString(kDatagramTextBuffer - 1, u'a')},
        {"character cut by the limit after others",
         with_kind(2, limit.left(kDatagramTextBuffer - 4) + "\xc3\xa9\xe2\x82\xac"), 2,
         QString(kDatagramTextBuffer - 4, u'a') + u"é"_s},
        {"character ending at the limit", with_kind(2, limit.left(kDatagramTextBuffer - 2) + "\xc3\xa9z"), 2,
         QString(kDatagramTextBuffer - 2, u'a') + u"é"_s},
    };
    for (const Case& c : cases) {
        const std::optional<Datagram> decoded = decode_datagram(c.bytes);
        ASSERT_EQ(decoded.has_value(), c.kind.has_value()) << c.name;
        if (decoded) {
            EXPECT_EQ(decoded->kind, *c.kind) << c.name;
            EXPECT_EQ(decoded->text, c.text) << c.name;
        }
    }
}

class DatagramChannelTest : public ::testing::Test
{
protected:
    QString socket_path() const { return m_dir.path() + u"/CorvaneDesk.sock"_s; }
    QTemporaryDir m_dir;
};

TEST_F(DatagramChannelTest, TextsArriveInOrderAndOddDatagramsAreHandled)
{
    DatagramReceiver receiver;
    EXPECT_EQ(receiver.fd(), -1);
    ASSERT_TRUE(receiver.bind(socket_path())) << receiver.error().toStdString();
    EXPECT_TRUE(receiver.is_bound());
    EXPECT_EQ(receiver.path(), socket_path());
    EXPECT_NE(::fcntl(receiver.fd(), F_GETFL) & O_NONBLOCK, 0);
    EXPECT_NE(::fcntl(receiver.fd(), F_GETFD) & FD_CLOEXEC, 0);
    EXPECT_EQ(receiver.receive(), std::nullopt) << "nothing waiting, and no blocking";

    QString error;
    ASSERT_TRUE(send_datagram(socket_path(), 2, u"PAGE bob Hello"_s, &error)) << error.toStdString();
    ASSERT_TRUE(send_datagram(socket_path(), 3, u"Grüße €"_s, &error)) << error.toStdString();
    ASSERT_TRUE(send_raw(socket_path(), "ab"));
    ASSERT_TRUE(send_raw(socket_path(), with_kind(3, QByteArray("ended\0", 6))));
    ASSERT_TRUE(send_raw(socket_path(), QByteArray()));
    ASSERT_TRUE(send_datagram(socket_path(), 2, QString(3000, u'x'), &error)) << error.toStdString();
    ASSERT_TRUE(send_datagram(socket_path(), 7, QString()));

    const std::pair<quint32, QString> expected[] = {
        {2, u"PAGE bob Hello"_s}, {3, u"Grüße €"_s}, {3, u"ended"_s}, {2, QString(kDatagramTextBuffer, u'x')},
        {7, QString()},
    };
    for (const auto& [kind, text] : expected) {
        const std::optional<Datagram> datagram = receiver.receive();
        ASSERT_TRUE(datagram.has_value()) << text.left(20).toStdString();
        EXPECT_EQ(datagram->kind, kind);
        EXPECT_EQ(datagram->text, text);
    }
    EXPECT_EQ(receiver.receive(), std::nullopt);
    EXPECT_TRUE(receiver.error().isEmpty()) << receiver.error().toStdString();
}

TEST_F(DatagramChannelTest, SendingWhereNobodyListensFailsWithAReason)
{
    EXPECT_FALSE(send_datagram(socket_path(), 2, u"x"_s)) << "no error text asked for";
    const QString too_long = m_dir.path() + u'/' + QString(200, u'n');
    for (const bool stale : {false, true}) {
        if (stale) {
            leave_stale_socket(socket_path());
        }
        QString error;
        EXPECT_FALSE(send_datagram(socket_path(), 2, u"x"_s, &error));
        EXPECT_TRUE(error.contains(socket_path())) << error.toStdString();
    }
    QString error;
    EXPECT_FALSE(send_datagram(too_long, 2, u"x"_s, &error));
    EXPECT_FALSE(error.isEmpty());
}

TEST_F(DatagramChannelTest, BindReplacesAStaleSocketButNotALiveOneOrAnotherFile)
{
    leave_stale_socket(socket_path());
    DatagramReceiver receiver;
    ASSERT_TRUE(receiver.bind(socket_path())) << receiver.error().toStdString();
    ASSERT_TRUE(send_datagram(socket_path(), 2, u"after restart"_s));
    EXPECT_EQ(next_text(receiver), std::optional<QString>(u"after restart"_s));

    DatagramReceiver intruder;
    EXPECT_FALSE(intruder.bind(socket_path()));
    EXPECT_FALSE(intruder.error().isEmpty());
    EXPECT_FALSE(intruder.is_bound());
    ASSERT_TRUE(send_datagram(socket_path(), 3, u"still here"_s));
    EXPECT_EQ(next_text(receiver), std::optional<QString>(u"still here"_s));

    const QString regular = m_dir.path() + u"/notes.txt"_s;
    ASSERT_TRUE(write_file_atomically(regular, "keep me").ok);
    DatagramReceiver misplaced;
    EXPECT_FALSE(misplaced.bind(regular));
    EXPECT_EQ(read_file_bytes(regular), std::optional<QByteArray>("keep me"));

    EXPECT_FALSE(misplaced.bind(m_dir.path() + u'/' + QString(200, u'n')));
    EXPECT_FALSE(misplaced.error().isEmpty());
}

TEST_F(DatagramChannelTest, TheSocketFileGoesWithTheReceiver)
{
    {
        DatagramReceiver receiver;
        ASSERT_TRUE(receiver.bind(socket_path()));
        EXPECT_TRUE(path_exists(socket_path()));
    }
    EXPECT_FALSE(path_exists(socket_path())) << "destruction removes it";

    DatagramReceiver receiver;
    ASSERT_TRUE(receiver.bind(socket_path()));
    receiver.close();
    EXPECT_FALSE(path_exists(socket_path()));
    EXPECT_FALSE(receiver.is_bound());
    EXPECT_EQ(receiver.receive(), std::nullopt);

    // Moving to another path gives up the first one.
    const QString second = m_dir.path() + u"/second.sock"_s;
    ASSERT_TRUE(receiver.bind(socket_path()));
    ASSERT_TRUE(receiver.bind(second));
    EXPECT_FALSE(path_exists(socket_path()));
    EXPECT_TRUE(path_exists(second));

    // A socket file that someone else has put in its place since is not ours to remove.
    ASSERT_TRUE(remove_file(second).ok);
    leave_stale_socket(second);
    receiver.close();
    EXPECT_TRUE(path_exists(second));
}

} // namespace
} // namespace cvd::platform
