#pragma once

namespace cvd::console {

struct ConsoleContext;

// The carrier windows in the catalog: "carriers_add" (frmAddCarrier in add mode), "carriers_edit" and
// "carriers_delete" (list_carriers in its two modes), and "frmAddCarrier", the edit of the carrier named by
// the shared selected_name, which the list opens.
void register_carrier_windows(ConsoleContext& context);

} // namespace cvd::console
