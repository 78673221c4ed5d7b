#pragma once

namespace cvd::console {

struct ConsoleContext;

// Adds the recipient and group windows to the catalog: "recipients_add", "recipients_edit",
// "recipients_delete", "groups_add", "groups_edit", "groups_delete", "groups_members" and "frmGroupMembers".
void register_recipient_windows(ConsoleContext& context);

} // namespace cvd::console
