#pragma once

#include "store/database.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <functional>

namespace cvd::store {

// What SQLite's own integrity check says: {"ok"} for a sound file.
QStringList integrity_check(Database& db);

// The number of rows of each table, in the order of the schema (tables a file lacks are left out).
QList<std::pair<QString, qint64>> table_row_counts(Database& db);

// A consistent copy of the open database into `target` (replaced when it exists) while other connections
// and processes go on reading and writing: the copy is taken a few pages at a time and always shows one
// committed moment. In write-ahead mode it reads one snapshot throughout; otherwise it starts over when
// another writer changes the file meanwhile.
// `pause` runs between steps so that writers get their turn. Throws Error.
void backup_to(Database& db, const QString& target, const std::function<void()>& pause = {});

// Deletes finished rows (cv_sent true) whose cv_date_time_sent is before `cutoff`, `batch` rows per
// transaction so that other writers never wait long; unfinished rows are never touched. `pause` runs
// between batches. Returns how many rows were deleted. Throws Error.
qint64 purge_finished_messages(Database& db, const QDateTime& cutoff, int batch = 2000,
                               const std::function<void()>& pause = {});

} // namespace cvd::store
