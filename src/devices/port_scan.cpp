#include "devices/port_scan.h"

#include <QHostInfo>
#include <QNetworkProxy>

using namespace Qt::StringLiterals;

namespace cvd::devices {

namespace {

constexpr ReplyExpectation kGreeting{220, 220};
constexpr ReplyExpectation kEhloDone{250, 250};
constexpr ReplyExpectation kSnppReady{200, 299};

bool starts_with_code(const QByteArray& line, int& code)
{
    if (line.size() < 3) {
        return false;
    }
    bool ok = false;
    code = line.left(3).toInt(&ok);
    return ok && line.at(0) >= '0' && line.at(0) <= '9' && code >= 200 && code <= 999;
}

QString kind_name(ProbeKind kind)
{
    switch (kind) {
    case ProbeKind::Smtp:
    case ProbeKind::SslTls:
    case ProbeKind::StartTls:
        return u"SMTP"_s;
    case ProbeKind::Wctp:
        return u"WCTP"_s;
    case ProbeKind::Snpp:
        return u"SNPP"_s;
    }
    return {};
}

QString setting_name(ProbeKind kind)
{
    switch (kind) {
    case ProbeKind::Wctp:
        return u"scan_wctp_host"_s;
    case ProbeKind::Snpp:
        return u"scan_snpp_host"_s;
    default:
        return u"scan_smtp_host"_s;
    }
}

// The Host header: an IPv6 address in brackets, and the port unless it is HTTP's own.
QByteArray http_host(const Endpoint& endpoint)
{
    QByteArray host = endpoint.host.toUtf8();
    if (host.contains(':')) {
        host = '[' + host + ']';
    }
    if (endpoint.port != 80) {
        host += ':' + QByteArray::number(endpoint.port);
    }
    return host;
}

} // namespace

quint16 standard_port(ProbeKind kind)
{
    switch (kind) {
    case ProbeKind::Smtp:
        return 25;
    case ProbeKind::SslTls:
        return 465;
    case ProbeKind::StartTls:
        return 587;
    case ProbeKind::Wctp:
        return 80;
    case ProbeKind::Snpp:
        return 444;
    }
    return 0;
}

std::optional<Endpoint> parse_endpoint(const QString& text, quint16 default_port)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty() || trimmed.contains(u' ') || trimmed.contains(u'\t')) {
        return std::nullopt;
    }
    QString host = trimmed;
    QString port_text;
    if (trimmed.startsWith(u'[')) {
        const qsizetype close = trimmed.indexOf(u']');
        if (close < 0) {
            return std::nullopt;
        }
        host = trimmed.mid(1, close - 1);
        const QString rest = trimmed.mid(close + 1);
        if (!rest.isEmpty() && !rest.startsWith(u':')) {
            return std::nullopt;
        }
        port_text = rest.mid(1);
        if (rest.startsWith(u':') && port_text.isEmpty()) {
            return std::nullopt;
        }
    } else if (trimmed.count(u':') == 1) {
        host = trimmed.section(u':', 0, 0);
        port_text = trimmed.section(u':', 1);
        if (port_text.isEmpty()) {
            return std::nullopt;
        }
    }
    if (host.isEmpty()) {
        return std::nullopt;
    }
    quint16 port = default_port;
    if (!port_text.isEmpty()) {
        bool ok = false;
        const int value = port_text.toInt(&ok);
        if (!ok || value < 1 || value > 65535) {
            return std::nullopt;
        }
        port = static_cast<quint16>(value);
    }
    return Endpoint{host, port};
}

std::optional<Endpoint> probe_endpoint(ProbeKind kind, const QString& setting)
{
    std::optional<Endpoint> endpoint = parse_endpoint(setting, standard_port(kind));
    if (endpoint && (kind == ProbeKind::SslTls || kind == ProbeKind::StartTls)) {
        endpoint->port = standard_port(kind);
    }
    return endpoint;
}

QString probe_unavailable_reason(ProbeKind kind, const QString& setting)
{
    if (setting.trimmed().isEmpty()) {
        return u"No %1 test endpoint is set (%2 in the connection setup)."_s.arg(kind_name(kind), setting_name(kind));
    }
    if (!probe_endpoint(kind, setting)) {
        return u"The %1 test endpoint \"%2\" is not a host or host:port (%3 in the connection setup)."_s.arg(
            kind_name(kind), setting, setting_name(kind));
    }
    return {};
}

ReplyVerdict GetTCPResponse(const QByteArray& received, ReplyExpectation expected)
{
    qsizetype start = 0;
    while (start < received.size()) {
        qsizetype end = start;
        while (end < received.size() && received.at(end) != '\r' && received.at(end) != '\n') {
            ++end;
        }
        if (end == received.size()) {
            break; // the last line is not complete yet
        }
        const QByteArray line = received.mid(start, end - start);
        start = end + 1;
        const QByteArray lower = line.left(3).toLower();
        if (lower == "+ok") {
            return ReplyVerdict::Pass;
        }
        if (lower == "+er") {
            return ReplyVerdict::Fail;
        }
        int code = 0;
        if (!starts_with_code(line, code) || (line.size() > 3 && line.at(3) == '-')) {
            continue;
        }
        return code >= expected.low && code <= expected.high ? ReplyVerdict::Pass : ReplyVerdict::Fail;
    }
    return ReplyVerdict::Incomplete;
}

ProbeLimits default_limits(ProbeKind kind)
{
    ProbeLimits limits;
    if (kind == ProbeKind::Snpp) {
        limits.connect_ms = 10000;
    }
    return limits;
}

PortProbe::PortProbe(ProbeKind kind, Endpoint endpoint, ProbeLimits limits, const QSslConfiguration& tls, Done done)
    : m_kind(kind), m_endpoint(std::move(endpoint)), m_limits(limits), m_done(std::move(done))
{
    m_socket.setSslConfiguration(tls);
    m_socket.setProxy(QNetworkProxy::NoProxy);
    m_timer.setSingleShot(true);
    QObject::connect(&m_timer, &QTimer::timeout, [this] {
        const bool connecting = m_phase == Phase::Connecting;
        const double seconds = (connecting ? m_limits.connect_ms : m_limits.reply_ms) / 1000.0;
        finish(false, (connecting ? u"No connection within %1 seconds."_s : u"No answer within %1 seconds."_s)
                          .arg(QString::number(seconds)));
    });
    QObject::connect(&m_socket, &QSslSocket::connected, [this] { connected(); });
    QObject::connect(&m_socket, &QSslSocket::encrypted, [this] { encrypted(); });
    QObject::connect(&m_socket, &QSslSocket::readyRead, [this] { received(); });
    QObject::connect(&m_socket, &QSslSocket::errorOccurred, [this](QAbstractSocket::SocketError) {
        // A web server may answer without a line end and hang up at once: any answer counts.
        if (m_phase == Phase::HttpAnswer) {
            m_received += m_socket.readAll();
            if (!m_received.isEmpty()) {
                finish(true, u"Answered: "_s + QString::fromUtf8(m_received.left(80)).trimmed());
                return;
            }
        }
        finish(false, m_socket.errorString());
    });
}

PortProbe::~PortProbe()
{
    abort();
}

void PortProbe::start()
{
    m_phase = Phase::Connecting;
    m_timer.start(m_limits.connect_ms);
    if (m_kind == ProbeKind::SslTls) {
        m_socket.connectToHostEncrypted(m_endpoint.host, m_endpoint.port);
    } else {
        m_socket.connectToHost(m_endpoint.host, m_endpoint.port);
    }
}

void PortProbe::abort()
{
    m_phase = Phase::Finished;
    m_timer.stop();
    m_socket.abort();
}

void PortProbe::connected()
{
    switch (m_kind) {
    case ProbeKind::SslTls:
        // The greeting comes once the session is encrypted.
        expect(Phase::Handshake, m_limits.reply_ms);
        break;
    case ProbeKind::Wctp:
        send("POST / HTTP/1.1\r\nHost: " + http_host(m_endpoint) +
                 "\r\nContent-Type: text/xml\r\nContent-Length: 0\r\nUser-Agent: CorvaneDesk/5.0.0\r\n"
                 "Connection: close\r\n\r\n",
             Phase::HttpAnswer);
        break;
    default:
        expect(Phase::Greeting, m_limits.reply_ms);
        break;
    }
}

void PortProbe::encrypted()
{
    if (m_phase != Phase::Handshake) {
        return;
    }
    if (m_kind == ProbeKind::StartTls) {
        finish(true, u"Encrypted session opened after STARTTLS."_s);
        return;
    }
    expect(Phase::Greeting, m_limits.reply_ms);
    received(); // a greeting may have come with the end of the handshake
}

void PortProbe::received()
{
    if (m_phase == Phase::Finished || m_phase == Phase::Connecting || m_phase == Phase::Handshake) {
        return;
    }
    m_received += m_socket.readAll();
    switch (m_phase) {
    case Phase::Greeting:
        if (m_kind == ProbeKind::StartTls) {
            judge_reply(kGreeting,
                        [this] { send("EHLO " + QHostInfo::localHostName().toUtf8() + "\r\n", Phase::Ehlo); });
        } else {
            judge_reply(m_kind == ProbeKind::Snpp ? kSnppReady : kGreeting,
                        [this] { finish(true, u"Answered: "_s + QString::fromUtf8(m_received).trimmed()); });
        }
        break;
    case Phase::Ehlo:
        judge_reply(kEhloDone, [this] { send("STARTTLS\r\n", Phase::StartTls); });
        break;
    case Phase::StartTls:
        judge_reply(kGreeting, [this] {
            expect(Phase::Handshake, m_limits.reply_ms);
            m_socket.startClientEncryption();
        });
        break;
    case Phase::HttpAnswer:
        if (m_received.contains('\n') || m_received.contains('\r')) {
            finish(true, u"Answered: "_s + QString::fromUtf8(m_received.left(m_received.indexOf('\n'))).trimmed());
        }
        break;
    default:
        break;
    }
}

void PortProbe::judge_reply(ReplyExpectation expected, const std::function<void()>& next)
{
    const ReplyVerdict verdict = GetTCPResponse(m_received, expected);
    if (verdict == ReplyVerdict::Pass) {
        next();
    } else if (verdict == ReplyVerdict::Fail) {
        const QByteArray last = m_received.trimmed();
        finish(false, u"Refused: "_s + QString::fromUtf8(last.mid(last.lastIndexOf('\n') + 1)).trimmed());
    }
}

void PortProbe::send(const QByteArray& line, Phase next)
{
    expect(next, m_limits.reply_ms);
    m_socket.write(line);
}

void PortProbe::expect(Phase next, int limit_ms)
{
    m_phase = next;
    m_received.clear();
    m_timer.start(limit_ms);
}

void PortProbe::finish(bool passed, const QString& reason)
{
    if (m_phase == Phase::Finished) {
        return;
    }
    m_phase = Phase::Finished;
    m_timer.stop();
    m_socket.abort();
    if (m_done) {
        m_done(passed, reason);
    }
}

PortScan::PortScan(Callbacks callbacks) : m_callbacks(std::move(callbacks)) {}

PortScan::~PortScan() = default;

void PortScan::start(const QList<Request>& requests)
{
    stop();
    m_pending = requests;
    m_running = true;
    next();
}

void PortScan::stop()
{
    m_running = false;
    m_pending.clear();
    if (m_probe != nullptr) {
        m_probe->abort();
    }
}

void PortScan::next()
{
    // The probe that just reported is still on the stack; it is dropped at the next turn.
    m_spent = std::move(m_probe);
    if (!m_running) {
        return;
    }
    if (m_pending.isEmpty()) {
        m_running = false;
        if (m_callbacks.finished) {
            m_callbacks.finished();
        }
        return;
    }
    const Request request = m_pending.takeFirst();
    m_probe = std::make_unique<PortProbe>(request.kind, request.endpoint, request.limits, m_tls,
                                          [this, kind = request.kind](bool passed, const QString& reason) {
                                              if (m_callbacks.probe_done) {
                                                  m_callbacks.probe_done(kind, passed, reason);
                                              }
                                              next();
                                          });
    if (m_callbacks.probe_started) {
        m_callbacks.probe_started(request.kind);
    }
    m_probe->start();
}

} // namespace cvd::devices
