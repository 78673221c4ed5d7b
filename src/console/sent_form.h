#pragma once

#include "console/folder_form.h"

namespace cvd::console {

// "Sent Messages": the rows of this run delivered well; Copy, and Requeue sends them again.
class sent_form : public FolderForm
{
    Q_OBJECT

public:
    explicit sent_form(ConsoleContext& context);
};

} // namespace cvd::console
