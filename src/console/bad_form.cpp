#include "console/bad_form.h"

namespace cvd::console {

bad_form::bad_form(ConsoleContext& context)
    : FolderForm(context, queue::Folder::Bad, {.cancel_name = nullptr, .requeue_name = "Command2", .has_copy = false})
{
}

} // namespace cvd::console
