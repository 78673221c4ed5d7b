#pragma once

#include "console/console_context.h"
#include "console/window_owner.h"

#include <QWidget>
#include <utility>

namespace cvd::console {

// The window that owns a modal dialog opened from the catalog: the one that asked, else the send window
// (nobody before the send window exists).
inline QWidget* dialog_owner(ConsoleContext& context, QWidget* caller)
{
    if (caller != nullptr || context.send_form == nullptr) {
        return caller;
    }
    return &context.send_form->window();
}

// Opens a modal window through the window owner, over dialog_owner(); the owner is its last argument.
template <typename Window, typename... Args> void run_modal(ConsoleContext& context, QWidget* caller, Args&&... args)
{
    context.windows.open<Window>(context, std::forward<Args>(args)..., dialog_owner(context, caller)).exec();
}

} // namespace cvd::console
