#include "console/recipient_windows.h"

#include "console/add_group.h"
#include "console/console_context.h"
#include "console/edit_group.h"
#include "console/frm_add_recipient.h"
#include "console/frm_group_members.h"
#include "console/group_maint.h"
#include "console/list_groups.h"
#include "console/list_recipients.h"
#include "console/modal_window.h"
#include "console/window_owner.h"

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

void edit_recipient(ConsoleContext& context, const QString& name, QWidget* caller)
{
    run_modal<frmAddRecipient>(context, caller, true, name);
}

void open_from_group_list(ConsoleContext& context, list_groups::Mode mode, QWidget* caller)
{
    if (mode == list_groups::Mode::Members) {
        run_modal<group_maint>(context, caller);
    } else {
        run_modal<edit_group>(context, caller);
    }
}

void add_recipient_list(ConsoleContext& context, const QString& entry, list_recipients::Mode mode)
{
    context.catalog.add(entry, [&context, mode](QWidget* caller) {
        run_modal<list_recipients>(context, caller, mode, [&context](const QString& name, QWidget* list) {
            edit_recipient(context, name, list);
        });
    });
}

void add_group_list(ConsoleContext& context, const QString& entry, list_groups::Mode mode)
{
    context.catalog.add(entry, [&context, mode](QWidget* caller) {
        run_modal<list_groups>(context, caller, mode, [&context](list_groups::Mode next, QWidget* list) {
            open_from_group_list(context, next, list);
        });
    });
}

} // namespace

void register_recipient_windows(ConsoleContext& context)
{
    context.catalog.add(u"recipients_add"_s,
                        [&context](QWidget* caller) { run_modal<frmAddRecipient>(context, caller, false, QString()); });
    add_recipient_list(context, u"recipients_edit"_s, list_recipients::Mode::Edit);
    add_recipient_list(context, u"recipients_delete"_s, list_recipients::Mode::Delete);
    context.catalog.add(u"groups_add"_s, [&context](QWidget* caller) { run_modal<add_group>(context, caller); });
    add_group_list(context, u"groups_edit"_s, list_groups::Mode::Edit);
    add_group_list(context, u"groups_members"_s, list_groups::Mode::Members);
    add_group_list(context, u"groups_delete"_s, list_groups::Mode::Delete);
    context.catalog.add(u"frmGroupMembers"_s,
                        [&context](QWidget* caller) { run_modal<frmGroupMembers>(context, caller); });
}

} // namespace cvd::console
