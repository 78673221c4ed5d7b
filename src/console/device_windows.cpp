#include "console/device_windows.h"

#include "console/console_context.h"
#include "console/frm_modem_scan.h"
#include "console/frm_port_scan.h"
#include "console/window_owner.h"

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

QWidget* owner_of(ConsoleContext& context, QWidget* caller)
{
    if (caller != nullptr) {
        return caller;
    }
    return context.send_form != nullptr ? &context.send_form->window() : nullptr;
}

} // namespace

void register_device_windows(ConsoleContext& context)
{
    context.catalog.add(u"modem_scan"_s, [&context](QWidget* caller) {
        context.windows.open<frmModemScan>(context, owner_of(context, caller)).exec();
    });
    context.catalog.add(u"port_scan"_s, [&context](QWidget* caller) {
        context.windows.open<frmPortScan>(context, owner_of(context, caller)).exec();
    });
}

} // namespace cvd::console
