#include "console/sent_form.h"

namespace cvd::console {

sent_form::sent_form(ConsoleContext& context)
    : FolderForm(context, queue::Folder::Sent, {.cancel_name = nullptr, .requeue_name = "Command2", .has_copy = false})
{
}

} // namespace cvd::console
