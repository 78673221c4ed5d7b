#include "console/log_windows.h"

#include "console/console_context.h"
#include "console/frm_find.h"
#include "console/log_form.h"
#include "console/modem_log_form.h"
#include "console/window_owner.h"

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

void show_in_front(QWidget& window)
{
    window.show();
    window.raise();
    window.activateWindow();
}

SearchableLog* find_target_log(ConsoleContext& context)
{
    if (context.shared.find_target == 1) {
        return context.windows.find<modem_log_form>();
    }
    if (context.shared.find_target == 2) {
        return context.windows.find<log_form>();
    }
    return nullptr;
}

} // namespace

void register_log_windows(ConsoleContext& context)
{
    context.catalog.add(u"history"_s, [&context](QWidget*) { show_in_front(context.windows.open<log_form>(context)); });
    context.catalog.add(u"log"_s,
                        [&context](QWidget*) { show_in_front(context.windows.open<modem_log_form>(context)); });
    context.catalog.add(u"frmFind"_s, [&context](QWidget*) {
        // A search already open is put away first: the new one starts empty, for the log that asked.
        delete context.windows.find<frmFind>();
        SearchableLog* target = find_target_log(context);
        if (target == nullptr) {
            return;
        }
        show_in_front(context.windows.open<frmFind>(context, *target));
    });
}

} // namespace cvd::console
