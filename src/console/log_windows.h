#pragma once

namespace cvd::console {

struct ConsoleContext;

// The history ("history"), the engine's activity log ("log") and the search window both logs open
// ("frmFind", for the log that shared.find_target names).
void register_log_windows(ConsoleContext& context);

} // namespace cvd::console
