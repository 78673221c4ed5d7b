#pragma once

namespace cvd {
struct AppState;
}

namespace cvd::console {

struct ConsoleContext;

// After the address book changed: the send window's lists rebuilt and, given `publish`, the names published
// to the machine store, all under the wait cursor.
void rebuild_send_lists(ConsoleContext& context, void (*publish)(AppState&) = nullptr);

} // namespace cvd::console
