#include "console/setup_windows.h"

#include "console/console_context.h"
#include "console/frm_display_options.h"
#include "console/frm_global_settings.h"
#include "console/frm_setting.h"
#include "console/modal_window.h"
#include "console/modem_setup.h"
#include "console/setup_form.h"
#include "console/window_owner.h"

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

// Each setup dialog is modal over the send window.
template <typename Window> WindowCatalog::Opener modal_over_send_form(ConsoleContext& context)
{
    return [&context](QWidget* /*caller*/) { run_modal<Window>(context, nullptr); };
}

} // namespace

void register_setup_windows(ConsoleContext& context)
{
    context.catalog.add(u"setup_general"_s, modal_over_send_form<setup_form>(context));
    context.catalog.add(u"setup_modem"_s, modal_over_send_form<modem_setup>(context));
    context.catalog.add(u"setup_display"_s, modal_over_send_form<frmDisplayOptions>(context));
    context.catalog.add(u"setup_user_global"_s, modal_over_send_form<frmGlobalSettings>(context));
    context.catalog.add(u"frmSetting"_s, modal_over_send_form<frmSetting>(context));
}

} // namespace cvd::console
