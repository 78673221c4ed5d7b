#pragma once

namespace cvd::console {

struct ConsoleContext;

// The on-call roster of a group ("frmOnCallSched", opened by the group windows) and the text import and export
// of the File menu ("import_text", "export_text").
void register_exchange_windows(ConsoleContext& context);

} // namespace cvd::console
