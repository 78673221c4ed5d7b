#include "console/sched_form.h"

namespace cvd::console {

sched_form::sched_form(ConsoleContext& context)
    : FolderForm(context, queue::Folder::Scheduled,
                 {.cancel_name = "btnDelete", .requeue_name = nullptr, .has_copy = true})
{
}

} // namespace cvd::console
