#pragma once

#include <QByteArray>
#include <QList>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QString>
#include <QTimer>
#include <functional>
#include <memory>
#include <optional>

namespace cvd::devices {

// The routes the port scan tries, in the order it tries them.
enum class ProbeKind { Smtp, SslTls, StartTls, Wctp, Snpp };

// The port each route is known by: 25, 465, 587, 80 and 444.
quint16 standard_port(ProbeKind kind);

struct Endpoint
{
    QString host;
    quint16 port = 0;

    bool operator==(const Endpoint&) const = default;
};

// Reads "host", "host:port" or "[v6 address]:port"; a bare text with several colons is an IPv6 address.
// nullopt when the text is empty or malformed (a blank inside, a port outside 1 to 65535).
std::optional<Endpoint> parse_endpoint(const QString& text, quint16 default_port);

// Where a route is tried, from the setting of its endpoint: the host, and the port the setting names where
// the route can be elsewhere (plain SMTP, WCTP, SNPP); the encrypted mail routes always keep 465 and 587.
std::optional<Endpoint> probe_endpoint(ProbeKind kind, const QString& setting);

// Why a route cannot be tried with that setting, for the operator; empty when it can.
QString probe_unavailable_reason(ProbeKind kind, const QString& setting);

// The codes that pass a reply: SMTP greetings want 220, SNPP any 2xx.
struct ReplyExpectation
{
    int low = 220;
    int high = 220;
};

enum class ReplyVerdict { Incomplete, Pass, Fail };

// Judges what a server sent so far, line by line (a line ends at a carriage return or a line feed): a line
// beginning "+ok" passes and one beginning "+er" fails, in either case; a line whose first three characters
// are a code from 200 to 999 is a continuation when its fourth is "-", and otherwise the final reply, which
// passes when its code is one expected; other lines are passed over. Incomplete until a deciding line came.
ReplyVerdict GetTCPResponse(const QByteArray& received, ReplyExpectation expected);

// The waits of one try: the connection (fifteen seconds, ten for SNPP, as the old polling allowed) and each
// answer (fifteen seconds).
struct ProbeLimits
{
    int connect_ms = 15000;
    int reply_ms = 15000;
};

ProbeLimits default_limits(ProbeKind kind);

// One route tried on the event loop: connect, then the route's conversation. The result comes once through
// `done`: passed or not, and a short reason for the operator.
class PortProbe
{
public:
    using Done = std::function<void(bool passed, const QString& reason)>;

    PortProbe(ProbeKind kind, Endpoint endpoint, ProbeLimits limits, const QSslConfiguration& tls, Done done);
    PortProbe(const PortProbe&) = delete;
    PortProbe& operator=(const PortProbe&) = delete;
    ~PortProbe();

    void start();
    // Ends the try at once; `done` is not called.
    void abort();

private:
    enum class Phase { Connecting, Greeting, Ehlo, StartTls, Handshake, HttpAnswer, Finished };

    void connected();
    void encrypted();
    void received();
    void judge_reply(ReplyExpectation expected, const std::function<void()>& next);
    void send(const QByteArray& line, Phase next);
    void expect(Phase next, int limit_ms);
    void finish(bool passed, const QString& reason);

    ProbeKind m_kind;
    Endpoint m_endpoint;
    ProbeLimits m_limits;
    Done m_done;
    QSslSocket m_socket;
    QTimer m_timer;
    QByteArray m_received;
    Phase m_phase = Phase::Connecting;
};

// The scan of several routes one after the other, each reported as it ends.
class PortScan
{
public:
    struct Request
    {
        ProbeKind kind;
        Endpoint endpoint;
        ProbeLimits limits;
    };
    struct Callbacks
    {
        std::function<void(ProbeKind kind)> probe_started;
        std::function<void(ProbeKind kind, bool passed, const QString& reason)> probe_done;
        std::function<void()> finished;
    };

    explicit PortScan(Callbacks callbacks);
    PortScan(const PortScan&) = delete;
    PortScan& operator=(const PortScan&) = delete;
    ~PortScan();

    // The TLS settings of the encrypted routes (trusted authorities); the system's by default.
    void set_tls_configuration(const QSslConfiguration& tls) { m_tls = tls; }
    void start(const QList<Request>& requests);
    void stop();
    bool running() const { return m_running; }

private:
    void next();

    Callbacks m_callbacks;
    QSslConfiguration m_tls = QSslConfiguration::defaultConfiguration();
    QList<Request> m_pending;
    std::unique_ptr<PortProbe> m_probe;
    std::unique_ptr<PortProbe> m_spent;
    bool m_running = false;
};

} // namespace cvd::devices
