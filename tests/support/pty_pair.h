#pragma once

#include <QByteArray>
#include <QDir>
#include <QProcess>
#include <QStandardPaths>
#include <QString>
#include <QTemporaryDir>

namespace cvd::testing {

// Two pseudo-terminals joined by socat, as a null-modem cable: what is written to one end is read at the
// other. Started by the test and ended with it. ready() is false when socat is missing or did not start
// within a few seconds.
class PtyPair
{
public:
    PtyPair()
    {
        const QString socat = QStandardPaths::findExecutable(QStringLiteral("socat"));
        if (socat.isEmpty() || !m_dir.isValid()) {
            return;
        }
        m_process.setProgram(socat);
        m_process.setReadChannel(QProcess::StandardError);
        m_process.setArguments({QStringLiteral("-d"), QStringLiteral("-d"),
                                QStringLiteral("pty,raw,echo=0,link=") + near_end(),
                                QStringLiteral("pty,raw,echo=0,link=") + far_end()});
        m_process.start();
        if (!m_process.waitForStarted(5000)) {
            return;
        }
        // socat says on its error output when both ends exist and it starts to carry data.
        QByteArray said;
        while (!said.contains("starting data transfer loop") && m_process.waitForReadyRead(5000)) {
            said += m_process.readAllStandardError();
        }
        m_ready = said.contains("starting data transfer loop");
    }

    ~PtyPair()
    {
        if (m_process.state() != QProcess::NotRunning) {
            m_process.kill();
            m_process.waitForFinished(5000);
        }
    }

    PtyPair(const PtyPair&) = delete;
    PtyPair& operator=(const PtyPair&) = delete;

    bool ready() const { return m_ready; }
    QString near_end() const { return m_dir.filePath(QStringLiteral("near")); }
    QString far_end() const { return m_dir.filePath(QStringLiteral("far")); }

    static bool socat_installed() { return !QStandardPaths::findExecutable(QStringLiteral("socat")).isEmpty(); }

private:
    QTemporaryDir m_dir;
    QProcess m_process;
    bool m_ready = false;
};

} // namespace cvd::testing
