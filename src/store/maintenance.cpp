#include "store/maintenance.h"

#include <sqlite3.h>

using namespace Qt::StringLiterals;

namespace cvd::store {

QStringList integrity_check(Database& db)
{
    Statement check = db.prepare(u"PRAGMA integrity_check"_s);
    QStringList findings;
    while (check.step()) {
        findings.append(check.text(0).value_or(QString()));
    }
    return findings;
}

QList<std::pair<QString, qint64>> table_row_counts(Database& db)
{
    static const QStringList tables{u"cv_messages"_s, u"cv_recipients"_s, u"cv_carriers"_s,    u"cv_settings"_s,
                                    u"cv_counters"_s, u"cv_groups"_s,     u"cv_oncalltable"_s, u"cv_presets"_s};
    QList<std::pair<QString, qint64>> counts;
    for (const QString& table : tables) {
        if (!db.table_exists(table)) {
            continue;
        }
        // The table name comes from the fixed list above, never from outside.
        Statement count = db.prepare(u"SELECT count(*) FROM "_s + table);
        counts.append({table, count.step() ? count.integer(0).value_or(0) : 0});
    }
    return counts;
}

namespace {

class BackupTarget
{
public:
    explicit BackupTarget(const QString& path)
    {
        const QByteArray encoded = path.toUtf8();
        const int rc = sqlite3_open_v2(encoded.constData(), &m_db,
                                       SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
        if (rc != SQLITE_OK) {
            const QString message = QString::fromUtf8(m_db ? sqlite3_errmsg(m_db) : sqlite3_errstr(rc));
            sqlite3_close_v2(m_db);
            m_db = nullptr;
            throw Error(rc, message + u" (opening "_s + path + u')');
        }
    }
    ~BackupTarget() { sqlite3_close_v2(m_db); }
    BackupTarget(const BackupTarget&) = delete;
    BackupTarget& operator=(const BackupTarget&) = delete;
    sqlite3* handle() const { return m_db; }

private:
    sqlite3* m_db = nullptr;
};

// In write-ahead mode a read transaction held over every step fixes the moment the copy shows, and writers
// of other processes go on meanwhile. Without it each of their commits starts the copy over, and a writer
// that commits more often than the copy takes keeps it from ever ending. In the older journal modes a held
// read would stop writers instead, so there the copy starts over as before.
class HeldSnapshot
{
public:
    explicit HeldSnapshot(Database& db) : m_db(db)
    {
        if (db.in_transaction() || !write_ahead(db)) {
            return;
        }
        db.exec(u"BEGIN"_s);
        m_held = true;
        Statement read = db.prepare(u"SELECT count(*) FROM sqlite_master"_s);
        read.step();
    }
    ~HeldSnapshot()
    {
        if (m_held && m_db.in_transaction()) {
            try {
                m_db.exec(u"COMMIT"_s);
            } catch (const Error&) {
                // A read transaction has nothing to lose; the connection ends it when it closes.
            }
        }
    }
    HeldSnapshot(const HeldSnapshot&) = delete;
    HeldSnapshot& operator=(const HeldSnapshot&) = delete;

private:
    static bool write_ahead(Database& db)
    {
        Statement mode = db.prepare(u"PRAGMA journal_mode"_s);
        return mode.step() && mode.text(0).value_or(QString()).compare(u"wal"_s, Qt::CaseInsensitive) == 0;
    }

    Database& m_db;
    bool m_held = false;
};

} // namespace

void backup_to(Database& db, const QString& target, const std::function<void()>& pause)
{
    constexpr int kPagesPerStep = 256;
    BackupTarget copy(target);
    const HeldSnapshot snapshot(db);
    sqlite3_backup* backup = sqlite3_backup_init(copy.handle(), "main", db.native_handle(), "main");
    if (backup == nullptr) {
        throw Error(sqlite3_extended_errcode(copy.handle()), QString::fromUtf8(sqlite3_errmsg(copy.handle())));
    }
    int rc = SQLITE_OK;
    do {
        rc = sqlite3_backup_step(backup, kPagesPerStep);
        if ((rc == SQLITE_OK || rc == SQLITE_BUSY || rc == SQLITE_LOCKED) && pause) {
            pause();
        }
    } while (rc == SQLITE_OK || rc == SQLITE_BUSY || rc == SQLITE_LOCKED);
    sqlite3_backup_finish(backup);
    if (rc != SQLITE_DONE) {
        throw Error(rc, QString::fromUtf8(sqlite3_errstr(rc)) + u" (backup to "_s + target + u')');
    }
}

qint64 purge_finished_messages(Database& db, const QDateTime& cutoff, int batch, const std::function<void()>& pause)
{
    Statement remove =
        db.prepare(u"DELETE FROM cv_messages WHERE rowid IN (SELECT rowid FROM cv_messages WHERE (cv_sent <> 0) AND "
                   "(cv_date_time_sent < ?1) LIMIT ?2)"_s);
    qint64 total = 0;
    for (;;) {
        int deleted = 0;
        {
            Transaction transaction(db);
            remove.reset();
            remove.bind(1, cutoff).bind(2, batch);
            remove.exec();
            deleted = db.changes();
            transaction.commit();
        }
        total += deleted;
        if (deleted < batch) {
            return total;
        }
        if (pause) {
            pause();
        }
    }
}

} // namespace cvd::store
