#include "queue/scheduler.h"

#include "core/app_state.h"
#include "core/clock.h"
#include "core/error_path.h"
#include "queue/enqueue.h"
#include "queue/roster_window.h"
#include "queue/scheduler_rows.h"

#include <QSet>
#include <cstddef>
#include <utility>
#include <vector>

namespace cvd::queue {

using namespace scheduling;

namespace {

// Plain rows are resolved this many to a transaction: every commit waits for the disk, so one per row would make
// a large group's members wait on it, and a much longer transaction would keep other writers (the engine)
// waiting. A batch of this size takes a few milliseconds.
constexpr std::size_t kPlainRowsPerTransaction = 1024;

// The memory of delivered pairs with a set of every pair in it. find_trans walks the whole run of entries of a
// transaction, which for a large group is every member; the set answers the common case, a pair not
// remembered at all, at once and with find_trans's own result, and leaves every other case to find_trans.
// Within a call both only grow, so that going back to a mark takes no copy of either.
class DeliveredPairs
{
public:
    explicit DeliveredPairs(TransList& list) : m_list(list)
    {
        for (const TransList::Entry& entry : list.entries()) {
            m_pairs.insert({entry.transaction, entry.name});
        }
    }

    bool seen(qint32 transaction, const QString& name)
    {
        if (m_pairs.contains({transaction, name})) {
            return m_list.find_trans(transaction, name);
        }
        m_list.add(transaction, name);
        m_pairs.insert({transaction, name});
        m_added.push_back({transaction, name});
        return false;
    }

    struct Mark
    {
        std::size_t entries = 0;
        std::size_t added = 0;
    };
    Mark mark() const { return {m_list.size(), m_added.size()}; }
    // Forgets every pair remembered since the mark.
    void go_back(const Mark& mark)
    {
        m_list.truncate(mark.entries);
        for (std::size_t i = mark.added; i < m_added.size(); ++i) {
            m_pairs.remove(m_added[i]);
        }
        m_added.resize(mark.added);
    }

private:
    TransList& m_list;
    QSet<std::pair<qint32, QString>> m_pairs;
    std::vector<std::pair<qint32, QString>> m_added; // the pairs the set took in this call, in order
};

struct Call
{
    AppState& state;
    SchedulerState& scheduler;
    Statements statements;
    DeliveredPairs delivered;
    QDateTime last_try; // now minus the retry interval, once per pass
};

// Where a run of plain rows stopped: at the end, after a full batch, or at a group's row.
struct BatchEnd
{
    std::size_t next = 0;
    std::optional<Recipient> group; // the recipient row of rows[next] when the run stopped at a group
};

// A group's rows to come, and whether the group ends Failed because nobody was found.
struct Expansion
{
    std::vector<NewRow> rows;
    bool nobody_found = true;
};

void resolve_plain(Call& call, const DueRow& row, const Recipient& recipient, const QDateTime& now)
{
    // An ad hoc recipient serves several numbers in one send: the row's own number is where it goes and what
    // tells its deliveries apart.
    const QString pin = recipient.ad_hoc ? row.pin : recipient.id;
    const QString trans_name = recipient.ad_hoc ? row.pin : row.recipient;
    const std::optional<QString> next = next_occurrence(row, now);
    const MessageBody body = next ? call.statements.body(row.id) : MessageBody{};

    const bool seen = call.delivered.seen(row.transaction, trans_name);
    // A duplicate is dropped, but its series goes on like any other.
    const bool taken =
        seen ? call.statements.drop_duplicate(row.id) : call.statements.make_pending(row.id, recipient.carrier, pin);
    if (taken && next) {
        call.statements.insert(
            NewRow{recipient.name, pin, recipient.carrier, *next, row.repeat_interval, row.repeat_stop}, body,
            row.transaction, call.last_try);
    }
}

// Resolves rows from `first` on as plain rows, in one transaction, until a group's row or the end of the batch.
BatchEnd resolve_plain_rows(Call& call, const std::vector<DueRow>& rows, std::size_t first)
{
    const DeliveredPairs::Mark remembered = call.delivered.mark();
    return with_retry(call.state, kProcedure, [&] {
        // A batch run again after a failure must not take its own pairs of the failed attempt for duplicates.
        call.delivered.go_back(remembered);
        store::Transaction transaction(call.state.global_db);
        const QDateTime now = call.state.clock.now();
        BatchEnd end{first, std::nullopt};
        for (; end.next < rows.size() && end.next - first < kPlainRowsPerTransaction; ++end.next) {
            const DueRow& row = rows[end.next];
            const std::optional<Recipient>& recipient = row.found;
            if (!recipient) {
                // Nobody of that name: Failed, with its transaction, so that it counts as a failure; its series
                // ends here.
                call.statements.mark_unresolved(row.id, now);
                continue;
            }
            if (recipient->group) {
                end.group = recipient;
                break;
            }
            resolve_plain(call, row, *recipient, now);
        }
        transaction.commit();
        return end;
    });
}

// Who gets a row of the group's message. An on-call group needs an ordinary member row as well, or its roster
// is not looked at.
Expansion plan_expansion(Call& call, const DueRow& row, const Recipient& group, const QDateTime& now)
{
    Expansion plan;
    const std::vector<Member> members = call.statements.group_members(row.recipient);
    if (members.empty()) {
        return plan;
    }
    plan.rows.reserve(members.size());
    if (group.on_call) {
        // Everyone whose span holds now gets a row. A span whose person no longer exists still counts as
        // somebody on call, and gets nothing.
        for (const RosterSpan& span : call.statements.roster(group.name)) {
            if (!is_on_call(span.start_day, span.start_time, span.stop_day, span.stop_time, now)) {
                continue;
            }
            plan.nobody_found = false;
            if (const std::optional<Recipient> person = call.statements.recipient(span.recipient)) {
                plan.rows.push_back(NewRow{person->name, group.id, person->carrier, row.requested, 0, row.repeat_stop});
            }
        }
        return plan;
    }
    for (const Member& member : members) {
        // A member without a recipient row is skipped without a word.
        if (member.carrier) {
            plan.nobody_found = false;
            plan.rows.push_back(NewRow{member.name, group.id, *member.carrier, row.requested, 0, row.repeat_stop});
        }
    }
    return plan;
}

// Replaces a group's row by its members' rows and closes it, all in one transaction: after a crash either the
// members are there and the group row is closed, or the group row still waits and no member has a row. The
// members' rows carry the group's pin until they are taken up as plain rows; they do not repeat, since each
// occurrence of the group's own series expands afresh.
void expand_group(Call& call, const DueRow& row, const Recipient& group)
{
    const bool rows_created = with_retry(call.state, kProcedure, [&] {
        store::Transaction transaction(call.state.global_db);
        const QDateTime now = call.state.clock.now();
        const Expansion plan = plan_expansion(call, row, group, now);
        if (!call.statements.close_group(row.id, plan.nobody_found, now)) {
            return false; // another process took the row meanwhile; nothing is written
        }
        const MessageBody body = call.statements.body(row.id);
        if (const std::optional<QString> next = next_occurrence(row, now)) {
            call.statements.insert(
                NewRow{group.name, group.id, group.carrier, *next, row.repeat_interval, row.repeat_stop}, body,
                row.transaction, call.last_try);
        }
        for (const NewRow& member : plan.rows) {
            call.statements.insert(member, body, row.transaction, call.last_try);
        }
        transaction.commit();
        return !plan.rows.empty();
    });
    if (rows_created) {
        call.scheduler.fast_tick_requested = true;
    }
}

// One pass over the rows due now. True when it met a group, so that its members are taken up by another pass.
// Nothing is yielded to the event loop inside a transaction: a handler run meanwhile would write through the
// same connection into it.
bool run_pass(Call& call)
{
    const QDateTime now = call.state.clock.now();
    const std::vector<DueRow> rows = with_retry(call.state, kProcedure, [&] { return call.statements.due_rows(now); });
    const qint32 retry_interval =
        with_retry(call.state, kProcedure, [&] { return retry_interval_seconds(call.state); });
    call.last_try = now.addSecs(-qint64{retry_interval});

    bool another_pass = false;
    std::size_t next = 0;
    while (next < rows.size()) {
        const BatchEnd end = resolve_plain_rows(call, rows, next);
        yield_to_event_loop();
        next = end.next;
        if (end.group) {
            another_pass = true;
            expand_group(call, rows[next], *end.group);
            yield_to_event_loop();
            ++next;
        }
    }
    return another_pass;
}

} // namespace

void schedule_messages(AppState& state, SchedulerState& scheduler)
{
    state.clear_error_counters();
    if (scheduler.scheduling_active) {
        return;
    }
    scheduler.scheduling_active = true;
    {
        Call call{state,
                  scheduler,
                  with_retry(state, kProcedure, [&] { return Statements(state.global_db); }),
                  DeliveredPairs(scheduler.trans_list),
                  {}};
        while (run_pass(call)) {
        }
    }
    // Cleared by the normal end only; a call that ends in the program's halt leaves nothing to clear.
    scheduler.scheduling_active = false;
}

} // namespace cvd::queue
