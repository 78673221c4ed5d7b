#pragma once

#include "platform/platform_test_support.h"
#include "store/database.h"
#include "support/printers.h"

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <functional>
#include <sys/wait.h>
#include <unistd.h>

namespace cvd::store::testing {

// A temporary folder for one test. The variables that lead the program to its data, registry and runtime
// folders point into it, so that nothing a test does can reach a real installation.
class TempFolder
{
public:
    TempFolder()
    {
        for (const char* name : {"CVD_REGISTRY_ROOT", "CVD_RUNTIME_DIR", "CVD_COMMON_APPDATA", "XDG_RUNTIME_DIR",
                                 "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME"}) {
            m_environment.set(name, m_dir.path());
        }
    }

    QString path(const QString& name) const { return m_dir.path() + u'/' + name; }
    // Every name in the folder, so that tests see temporary and journal files left behind.
    QStringList entries() const { return platform::testing::all_entries(m_dir.path()); }

private:
    QTemporaryDir m_dir;
    platform::testing::ScopedEnvironment m_environment;
};

inline QByteArray read_bytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline void write_bytes(const QString& path, const QByteArray& data)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        file.write(data);
    }
}

// The rows of a query as text; a null shows as "<null>", so that it differs from empty text.
inline QList<QStringList> query_rows(Database& db, const QString& sql)
{
    Statement query = db.prepare(sql);
    QList<QStringList> rows;
    while (query.step()) {
        QStringList row;
        for (int column = 0; column < query.column_count(); ++column) {
            row.append(query.text(column).value_or(QStringLiteral("<null>")));
        }
        rows.append(row);
    }
    return rows;
}

inline QString query_value(Database& db, const QString& sql)
{
    const QList<QStringList> rows = query_rows(db, sql);
    return rows.isEmpty() || rows.front().isEmpty() ? QStringLiteral("<no row>") : rows.front().front();
}

// Runs work(i) in `count` forked children at once: each waits at a shared gate until all are forked, so that
// they really race. True when every child exited with status 0 (work returns the child's exit status).
inline bool run_racing_children(int count, const std::function<int(int)>& work)
{
    int gate[2];
    if (::pipe(gate) != 0) {
        return false;
    }
    QList<pid_t> children;
    for (int i = 0; i < count; ++i) {
        const pid_t child = ::fork();
        if (child == 0) {
            ::close(gate[1]);
            char go;
            ::_exit(::read(gate[0], &go, 1) == 0 ? work(i) : 2); // the parent closed its end: start
        }
        children.append(child);
    }
    ::close(gate[0]);
    ::close(gate[1]);
    bool all_done = true;
    for (const pid_t child : children) {
        int status = 0;
        all_done = child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status) &&
                   WEXITSTATUS(status) == 0 && all_done;
    }
    return all_done;
}

} // namespace cvd::store::testing
