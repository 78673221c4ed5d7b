#pragma once

#include "console/folder_form.h"

namespace cvd::console {

// "Pending Messages": the rows of this run the engine has yet to deliver; Copy, and Cancel fails them.
class pending_form : public FolderForm
{
    Q_OBJECT

public:
    explicit pending_form(ConsoleContext& context);
};

} // namespace cvd::console
