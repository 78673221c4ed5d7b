#include "console/pending_form.h"

namespace cvd::console {

pending_form::pending_form(ConsoleContext& context)
    : FolderForm(context, queue::Folder::Pending,
                 {.cancel_name = "Command1", .requeue_name = nullptr, .has_copy = false})
{
}

} // namespace cvd::console
