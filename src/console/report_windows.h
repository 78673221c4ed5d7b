#pragma once

namespace cvd::console {

struct ConsoleContext;

// The report menu's entries and the sending of a report, added to the catalog.
void register_report_windows(ConsoleContext& context);

} // namespace cvd::console
