#include "console/exchange_windows.h"

#include "console/console_context.h"
#include "console/frm_export_text.h"
#include "console/frm_import_text.h"
#include "console/frm_on_call_sched.h"
#include "console/modal_window.h"

using namespace Qt::StringLiterals;

namespace cvd::console {

void register_exchange_windows(ConsoleContext& context)
{
    // The group window that asked stays disabled while the roster is open and comes back when it closes,
    // whether it was add_group or edit_group (shared.oncall_from_add): the dialog is modal over it.
    context.catalog.add(u"frmOnCallSched"_s, [&context](QWidget* caller) {
        frmOnCallSched roster(context, context.shared.selected_name, dialog_owner(context, caller));
        roster.exec();
    });
    context.catalog.add(u"import_text"_s, [&context](QWidget* caller) {
        frmImportText window(context, dialog_owner(context, caller));
        window.exec();
    });
    context.catalog.add(u"export_text"_s, [&context](QWidget* caller) {
        frmExportText window(context, dialog_owner(context, caller));
        window.exec();
    });
}

} // namespace cvd::console
