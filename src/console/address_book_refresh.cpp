#include "console/address_book_refresh.h"

#include "console/console_context.h"

#include <QCursor>
#include <QGuiApplication>

namespace cvd::console {

void rebuild_send_lists(ConsoleContext& context, void (*publish)(AppState&))
{
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    if (context.send_form != nullptr) {
        context.send_form->show_users();
    }
    if (publish != nullptr) {
        publish(context.state);
    }
    QGuiApplication::restoreOverrideCursor();
}

} // namespace cvd::console
