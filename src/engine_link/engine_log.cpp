#include "engine_link/engine_log.h"

#include <QDir>
#include <QFile>
#include <cerrno>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace cvd::engine_link {

namespace {

// One line without its line end; the read position is then past the LF.
QByteArray read_line(QFile& file)
{
    QByteArray line = file.readLine();
    if (line.endsWith('\n')) {
        line.chop(1);
    }
    if (line.endsWith('\r')) {
        line.chop(1);
    }
    return line;
}

QStringList read_lines_from(QFile& file)
{
    QStringList lines;
    while (!file.atEnd()) {
        lines.append(QString::fromUtf8(read_line(file)));
    }
    return lines;
}

} // namespace

QString engine_log_path(const QString& user_db_folder)
{
    return QDir(user_db_folder).filePath(u"cvd.log"_s);
}

QStringList read_engine_log_tail(const QString& path, qint64 limit)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    // The engine may still be appending: what counts is the length found on opening.
    qint64 remaining = file.size();
    while (remaining > limit && !file.atEnd()) {
        remaining -= read_line(file).size();
    }
    return read_lines_from(file);
}

QStringList read_engine_log_lines(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    return read_lines_from(file);
}

int purge_engine_log(const QString& path)
{
    if (!QFile::exists(path)) {
        return 0;
    }
    errno = 0;
    if (std::remove(QFile::encodeName(path).constData()) == 0) {
        return 0;
    }
    return errno != 0 ? errno : EIO;
}

} // namespace cvd::engine_link
