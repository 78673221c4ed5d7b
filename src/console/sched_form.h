#pragma once

#include "console/folder_form.h"

namespace cvd::console {

// "Scheduled Messages": every waiting row, of any run; Edit holds one in the send window, Copy copies it, Cancel fails
// it.
class sched_form : public FolderForm
{
    Q_OBJECT

public:
    explicit sched_form(ConsoleContext& context);
};

} // namespace cvd::console
