// The last conversion over a long history: a global database of version 500 with 1,000,000 messages is
// brought to 501 in one transaction, as the first start of a new program does once.
#include "store/database.h"
#include "store/upgrades.h"
#include "support/legacy_databases.h"

#include <QFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {

using cvd::store::Database;
using cvd::store::Statement;
using cvd::store::Transaction;

constexpr int kHistoryRows = 1000000;

// A file of version 500 with a long history of finished messages.
void make_version500(const QString& path)
{
    cvd::testing::make_version500_database(path);
    Database db = Database::open(path);
    Transaction transaction(db);
    Statement insert = db.prepare(u"INSERT INTO cv_messages (cv_recipient, cv_message, cv_carrier, "
                                  "cv_date_time_sent, cv_sent, cv_error, cv_scheduled, cv_transaction) "
                                  "VALUES ('bob', ?1, 'tapnet', '2025-06-01 10:00:00', -1, 0, -1, ?2)"_s);
    for (int row = 1; row <= kHistoryRows; ++row) {
        insert.reset();
        insert.bind(1, u"page number %1 of the history"_s.arg(row)).bind(2, row);
        insert.exec();
    }
    transaction.commit();
    db.enable_wal();
}

void BM_Convert500To501OverAMillionRows(benchmark::State& state)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(u"cvd.mdb"_s);
    make_version500(path);
    for (auto _ : state) {
        Database db = Database::open(path);
        cvd::store::convert500to501(db);
    }
    state.counters["rows"] = kHistoryRows;
}
BENCHMARK(BM_Convert500To501OverAMillionRows)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace
