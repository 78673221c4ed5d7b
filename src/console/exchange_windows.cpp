#include "console/exchange_windows.h"

#include "console/console_context.h"
#include "console/frm_export_text.h"
#include "console/frm_import_text.h"
#include "console/frm_on_call_sched.h"

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

// The window that owns a modal dialog: the one that asked, else the send window.
QWidget* owner_of(ConsoleContext& context, QWidget* caller)
{
    if (caller != nullptr) {
        return caller;
    }
    return context.send_form != nullptr ? &context.send_form->window() : nullptr;
}

} // namespace

void register_exchange_windows(ConsoleContext& context)
{
    // The group window that asked stays disabled while the roster is open and comes back when it closes,
    // whether it was add_group or edit_group (shared.oncall_from_add): the dialog is modal over it.
    context.catalog.add(u"frmOnCallSched"_s, [&context](QWidget* caller) {
        frmOnCallSched roster(context, context.shared.selected_name, owner_of(context, caller));
        roster.exec();
    });
    context.catalog.add(u"import_text"_s, [&context](QWidget* caller) {
        frmImportText window(context, owner_of(context, caller));
        window.exec();
    });
    context.catalog.add(u"export_text"_s, [&context](QWidget* caller) {
        frmExportText window(context, owner_of(context, caller));
        window.exec();
    });
}

} // namespace cvd::console
