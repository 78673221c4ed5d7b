#include "console/carrier_windows.h"

#include "console/console_context.h"
#include "console/frm_add_carrier.h"
#include "console/list_carriers.h"
#include "console/window_owner.h"

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

// The window that asked owns the modal dialog; the send window when nobody did.
QWidget* owner_of(ConsoleContext& context, QWidget* caller)
{
    if (caller != nullptr || context.send_form == nullptr) {
        return caller;
    }
    return &context.send_form->window();
}

void open_add_carrier(ConsoleContext& context, QWidget* caller, bool is_edit, const QString& name)
{
    context.windows.open<frmAddCarrier>(context, is_edit, name, owner_of(context, caller)).exec();
}

void open_list(ConsoleContext& context, QWidget* caller, bool edit_mode)
{
    context.windows.open<list_carriers>(context, edit_mode, owner_of(context, caller)).exec();
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
