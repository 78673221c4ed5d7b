#pragma once

namespace cvd::console {

struct ConsoleContext;

// The device tools in the catalog: "modem_scan" (frmModemScan) and "port_scan" (frmPortScan), each modal over
// the window that asked.
void register_device_windows(ConsoleContext& context);

} // namespace cvd::console
