#pragma once

#include "console/folder_form.h"

namespace cvd::console {

// "Bad Messages": the rows of this run that failed; Copy, and Requeue tries them again.
class bad_form : public FolderForm
{
    Q_OBJECT

public:
    explicit bad_form(ConsoleContext& context);
};

} // namespace cvd::console
