// How long one scheduler call takes to expand a group of 10,000 members and hand every member to the engine:
// the group's row, 10,000 member rows written, and each of them taken up as a plain row in the next pass.
#include "core/app_state.h"
#include "core/clock.h"
#include "core/databases.h"
#include "core/prompter.h"
#include "platform/registry.h"
#include "queue/scheduler.h"
#include "store/database.h"
#include "store/schema.h"
#include "support/null_prompter.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int kMembers = 10000;

// The address book and the queue as they stand before the call: built once, copied for every iteration.
class GroupQueue
{
public:
    GroupQueue()
        : m_pristine(m_dir.path() + u"/pristine/"_s), m_work(m_dir.path() + u"/work/"_s),
          m_state(m_prompter, m_clock, cvd::platform::Registry(m_dir.path() + u"/registry"_s), m_dir.path())
    {
        QDir().mkpath(m_pristine);
        QDir().mkpath(m_work);
        m_state.global_db_folder = m_pristine;
        m_state.user_db_folder = m_pristine;
        cvd::store::create_global_database(cvd::global_db_path(m_state));
        cvd::open_database(m_state);
        fill(m_state.global_db);
        cvd::close_database(m_state);
        m_state.global_db_folder = m_work;
        m_state.user_db_folder = m_work;
    }

    // A fresh copy of the queue, opened as the program opens it.
    cvd::AppState& fresh_state()
    {
        cvd::close_database(m_state);
        for (const QString& suffix : {QString(), u"-wal"_s, u"-shm"_s}) {
            QFile::remove(m_work + u"cvd.mdb"_s + suffix);
        }
        QFile::copy(m_pristine + u"cvd.mdb"_s, m_work + u"cvd.mdb"_s);
        cvd::open_database(m_state);
        return m_state;
    }

    qint64 pending_rows()
    {
        cvd::store::Statement count = m_state.global_db.prepare(
            u"SELECT count(*) FROM cv_messages WHERE cv_scheduled <> 0 AND cv_sent = 0 AND cv_transaction = 42"_s);
        return count.step() ? count.integer(0).value_or(0) : 0;
    }

private:
    void fill(cvd::store::Database& db)
    {
        cvd::store::Transaction transaction(db);
        cvd::store::Statement recipient =
            db.prepare(u"INSERT INTO cv_recipients (cv_name, cv_id, cv_carrier, cv_group, cv_on_call, cv_ad_hoc) "
                       "VALUES (?1, ?2, ?3, ?4, 0, 0)"_s);
        cvd::store::Statement member = db.prepare(u"INSERT INTO cv_groups (cv_group, cv_recipient) VALUES (?1, ?2)"_s);
        recipient.bind(1, u"everyone"_s).bind(2, u"0"_s).bind(3, u"groupnet"_s).bind_bool(4, true).exec();
        for (int i = 0; i < kMembers; ++i) {
            const QString name = u"member%1"_s.arg(i, 5, 10, QChar(u'0'));
            recipient.reset();
            recipient.bind(1, name).bind(2, QString::number(5550000 + i)).bind(3, u"tapnet"_s);
            recipient.bind_bool(4, false).exec();
            member.reset();
            member.bind(1, u"everyone"_s).bind(2, name).exec();
        }
        const QDateTime requested = m_clock.now().addSecs(-60);
        cvd::store::Statement message = db.prepare(
            u"INSERT INTO cv_messages (cv_recipient, cv_pin, cv_message, cv_carrier, cv_date_time_requested, "
            "cv_from, cv_sent, cv_error, cv_scheduled, cv_repeat_interval, cv_repeat_stop, cv_retries, cv_last_try, "
            "cv_transaction) VALUES ('everyone', '', 'Evacuate building 4 now', '', ?1, 'ops', 0, 0, 0, 0, ?1, 0, "
            "?1, 42)"_s);
        message.bind(1, requested).exec();
        transaction.commit();
    }

    QTemporaryDir m_dir;
    QString m_pristine;
    QString m_work;
    cvd::testing::NullPrompter m_prompter;
    cvd::SystemClock m_clock;
    cvd::AppState m_state;
};

void BM_ScheduleGroupOfTenThousand(benchmark::State& bench)
{
    GroupQueue queue;
    for (auto _ : bench) {
        bench.PauseTiming();
        cvd::AppState& state = queue.fresh_state();
        cvd::queue::SchedulerState scheduler;
        bench.ResumeTiming();

        cvd::queue::schedule_messages(state, scheduler);

        bench.PauseTiming();
        if (queue.pending_rows() != kMembers) {
            bench.SkipWithError("the members did not all become Pending");
        }
        bench.ResumeTiming();
    }
    bench.SetItemsProcessed(bench.iterations() * kMembers);
}
BENCHMARK(BM_ScheduleGroupOfTenThousand)->Unit(benchmark::kMillisecond);

} // namespace
