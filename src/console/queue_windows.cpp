#include "console/queue_windows.h"

#include "console/bad_form.h"
#include "console/console_context.h"
#include "console/frm_message_detail.h"
#include "console/frm_schedule.h"
#include "console/modal_window.h"
#include "console/pending_form.h"
#include "console/sched_form.h"
#include "console/sent_form.h"
#include "console/window_owner.h"

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

template <typename Folder> void open_folder(ConsoleContext& context)
{
    Folder& folder = context.windows.open<Folder>(context);
    folder.showNormal();
    folder.raise();
    folder.activateWindow();
}

template <typename Folder> void refresh_if_visible(ConsoleContext& context)
{
    if (Folder* folder = context.windows.find<Folder>(); folder != nullptr && folder->isVisible()) {
        folder->refresh();
    }
}

QWidget* send_window(ConsoleContext& context)
{
    return context.send_form != nullptr ? &context.send_form->window() : nullptr;
}

} // namespace

void register_queue_windows(ConsoleContext& context)
{
    context.catalog.add(u"scheduled"_s, [&context](QWidget*) { open_folder<sched_form>(context); });
    context.catalog.add(u"pending"_s, [&context](QWidget*) { open_folder<pending_form>(context); });
    context.catalog.add(u"sent"_s, [&context](QWidget*) { open_folder<sent_form>(context); });
    context.catalog.add(u"bad"_s, [&context](QWidget*) { open_folder<bad_form>(context); });
    context.catalog.add(u"tbrSchedule"_s, [&context](QWidget*) {
        frmSchedule& schedule = context.windows.open<frmSchedule>(context, send_window(context));
        schedule.show();
        schedule.raise();
    });
    context.catalog.add(u"frmMessageDetail"_s,
                        [&context](QWidget* caller) { run_modal<frmMessageDetail>(context, caller); });
    context.doors.refresh_folders = [&context] {
        refresh_if_visible<bad_form>(context);
        refresh_if_visible<pending_form>(context);
        refresh_if_visible<sched_form>(context);
        refresh_if_visible<sent_form>(context);
    };
    context.doors.unload_schedule = [&context] {
        if (frmSchedule* schedule = context.windows.find<frmSchedule>()) {
            schedule->close();
        }
    };
}

} // namespace cvd::console
