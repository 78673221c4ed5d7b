#include "store/unique.h"

#include <optional>

using namespace Qt::StringLiterals;

namespace cvd::store {

namespace {

// Read, add and write in one statement: SQLite takes the write lock before it reads, so two processes
// drawing at once are served one after the other. A null counter counts as 0; past the limit comes 1.
// rowid rather than cv_id, so that a counters table whose cv_id holds nulls still has a first row.
std::optional<qint64> draw(Database& db)
{
    Statement update =
        db.prepare(u"UPDATE cv_counters SET cv_unique = "
                   u"CASE WHEN coalesce(cv_unique, 0) + 1 > ?1 THEN 1 ELSE coalesce(cv_unique, 0) + 1 END "
                   u"WHERE rowid = (SELECT min(rowid) FROM cv_counters) RETURNING cv_unique"_s);
    update.bind(1, kUniqueLimit);
    if (!update.step()) {
        return std::nullopt;
    }
    const std::optional<qint64> value = update.integer(0);
    while (update.step()) {
    }
    return value.value_or(1);
}

} // namespace

qint32 get_unique(Database& db)
{
    if (const std::optional<qint64> value = draw(db)) {
        return static_cast<qint32>(*value);
    }
    // No row yet. Under the write lock, look again before adding it, so that two processes that both found
    // the table empty do not both add a row. A caller's open transaction already holds that lock.
    std::optional<Transaction> transaction;
    if (!db.in_transaction()) {
        transaction.emplace(db);
    }
    std::optional<qint64> value = draw(db);
    if (!value) {
        db.exec(u"INSERT INTO cv_counters (cv_unique) VALUES (1)"_s);
        value = 1;
    }
    if (transaction) {
        transaction->commit();
    }
    return static_cast<qint32>(*value);
}

} // namespace cvd::store
