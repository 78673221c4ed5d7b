#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QList>
#include <QProcess>
#include <QSslCertificate>
#include <QSslKey>
#include <QSslSocket>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTemporaryDir>
#include <functional>
#include <memory>

namespace cvd::testing {

// A self-signed certificate for 127.0.0.1, made at test time with openssl. valid() is false when openssl is
// missing or failed.
class TestCertificate
{
public:
    TestCertificate()
    {
        const QString openssl = QStandardPaths::findExecutable(QStringLiteral("openssl"));
        if (openssl.isEmpty() || !m_dir.isValid()) {
            return;
        }
        QProcess process;
        process.start(openssl,
                      {QStringLiteral("req"), QStringLiteral("-x509"), QStringLiteral("-newkey"), QStringLiteral("ec"),
                       QStringLiteral("-pkeyopt"), QStringLiteral("ec_paramgen_curve:prime256v1"),
                       QStringLiteral("-nodes"), QStringLiteral("-days"), QStringLiteral("1"), QStringLiteral("-subj"),
                       QStringLiteral("/CN=127.0.0.1"), QStringLiteral("-addext"),
                       QStringLiteral("subjectAltName=IP:127.0.0.1"), QStringLiteral("-keyout"),
                       m_dir.filePath(QStringLiteral("key.pem")), QStringLiteral("-out"),
                       m_dir.filePath(QStringLiteral("cert.pem"))});
        if (!process.waitForFinished(10000) || process.exitCode() != 0) {
            return;
        }
        const QList<QSslCertificate> certificates =
            QSslCertificate::fromPath(m_dir.filePath(QStringLiteral("cert.pem")));
        QFile key_file(m_dir.filePath(QStringLiteral("key.pem")));
        if (certificates.isEmpty() || !key_file.open(QIODevice::ReadOnly)) {
            return;
        }
        certificate = certificates.first();
        key = QSslKey(key_file.readAll(), QSsl::Ec);
    }

    bool valid() const { return !certificate.isNull() && !key.isNull(); }

    QSslCertificate certificate;
    QSslKey key;

private:
    QTemporaryDir m_dir;
};

// A listener on 127.0.0.1 at a free port that plays a line-based server: it sends a greeting (at once, or
// once the session is encrypted in `implicit_tls` mode), answers each line it receives through `reply`, and
// starts TLS after the answer to a "STARTTLS" line when a certificate is given. Everything received is kept.
class LineServer : public QTcpServer
{
public:
    using Reply = std::function<QByteArray(const QByteArray& line)>;

    LineServer(QByteArray greeting, Reply reply = {}, const TestCertificate* certificate = nullptr,
               bool implicit_tls = false)
        : m_greeting(std::move(greeting)), m_reply(std::move(reply)), m_certificate(certificate),
          m_implicit_tls(implicit_tls)
    {
        listen(QHostAddress::LocalHost, 0);
    }

    quint16 port() const { return serverPort(); }
    QByteArray received;
    // Hang up right after the first reply that is not empty.
    bool hang_up_after_reply = false;

protected:
    void incomingConnection(qintptr descriptor) override
    {
        auto* socket = new QSslSocket(this);
        socket->setSocketDescriptor(descriptor);
        if (m_certificate != nullptr) {
            socket->setLocalCertificate(m_certificate->certificate);
            socket->setPrivateKey(m_certificate->key);
        }
        QObject::connect(socket, &QSslSocket::readyRead, socket, [this, socket] { take(*socket); });
        if (m_implicit_tls) {
            QObject::connect(socket, &QSslSocket::encrypted, socket, [this, socket] { socket->write(m_greeting); });
            socket->startServerEncryption();
        } else {
            socket->write(m_greeting);
        }
    }

private:
    void take(QSslSocket& socket)
    {
        const QByteArray data = socket.readAll();
        received += data;
        m_pending += data;
        qsizetype end = 0;
        while ((end = m_pending.indexOf('\n')) >= 0) {
            const QByteArray line = m_pending.left(end).trimmed();
            m_pending.remove(0, end + 1);
            const QByteArray answer = m_reply ? m_reply(line) : QByteArray();
            socket.write(answer);
            if (hang_up_after_reply && !answer.isEmpty()) {
                socket.disconnectFromHost();
                return;
            }
            if (line == "STARTTLS" && m_certificate != nullptr && !socket.isEncrypted()) {
                socket.startServerEncryption();
            }
        }
    }

    QByteArray m_greeting;
    Reply m_reply;
    const TestCertificate* m_certificate = nullptr;
    bool m_implicit_tls = false;
    QByteArray m_pending;
};

} // namespace cvd::testing
