#pragma once

#include "queue/trans_list.h"

namespace cvd {

struct AppState;

namespace queue {

// What the scheduler keeps from one call to the next. One instance belongs to the send window.
struct SchedulerState
{
    // Set for the length of a call, passes included; a call that arrives meanwhile returns at once.
    bool scheduling_active = false;
    // Which transaction reached which recipient in the last few ticks; the tick ages it before each call.
    TransList trans_list;
    // Set when a call created member rows of a group: the next tick is to come after 100 ms instead of the
    // usual interval. The scheduler only ever sets it; the tick clears it when it arms the timer again.
    bool fast_tick_requested = false;
};

// Turns every Waiting row of cv_messages that has fallen due into deliverable rows, in ascending
// cv_message_id: a plain recipient's row gets its carrier and pin and becomes Pending, a group's row is
// replaced by one Waiting row per member (or per person on call now) and closed with transaction 0, a
// repeating row leaves its next occurrence behind, and a row whose recipient is unknown becomes Failed. Passes
// repeat while a pass met a group, so that members are taken up in the same call. A second delivery of one
// transaction to one recipient, seen through trans_list, is deleted.
//
// Each row's change of state is one UPDATE or DELETE that names the Waiting state it expects, so a row that
// another process took meanwhile is left alone. The expansion of a group row and its closing are one
// transaction. Database failures go through the common error path ("Procedure: schedule_messages"); one that
// ends in the program's halt throws ProgramHalted with nothing of the unfinished step written.
void schedule_messages(AppState& state, SchedulerState& scheduler);

} // namespace queue
} // namespace cvd
