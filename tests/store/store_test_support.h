#pragma once

#include "store/database.h"
#include "support/printers.h"

#include <QByteArray>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QList>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <cstdlib>
#include <optional>
#include <ostream>
#include <utility>

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
            const char* old = std::getenv(name);
            m_saved.append({QByteArray(name), old ? std::optional<QByteArray>(QByteArray(old)) : std::nullopt});
            ::setenv(name, QFile::encodeName(m_dir.path()).constData(), 1);
        }
    }
    ~TempFolder()
    {
        for (const auto& [name, value] : m_saved) {
            if (value) {
                ::setenv(name.constData(), value->constData(), 1);
            } else {
                ::unsetenv(name.constData());
            }
        }
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    QString path(const QString& name) const { return m_dir.path() + u'/' + name; }
    // Every name in the folder, so that tests see temporary and journal files left behind.
    QStringList entries() const
    {
        return QDir(m_dir.path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    }

private:
    QTemporaryDir m_dir;
    QList<std::pair<QByteArray, std::optional<QByteArray>>> m_saved;
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

} // namespace cvd::store::testing
