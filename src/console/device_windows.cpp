#include "console/device_windows.h"

#include "console/console_context.h"
#include "console/frm_modem_scan.h"
#include "console/frm_port_scan.h"
#include "console/modal_window.h"
#include "console/window_owner.h"

using namespace Qt::StringLiterals;

namespace cvd::console {

void register_device_windows(ConsoleContext& context)
{
    context.catalog.add(u"modem_scan"_s, [&context](QWidget* caller) { run_modal<frmModemScan>(context, caller); });
    context.catalog.add(u"port_scan"_s, [&context](QWidget* caller) { run_modal<frmPortScan>(context, caller); });
}

} // namespace cvd::console
