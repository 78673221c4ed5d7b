#include "console/console_session.h"

#include "addressbook/presets.h"
#include "console/about_form.h"
#include "console/carrier_windows.h"
#include "console/control_map.h"
#include "console/device_windows.h"
#include "console/exchange_windows.h"
#include "console/frm_adhoc.h"
#include "console/frm_failure_warning.h"
#include "console/frm_folders.h"
#include "console/frm_info.h"
#include "console/frm_monitor.h"
#include "console/frm_more_presets.h"
#include "console/frm_password_setup.h"
#include "console/frm_spell_check.h"
#include "console/help_viewer.h"
#include "console/log_windows.h"
#include "console/preset_form.h"
#include "console/program_icon.h"
#include "console/queue_windows.h"
#include "console/recipient_windows.h"
#include "console/report_windows.h"
#include "console/send_form.h"
#include "console/setup_windows.h"
#include "core/app_state.h"

#include <QApplication>

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

// A modal window of the send window: made through the owner, run, and gone when it closes.
template <typename Window, typename... Args> int run_modal(ConsoleContext& context, Args&&... args)
{
    return context.windows.open<Window>(context, std::forward<Args>(args)..., &context.send_form->window()).exec();
}

} // namespace

ConsoleSession::ConsoleSession(engine_link::EngineStarter starter) : m_starter(std::move(starter)) {}

ConsoleSession::~ConsoleSession() = default;

int ConsoleSession::run(AppState& state)
{
    m_context =
        std::make_unique<ConsoleContext>(ConsoleContext{state, m_shared, m_windows, m_activity, nullptr, {}, {}});
    addressbook::load_presets(state, m_shared.presets);
    wire_doors();
    QApplication::setWindowIcon(program_icon());
    send_form& form = m_windows.open<send_form>(*m_context, m_starter);
    m_context->send_form = &form;
    m_prompter.set_parent_window(&form);
    QString error;
    if (!form.load(&error)) {
        m_prompter.show_box(Notice{error, u"Corvane Desk"_s, BoxIcon::Critical});
        return 1;
    }
    if (state.start_minimized) {
        form.showMinimized();
    } else {
        form.show();
    }
    publish_control_map(form);
    return QApplication::exec();
}

void ConsoleSession::request_close()
{
    if (m_context != nullptr && m_context->send_form != nullptr) {
        m_context->send_form->window().close();
    } else {
        QApplication::quit();
    }
}

void ConsoleSession::wire_doors()
{
    ConsoleContext& context = *m_context;
    WindowDoors& doors = context.doors;
    doors.info_details = [&context] {
        context.shared.info_filter = false;
        run_modal<frmInfo>(context);
    };
    doors.info_filter = [&context] {
        context.shared.info_filter = true;
        run_modal<frmInfo>(context);
    };
    doors.ask_adhoc_pin = [&context] { return frmAdhoc::ask(context, &context.send_form->window()); };
    doors.edit_preset = [&context](int number) {
        context.shared.preset_number = number;
        run_modal<preset_form>(context, number);
    };
    doors.more_presets = [&context] { run_modal<frmMorePresets>(context); };
    doors.failure_warning = [&context] { run_modal<frmFailureWarning>(context); };
    doors.folders = [&context] { run_modal<frmFolders>(context); };
    doors.about = [&context] { run_modal<about_form>(context); };
    doors.password_setup = [&context] { run_modal<frmPasswordSetup>(context); };
    doors.check_spelling = [&context](const QString& text) {
        return check_spelling(context, &context.send_form->window(), text);
    };
    doors.help_contents = [&context] { help_contents(context); };
    doors.help_website = [&context] { help_website(context); };
    // The windows of the menu's later entries, family by family; each adds its entries to the catalog.
    register_report_windows(context);
    doors.has_window = [&context](const QString& entry) { return context.catalog.has(entry); };
    doors.open_window = [&context](const QString& entry) { context.catalog.open(entry); };
    register_setup_windows(context);
    register_carrier_windows(context);
    register_recipient_windows(context);
    register_queue_windows(context);
    register_device_windows(context);
    register_log_windows(context);
    register_exchange_windows(context);
    doors.show_monitor = [&context](bool visible) {
        if (visible) {
            frmMonitor& monitor = context.windows.open<frmMonitor>(context);
            monitor.show();
            monitor.raise();
            return;
        }
        frmMonitor* monitor = context.windows.find<frmMonitor>();
        if (monitor == nullptr) {
            return;
        }
        // Minimising the send window only hides the monitor; the menu entry puts it away.
        if (context.send_form->window().isMinimized()) {
            monitor->hide();
        } else {
            monitor->unload();
        }
    };
}

} // namespace cvd::console
