// The port layer against pseudo-terminal pairs made by socat.
#include "devices/comm.h"
#include "support/pty_pair.h"

#include <QEventLoop>
#include <QTimer>
#include <cerrno>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd::devices {
namespace {

const QString kModemSettings = u"baud=1200 parity=n data=8 stop=1"_s;

class Comm : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!testing::PtyPair::socat_installed()) {
            GTEST_SKIP() << "socat is not installed";
        }
        ASSERT_TRUE(pair.ready()) << "socat did not make the pseudo-terminal pair";
    }

    // Reads at `port` until `count` bytes came or the far end has nothing more within a bounded wait.
    QByteArray read_back(modCOMM& comm, int port, qsizetype count)
    {
        QByteArray all;
        for (int round = 0; round < 50 && all.size() < count; ++round) {
            QByteArray part;
            EXPECT_GE(comm.CommRead(port, part, 1000), 0) << comm.last_error().source.toStdString();
            all += part;
            if (part.isEmpty()) {
                run_event_loop(20);
            }
        }
        return all;
    }

    // Lets socat carry the bytes across for a moment, with the event loop running.
    static void run_event_loop(int milliseconds)
    {
        QEventLoop loop;
        QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
        loop.exec();
    }

    testing::PtyPair pair;
};

TEST_F(Comm, OpensAppliesTheSettingsAndCarriesTextBothWays)
{
    modCOMM comm;
    ASSERT_EQ(comm.CommOpen(1, pair.near_end(), kModemSettings), 0) << comm.last_error().message.toStdString();
    ASSERT_EQ(comm.CommOpen(2, pair.far_end(), u"96,n,8,2"_s), 0) << comm.last_error().message.toStdString();
    EXPECT_TRUE(comm.is_open(1));
    const modCOMM::PortState near = comm.port_state(1);
    EXPECT_EQ(near.baud, 1200);
    EXPECT_EQ(near.parity, CommParity::None);
    EXPECT_EQ(near.data_bits, 8);
    EXPECT_EQ(near.stop_bits, CommStopBits::One);
    const modCOMM::PortState far = comm.port_state(2);
    EXPECT_EQ(far.baud, 9600);
    EXPECT_EQ(far.parity, CommParity::None);
    EXPECT_EQ(far.data_bits, 8);
    EXPECT_EQ(far.stop_bits, CommStopBits::Two);

    EXPECT_EQ(comm.CommWrite(1, "AT\r"), 3);
    EXPECT_EQ(read_back(comm, 2, 3), QByteArray("AT\r"));
    EXPECT_EQ(comm.CommWrite(2, "OK\r\n"), 4);
    EXPECT_EQ(read_back(comm, 1, 4), QByteArray("OK\r\n"));

    // Nothing waiting is no failure, and a maximum smaller than what waits leaves the rest for the next read.
    QByteArray nothing("stale");
    EXPECT_EQ(comm.CommRead(1, nothing, 1000), 0);
    EXPECT_TRUE(nothing.isEmpty());
    EXPECT_EQ(comm.CommWrite(2, "0123456789"), 10);
    EXPECT_EQ(read_back(comm, 1, 4).left(4), QByteArray("0123"));

    EXPECT_EQ(comm.CommSet(1, u"2400,n,8,1"_s), 0);
    EXPECT_EQ(comm.port_state(1).baud, 2400);
    EXPECT_EQ(comm.CommSet(1, u"baud=1200 dtr=on rts=on"_s), 0) << comm.last_error().message.toStdString();
    EXPECT_EQ(comm.port_state(1).baud, 1200);
    EXPECT_EQ(comm.CommFlush(1), 0);
    EXPECT_EQ(comm.CommClose(1), 0);
    EXPECT_FALSE(comm.is_open(1));
    EXPECT_EQ(comm.CommClose(1), 0);
}

TEST_F(Comm, LinesSetWithoutErrorAndABadLineIsRefused)
{
    modCOMM comm;
    ASSERT_EQ(comm.CommOpen(1, pair.near_end(), kModemSettings), 0);
    for (const int line : {kCommBreak, kCommDtr, kCommRts}) {
        for (const int state : {1, 0}) {
            EXPECT_EQ(comm.CommSetLine(1, line, state), 0) << line << ' ' << comm.last_error().message.toStdString();
        }
    }
    EXPECT_EQ(comm.CommSetLine(1, 4, 1), EINVAL);
    EXPECT_EQ(comm.last_error().source, u"CommSetLine (EscapeCommFunction)"_s);
}

TEST_F(Comm, ASecondOpenOfAPortIsRefusedWithPortInUse)
{
    modCOMM comm;
    ASSERT_EQ(comm.CommOpen(3, pair.near_end(), kModemSettings), 0);
    EXPECT_EQ(comm.CommOpen(3, pair.near_end(), kModemSettings), -1);
    EXPECT_EQ(comm.last_error().number, -1);
    EXPECT_EQ(comm.last_error().source, u"CommOpen"_s);
    EXPECT_EQ(comm.last_error().message, u"Port in use."_s);
    // The same device under another number is held by the first: the system refuses it.
    EXPECT_NE(comm.CommOpen(4, pair.near_end(), kModemSettings), 0);
    EXPECT_EQ(comm.last_error().source, u"CommOpen (CreateFile)"_s);
    EXPECT_FALSE(comm.last_error().message.isEmpty());
    EXPECT_FALSE(comm.is_open(4));
}

TEST_F(Comm, FailuresNameTheStepAndTheSystemsReason)
{
    modCOMM comm;
    EXPECT_EQ(comm.CommOpen(1, pair.near_end() + u"-gone"_s, kModemSettings), ENOENT);
    EXPECT_EQ(comm.last_error().source, u"CommOpen (CreateFile)"_s);
    EXPECT_FALSE(comm.last_error().message.isEmpty());
    EXPECT_FALSE(comm.is_open(1));

    // A settings text that does not parse fails after the open: the port stays flagged open for the caller.
    EXPECT_EQ(comm.CommOpen(2, pair.near_end(), u"baud=1200 data=9"_s), EINVAL);
    EXPECT_EQ(comm.last_error().source, u"CommOpen (BuildCommDCB)"_s);
    EXPECT_TRUE(comm.is_open(2));
    EXPECT_EQ(comm.CommSet(2, u"speed=3"_s), EINVAL);
    EXPECT_EQ(comm.last_error().source, u"CommSet (BuildCommDCB)"_s);
    EXPECT_EQ(comm.CommClose(2), 0);

    QByteArray data;
    EXPECT_EQ(comm.CommRead(5, data, 10), -EBADF);
    EXPECT_EQ(comm.last_error().source, u"CommRead (ClearCommError)"_s);
    EXPECT_EQ(comm.CommWrite(5, "x"), -EBADF);
    EXPECT_EQ(comm.last_error().source, u"CommWrite (WriteFile)"_s);
    EXPECT_EQ(comm.CommSetLine(5, kCommDtr, 1), EBADF);
    EXPECT_EQ(comm.last_error().source, u"CommSetLine (EscapeCommFunction)"_s);
    EXPECT_EQ(comm.CommSet(5, kModemSettings), EBADF);
    EXPECT_EQ(comm.last_error().source, u"CommSet (GetCommState)"_s);
    EXPECT_EQ(comm.CommFlush(5), EBADF);
    EXPECT_EQ(comm.last_error().source, u"CommFlush (PurgeComm)"_s);
    for (const int outside : {0, 65}) {
        EXPECT_EQ(comm.CommOpen(outside, pair.near_end(), kModemSettings), EINVAL);
        EXPECT_EQ(comm.last_error().source, u"CommOpen"_s);
    }
    EXPECT_EQ(comm.CommOpen(64, u""_s, kModemSettings), ENOENT);
    EXPECT_EQ(comm.last_error().source, u"CommOpen (CreateFile)"_s);
}

} // namespace
} // namespace cvd::devices
