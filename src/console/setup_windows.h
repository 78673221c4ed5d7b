#pragma once

namespace cvd::console {

struct ConsoleContext;

// The setup dialogs of the Settings menu ("setup_general", "setup_modem", "setup_display",
// "setup_user_global") and the raw settings window "frmSetting", opened from "General Setup".
void register_setup_windows(ConsoleContext& context);

} // namespace cvd::console
