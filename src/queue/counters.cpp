#include "queue/counters.h"

#include "core/app_state.h"
#include "core/clock.h"
#include "core/console_view.h"
#include "core/error_path.h"
#include "core/prompter.h"
#include "core/setting_keys.h"

using namespace Qt::StringLiterals;

namespace cvd::queue {

namespace {

const QString kCountersProcedure = u"Procedure: send_form update_counters"_s;

// The flag conditions stand as literals, so that the planner can use the partial index on waiting rows;
// only the transaction bound is a parameter.
QString count_sql(MessageCount count)
{
    const QString head = u"SELECT count(*) FROM cv_messages WHERE "_s;
    const QString tail = u" AND (cv_recipient <> 'cvdscreen')"_s;
    switch (count) {
    case MessageCount::Waiting:
        return head + u"(cv_scheduled = 0) AND (cv_sent = 0) AND (cv_error = 0)"_s + tail;
    case MessageCount::Pending:
        return head + u"(cv_scheduled <> 0) AND (cv_sent = 0) AND (cv_error = 0) AND (cv_transaction > ?1)"_s + tail;
    case MessageCount::Sent:
        return head + u"(cv_sent <> 0) AND (cv_error = 0) AND (cv_transaction > ?1)"_s + tail;
    case MessageCount::Failed:
        return head + u"(cv_error <> 0) AND (cv_transaction > ?1)"_s + tail;
    }
    return {};
}

qint64 count_rows(AppState& state, MessageCount count)
{
    return with_retry(state, kCountersProcedure,
                      [&] { return count_messages(state.global_db, count, state.first_transaction); });
}

QString panel_text(const QString& word, qint64 count)
{
    return word + u' ' + QString::number(count);
}

} // namespace

qint64 count_messages(store::Database& db, MessageCount count, qint64 above_transaction)
{
    store::Statement select = db.prepare(count_sql(count));
    if (count != MessageCount::Waiting) {
        select.bind(1, above_transaction);
    }
    return select.step() ? select.integer(0).value_or(0) : 0;
}

void update_counters(AppState& state, ConsoleView& view, CounterState& counters)
{
    state.clear_error_counters();
    const qint64 waiting = count_rows(state, MessageCount::Waiting);
    view.set_counter_panel(kSchedPanel, panel_text(u"Sched:"_s, waiting));
    yield_to_event_loop();
    const qint64 pending = count_rows(state, MessageCount::Pending);
    view.set_counter_panel(kPendPanel, panel_text(u"Pend:"_s, pending));
    yield_to_event_loop();
    const qint64 sent = count_rows(state, MessageCount::Sent);
    view.set_counter_panel(kSentPanel, panel_text(u"Sent:"_s, sent));
    yield_to_event_loop();

    const qint64 old_bad = counters.last_bad;
    const qint64 bad = count_rows(state, MessageCount::Failed);
    counters.last_bad = bad;
    view.set_counter_panel(kBadPanel, panel_text(u"Bad:"_s, bad));
    yield_to_event_loop();

    view.refresh_open_folders();
    // A drop of the count warns too, as it always has.
    if (old_bad != bad && !counters.counters_changed &&
        state.settings.get_setting_flag(setting_keys::display::warning_popup) != 0) {
        view.show_failure_warning();
        // Closing the warning brings the counts up to date without a second warning.
        counters.counters_changed = true;
        update_counters(state, view, counters);
    }
    counters.counters_changed = false;
}

bool cancel_all_messages(AppState& state, ConsoleView& view)
{
    state.clear_error_counters();
    const BoxAnswer answer = state.prompter.show_box(
        {u"Are you sure you want to cancel all the pending messages (not scheduled or repeating messages)?"_s,
         u"Cancel Pending Messages"_s, BoxIcon::Question, BoxButtons::YesNo});
    if (answer != BoxAnswer::Yes) {
        return false;
    }
    try {
        store::Statement remove =
            state.global_db.prepare(u"DELETE FROM cv_messages WHERE (cv_sent = 0) AND (cv_repeat_interval = 0) AND "
                                    "(cv_date_time_requested < ?1)"_s);
        remove.bind(1, state.clock.now());
        remove.exec();
    } catch (const store::Error& error) {
        // The one routine that reports its failure and leaves without running the statement again.
        handle_error(state, u"Procedure: cancel_all_messages"_s, database_error_info(error));
        return false;
    }
    yield_to_event_loop();
    view.set_counter_panel(kPendPanel, u"Pend: 0"_s);
    return true;
}

} // namespace cvd::queue
