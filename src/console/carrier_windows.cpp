#include "console/carrier_windows.h"

#include "console/console_context.h"
#include "console/frm_add_carrier.h"
#include "console/list_carriers.h"
#include "console/modal_window.h"
#include "console/window_owner.h"

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

void open_add_carrier(ConsoleContext& context, QWidget* caller, bool is_edit, const QString& name)
{
    run_modal<frmAddCarrier>(context, caller, is_edit, name);
}

void open_list(ConsoleContext& context, QWidget* caller, bool edit_mode)
{
    run_modal<list_carriers>(context, caller, edit_mode);
}

} // namespace

void register_carrier_windows(ConsoleContext& context)
{
    context.catalog.add(u"carriers_add"_s,
                        [&context](QWidget* caller) { open_add_carrier(context, caller, false, {}); });
    context.catalog.add(u"frmAddCarrier"_s, [&context](QWidget* caller) {
        open_add_carrier(context, caller, true, context.shared.selected_name);
    });
    context.catalog.add(u"carriers_edit"_s, [&context](QWidget* caller) { open_list(context, caller, true); });
    context.catalog.add(u"carriers_delete"_s, [&context](QWidget* caller) { open_list(context, caller, false); });
}

} // namespace cvd::console
