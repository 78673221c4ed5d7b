// The modem scan against modem doubles on the far ends of socat pseudo-terminal pairs.
#include "devices/modem_scan.h"
#include "support/modem_double.h"
#include "support/pty_pair.h"

#include <QEventLoop>
#include <QTimer>
#include <gtest/gtest.h>
#include <map>

using namespace Qt::StringLiterals;

namespace cvd::devices {
namespace {

TEST(ModemAnswers, ParityBitsAreClearedAndTriggersFoundInAnyCase)
{
    EXPECT_EQ(StripParity(QByteArray("\x8D\x8AOK\xCF\xCB\r\n")), QByteArray("\r\nOKOK\r\n"));
    EXPECT_EQ(StripParity(QByteArray("AT\x7F")), QByteArray("AT\x7F"));

    WaitTriggers triggers;
    EXPECT_TRUE(triggers.SetWaitTrigger(u"OK"_s));
    EXPECT_TRUE(triggers.SetWaitTrigger(u"0"_s));
    const std::pair<QByteArray, int> cases[] = {{"AT\r\r\nOk\r\n", 1}, {"\r\n0\r", 2}, {"AT\r", 0}, {"", 0},
                                                {"ERROR", 0},          {"0 ok", 1}};
    for (const auto& [received, expected] : cases) {
        EXPECT_EQ(triggers.find(received), expected) << received.constData();
    }
    for (int more = 3; more <= WaitTriggers::kMaximum; ++more) {
        EXPECT_TRUE(triggers.SetWaitTrigger(u"T%1"_s.arg(more)));
    }
    EXPECT_FALSE(triggers.SetWaitTrigger(u"twelfth"_s));
    EXPECT_EQ(triggers.count(), WaitTriggers::kMaximum);
    EXPECT_EQ(triggers.find("xx t11 yy"), 11);
    triggers.ClearWaitTriggers();
    EXPECT_EQ(triggers.find("OK"), 0);
}

class ModemScanning : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!testing::PtyPair::socat_installed()) {
            GTEST_SKIP() << "socat is not installed";
        }
        ASSERT_TRUE(answering.ready() && silent.ready()) << "socat did not make the pseudo-terminal pairs";
    }

    // Runs the event loop until the scan ends, at most a few seconds.
    static void run_until(const bool& done)
    {
        QEventLoop loop;
        QTimer guard;
        guard.setSingleShot(true);
        QObject::connect(&guard, &QTimer::timeout, &loop, &QEventLoop::quit);
        guard.start(5000);
        QTimer poll;
        QObject::connect(&poll, &QTimer::timeout, &loop, [&loop, &done] {
            if (done) {
                loop.quit();
            }
        });
        poll.start(10);
        loop.exec();
    }

    testing::PtyPair answering;
    testing::PtyPair silent;
};

TEST_F(ModemScanning, FindsTheModemThatAnswersAndPassesTheRestAfterTheLimit)
{
    testing::ModemDouble modem(answering.far_end(), testing::ModemDouble::Answer::Ok);
    testing::ModemDouble mute(silent.far_end(), testing::ModemDouble::Answer::Silent);
    ASSERT_TRUE(modem.is_open() && mute.is_open());
    std::map<int, std::pair<QString, bool>> tried;
    bool done = false;
    ModemScan scan({[&tried](int port, const QString& device, bool found) {
                        tried[port] = {device, found};
                    },
                    [&done] { done = true; }});
    const QString missing = answering.near_end() + u"-none"_s;
    scan.start({u""_s, silent.near_end(), answering.near_end(), missing}, 300);
    EXPECT_TRUE(scan.running());
    run_until(done);
    ASSERT_TRUE(done);
    EXPECT_FALSE(scan.running());
    const std::map<int, std::pair<QString, bool>> expected = {
        {1, {u""_s, false}}, {2, {silent.near_end(), false}}, {3, {answering.near_end(), true}}, {4, {missing, false}}};
    EXPECT_EQ(tried, expected);
    EXPECT_EQ(modem.heard(), QByteArray("AT\r"));
    EXPECT_EQ(mute.heard(), QByteArray("AT\r"));
    // The tail read took the answer's line end too, with the parity bits gone.
    EXPECT_EQ(scan.received(), QByteArray("\r\nOK\r\n"));
}

TEST_F(ModemScanning, StopEndsTheWaitAndFreesThePort)
{
    testing::ModemDouble mute(silent.far_end(), testing::ModemDouble::Answer::Silent);
    int reports = 0;
    bool finished = false;
    ModemScan scan({[&reports](int, const QString&, bool) { ++reports; }, [&finished] { finished = true; }});
    scan.start({silent.near_end()}, 3000);
    bool heard = false;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] { heard = !mute.heard().isEmpty(); });
    poll.start(10);
    run_until(heard);
    scan.stop();
    EXPECT_FALSE(scan.running());
    modCOMM comm;
    EXPECT_EQ(comm.CommOpen(1, silent.near_end(), ModemScan::kSettings), 0) << comm.last_error().message.toStdString();
    bool never = false;
    QTimer::singleShot(150, [&never] { never = true; });
    run_until(never);
    EXPECT_EQ(reports, 0);
    EXPECT_FALSE(finished);
}

} // namespace
} // namespace cvd::devices
