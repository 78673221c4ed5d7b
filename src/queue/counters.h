#pragma once

#include <QtGlobal>
#include <array>

namespace cvd {
struct AppState;
class ConsoleView;
} // namespace cvd

namespace cvd::store {
class Database;
}

namespace cvd::queue {

// The four counts of the message table, as the counter panels and `cvdctl status` show them. Waiting rows
// count whatever their run; the others only rows whose transaction lies above a bound (this run's first
// transaction, or 0 for every run, which still leaves out the closed group rows of transaction 0). The
// pseudo recipient "cvdscreen" never counts.
enum class MessageCount { Waiting, Pending, Sent, Failed };
inline constexpr std::array kMessageCounts{MessageCount::Waiting, MessageCount::Pending, MessageCount::Sent,
                                           MessageCount::Failed};

// One count over the open global database. Throws store::Error.
qint64 count_messages(store::Database& db, MessageCount count, qint64 above_transaction);

struct CounterState
{
    // Set by whoever has just changed the counts on the operator's behalf; while set, a change of the failed
    // count raises no warning. update_counters clears it as its last act.
    bool counters_changed = false;
    // The failed count last shown; none has been shown at start.
    qint64 last_bad = 0;
};

// The four counts into panels 2 to 5: Waiting rows of every run, and Pending, Sent and Failed rows of this
// run (transaction above first_transaction), the pseudo recipient "cvdscreen" left out. Refreshes the open
// folders, and warns when the failed count moved in either direction while the warning_popup setting is on.
void update_counters(AppState& state, ConsoleView& view, CounterState& counters);

// Asks, and on Yes deletes every unsent, non-repeating row that is already due. True when rows were deleted.
bool cancel_all_messages(AppState& state, ConsoleView& view);

} // namespace cvd::queue
