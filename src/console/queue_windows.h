#pragma once

namespace cvd::console {

struct ConsoleContext;

// The queue's windows in the catalog: the four folders ("scheduled", "pending", "sent", "bad"), the schedule
// dialog ("tbrSchedule") and the message detail ("frmMessageDetail", also opened by the history). Also sets
// the doors by which each count refreshes the open folders and SEND unloads the schedule dialog.
void register_queue_windows(ConsoleContext& context);

} // namespace cvd::console
