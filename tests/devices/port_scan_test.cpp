// The port scan's reply rules and endpoints, and each route tried against listeners on 127.0.0.1.
#include "devices/port_scan.h"
#include "support/line_server.h"

#include <QEventLoop>
#include <QTimer>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd::devices {
namespace {

TEST(PortScanRules, RepliesPassOnTheExpectedFinalCodeOrPlusOk)
{
    constexpr ReplyExpectation smtp{220, 220};
    constexpr ReplyExpectation snpp{200, 299};
    const struct
    {
        QByteArray received;
        ReplyExpectation expected;
        ReplyVerdict verdict;
    } cases[] = {
        {"220 mail.example ESMTP\r\n", smtp, ReplyVerdict::Pass},
        {"220 mail.example ESMTP", smtp, ReplyVerdict::Incomplete},
        {"220-first\r\n220-second\r\n", smtp, ReplyVerdict::Incomplete},
        {"220-first\r\n220-second\r\n220 last\n", smtp, ReplyVerdict::Pass},
        {"554 no service here\r\n", smtp, ReplyVerdict::Fail},
        {"250 ok\r\n", smtp, ReplyVerdict::Fail},
        {"hello there\r\n220 late\r\n", smtp, ReplyVerdict::Pass},
        {"199 too low\r\n", smtp, ReplyVerdict::Incomplete},
        {"220\r\n", smtp, ReplyVerdict::Pass},
        {"+OK ready\r\n", snpp, ReplyVerdict::Pass},
        {"+ok ready\r\n", smtp, ReplyVerdict::Pass},
        {"+ERR busy\r\n", snpp, ReplyVerdict::Fail},
        {"+er\n", snpp, ReplyVerdict::Fail},
        {"250 SNPP ready\r\n", snpp, ReplyVerdict::Pass},
        {"421 go away\r\n", snpp, ReplyVerdict::Fail},
        {"", snpp, ReplyVerdict::Incomplete},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(GetTCPResponse(c.received, c.expected), c.verdict) << c.received.constData();
    }
}

TEST(PortScanRules, EndpointsTakeAHostAndWhereTheRouteAllowsAPort)
{
    const struct
    {
        ProbeKind kind;
        QString setting;
        std::optional<Endpoint> endpoint;
    } cases[] = {
        {ProbeKind::Smtp, u"mail.example"_s, Endpoint{u"mail.example"_s, 25}},
        {ProbeKind::Smtp, u" mail.example:2525 "_s, Endpoint{u"mail.example"_s, 2525}},
        {ProbeKind::SslTls, u"mail.example:2525"_s, Endpoint{u"mail.example"_s, 465}},
        {ProbeKind::StartTls, u"mail.example"_s, Endpoint{u"mail.example"_s, 587}},
        {ProbeKind::Wctp, u"wctp.example:8080"_s, Endpoint{u"wctp.example"_s, 8080}},
        {ProbeKind::Wctp, u"wctp.example"_s, Endpoint{u"wctp.example"_s, 80}},
        {ProbeKind::Snpp, u"10.0.0.9"_s, Endpoint{u"10.0.0.9"_s, 444}},
        {ProbeKind::Snpp, u"[::1]:4444"_s, Endpoint{u"::1"_s, 4444}},
        {ProbeKind::Snpp, u"fe80::1"_s, Endpoint{u"fe80::1"_s, 444}},
        {ProbeKind::Smtp, u""_s, std::nullopt},
        {ProbeKind::Smtp, u"mail example"_s, std::nullopt},
        {ProbeKind::Smtp, u"mail.example:"_s, std::nullopt},
        {ProbeKind::Smtp, u"mail.example:0"_s, std::nullopt},
        {ProbeKind::Smtp, u"mail.example:70000"_s, std::nullopt},
        {ProbeKind::Smtp, u":25"_s, std::nullopt},
        {ProbeKind::Snpp, u"[::1"_s, std::nullopt},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(probe_endpoint(c.kind, c.setting), c.endpoint) << c.setting.toStdString();
        EXPECT_EQ(probe_unavailable_reason(c.kind, c.setting).isEmpty(), c.endpoint.has_value());
    }
    EXPECT_EQ(probe_unavailable_reason(ProbeKind::Wctp, u""_s),
              u"No WCTP test endpoint is set (scan_wctp_host in the connection setup)."_s);
}

class PortScanning : public ::testing::Test
{
protected:
    struct Outcome
    {
        bool passed = false;
        QString reason;
    };

    // Tries one route against 127.0.0.1 at `port` and waits, boundedly, for its result.
    Outcome probe(ProbeKind kind, quint16 port, ProbeLimits limits = {2000, 2000},
                  const QSslConfiguration* tls = nullptr)
    {
        Outcome outcome;
        bool finished = false;
        PortScan scan({{},
                       [&outcome](ProbeKind, bool passed, const QString& reason) {
                           outcome = {passed, reason};
                       },
                       [&finished] { finished = true; }});
        if (tls != nullptr) {
            scan.set_tls_configuration(*tls);
        }
        scan.start({{kind, Endpoint{u"127.0.0.1"_s, port}, limits}});
        QEventLoop loop;
        QTimer poll;
        QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
            if (finished) {
                loop.quit();
            }
        });
        poll.start(5);
        QTimer::singleShot(5000, &loop, &QEventLoop::quit);
        loop.exec();
        EXPECT_TRUE(finished);
        return outcome;
    }

    QSslConfiguration trusting(const testing::TestCertificate& certificate)
    {
        QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
        tls.setCaCertificates({certificate.certificate});
        return tls;
    }
};

TEST_F(PortScanning, GreetingsPassOrFailByTheirCode)
{
    const struct
    {
        ProbeKind kind;
        QByteArray greeting;
        bool passed;
        QString reason;
    } cases[] = {
        {ProbeKind::Smtp, "220 mail ready\r\n", true, u"Answered: 220 mail ready"_s},
        {ProbeKind::Smtp, "220-mail ready\r\n220-more\r\n220 done\r\n", true, {}},
        {ProbeKind::Smtp, "554 no service\r\n", false, u"Refused: 554 no service"_s},
        {ProbeKind::Snpp, "+OK SNPP ready\r\n", true, {}},
        {ProbeKind::Snpp, "+ERR too busy\r\n", false, u"Refused: +ERR too busy"_s},
        {ProbeKind::Snpp, "220 SNPP gateway ready\r\n", true, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.greeting.constData());
        testing::LineServer server(c.greeting);
        ASSERT_TRUE(server.isListening());
        const Outcome outcome = probe(c.kind, server.port());
        EXPECT_EQ(outcome.passed, c.passed) << outcome.reason.toStdString();
        if (!c.reason.isEmpty()) {
            EXPECT_EQ(outcome.reason, c.reason);
        }
    }
}

TEST_F(PortScanning, AClosedPortAndASilentServerFail)
{
    quint16 closed_port = 0;
    {
        testing::LineServer gone("");
        closed_port = gone.port();
    }
    const Outcome refused = probe(ProbeKind::Smtp, closed_port);
    EXPECT_FALSE(refused.passed);
    EXPECT_FALSE(refused.reason.isEmpty());

    testing::LineServer silent("");
    const Outcome mute = probe(ProbeKind::Snpp, silent.port(), {2000, 150});
    EXPECT_FALSE(mute.passed);
    EXPECT_EQ(mute.reason, u"No answer within 0.15 seconds."_s);
}

TEST_F(PortScanning, WctpPostsWithItsHeadersAndAnyAnswerPasses)
{
    testing::LineServer server("", [](const QByteArray& line) {
        return line.startsWith("POST ") ? QByteArray("HTTP/1.1 404 Not Found\r\n\r\n") : QByteArray();
    });
    const Outcome outcome = probe(ProbeKind::Wctp, server.port());
    EXPECT_TRUE(outcome.passed) << outcome.reason.toStdString();
    EXPECT_EQ(outcome.reason, u"Answered: HTTP/1.1 404 Not Found"_s);
    const QByteArray request_head = "POST / HTTP/1.1\r\nHost: 127.0.0.1:" + QByteArray::number(server.port()) + "\r\n";
    EXPECT_TRUE(server.received.startsWith(request_head));
    testing::LineServer curt("", [](const QByteArray& line) {
        return line.startsWith("POST ") ? QByteArray("HTTP/1.0 400 Bad") : QByteArray();
    });
    curt.hang_up_after_reply = true;
    const Outcome cut_short = probe(ProbeKind::Wctp, curt.port());
    EXPECT_TRUE(cut_short.passed) << cut_short.reason.toStdString();
    EXPECT_EQ(cut_short.reason, u"Answered: HTTP/1.0 400 Bad"_s);

    for (const char* header :
         {"\r\nContent-Type: text/xml\r\n", "\r\nContent-Length: 0\r\n", "\r\nUser-Agent: CorvaneDesk/5.0.0\r\n"}) {
        EXPECT_TRUE(server.received.contains(header)) << header;
    }
}

TEST_F(PortScanning, EncryptedRoutesNeedTheHandshakeAndTheGreeting)
{
    testing::TestCertificate certificate;
    if (!certificate.valid()) {
        GTEST_SKIP() << "openssl could not make a certificate";
    }
    const QSslConfiguration tls = trusting(certificate);
    const auto smtp = [](const QByteArray& line) {
        if (line.startsWith("EHLO ")) {
            return QByteArray("250-mail.example\r\n250-STARTTLS\r\n250 SIZE 1000\r\n");
        }
        return line == "STARTTLS" ? QByteArray("220 go ahead\r\n") : QByteArray();
    };

    testing::LineServer implicit("220 secure mail\r\n", {}, &certificate, true);
    const Outcome direct = probe(ProbeKind::SslTls, implicit.port(), {2000, 2000}, &tls);
    EXPECT_TRUE(direct.passed) << direct.reason.toStdString();
    // The same listener with the system's authorities only: the self-signed certificate is not trusted.
    const Outcome untrusted = probe(ProbeKind::SslTls, implicit.port());
    EXPECT_FALSE(untrusted.passed);

    testing::LineServer upgrading("220 mail ready\r\n", smtp, &certificate);
    const Outcome upgraded = probe(ProbeKind::StartTls, upgrading.port(), {2000, 2000}, &tls);
    EXPECT_TRUE(upgraded.passed) << upgraded.reason.toStdString();
    EXPECT_TRUE(upgrading.received.startsWith("EHLO "));
    EXPECT_TRUE(upgrading.received.contains("\r\nSTARTTLS\r\n"));

    testing::LineServer refusing("220 mail ready\r\n", [](const QByteArray& line) {
        return line.startsWith("EHLO ") ? QByteArray("250 mail.example\r\n") : QByteArray("454 TLS not available\r\n");
    });
    const Outcome refused = probe(ProbeKind::StartTls, refusing.port(), {2000, 2000}, &tls);
    EXPECT_FALSE(refused.passed);
    EXPECT_EQ(refused.reason, u"Refused: 454 TLS not available"_s);
}

} // namespace
} // namespace cvd::devices
