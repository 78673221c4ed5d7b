#include "console/help_viewer.h"

#include "console/console_context.h"
#include "core/app_state.h"
#include "core/prompter.h"
#include "desk/help_links.h"

#include <QDesktopServices>
#include <QUrl>

namespace cvd::console {

void help_contents(ConsoleContext& context)
{
    const QString index = desk::find_help_index(context.state.program_folder);
    if (index.isEmpty() || !QDesktopServices::openUrl(QUrl::fromLocalFile(index))) {
        context.state.prompter.show_box(desk::help_not_available());
    }
}

void help_website(ConsoleContext& context)
{
    // Qt cannot tell a missing browser from one that failed to start, so both give the same box.
    if (!QDesktopServices::openUrl(QUrl(QString::fromUtf16(desk::kWebsiteAddress)))) {
        context.state.prompter.show_box(desk::browser_not_found());
    }
}

} // namespace cvd::console
