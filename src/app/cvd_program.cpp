#include "app/cvd_program.h"

#include "app/headless_view.h"
#include "app/stop_signals.h"
#include "core/app_state.h"
#include "core/clock.h"
#include "core/databases.h"
#include "core/error_path.h"
#include "core/startup.h"
#include "engine_link/supervision.h"
#include "platform/folders.h"
#include "platform/registry.h"
#include "platform/runtime.h"
#include "queue/poll_loop.h"
#include "queue/send_page.h"
#include "terminal/terminal_prompter.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTimer>
#include <cstdio>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace cvd::app {

ProgramOptions parse_program_arguments(const QStringList& arguments)
{
    ProgramOptions options;
    qsizetype first_other = 0;
    for (; first_other < arguments.size(); ++first_other) {
        const QString& argument = arguments.at(first_other);
        if (argument == u"--headless") {
            options.headless = true;
        } else if (argument == u"--help" || argument == u"-h") {
            options.show_help = true;
        } else if (argument == u"--version") {
            options.show_version = true;
        } else {
            break;
        }
    }
    options.command_line = arguments.mid(first_other).join(u' ');
    return options;
}

QString cvd_usage_text()
{
    return u"Usage: cvd [--headless] [/localdb] [/minimized] [RECIPIENT SENDER MESSAGE...]\n"
           "\n"
           "Corvane Desk, the dispatcher for paging and text messaging.\n"
           "\n"
           "  --headless   run without windows; boxes and questions go to the terminal\n"
           "  /localdb     keep both databases in folders beside the program\n"
           "  /minimized   start without showing the main window\n"
           "  --help       show this text\n"
           "  --version    show the version\n"
           "\n"
           "A message line (recipient, sender and message, separated by single blanks) is enqueued\n"
           "for the recipient; when a copy of the program already runs, this one then ends.\n"
           "\n"
           "Folders and stores follow CVD_COMMON_APPDATA, XDG_DATA_HOME, CVD_REGISTRY_ROOT and\n"
           "CVD_RUNTIME_DIR when they are set.\n"_s;
}

namespace {

bool send_page_hook(AppState& state, const QString& line, QString* reason)
{
    const queue::SendPageResult result = queue::SendPage(state, line);
    if (!result.inserted && reason != nullptr) {
        *reason = result.reason;
    }
    return result.inserted;
}

void log_line(const QString& text)
{
    std::printf("%s\n", qUtf8Printable(text));
    std::fflush(stdout);
}

int run_program(AppState& state, const ProgramOptions& options, QCoreApplication& application)
{
    // Installed first, so that a stop asked for during start-up is served as soon as the loop runs.
    StopSignals stop_signals(&application, [&application] { application.quit(); });
    const StartupResult started =
        run_startup(state, options.command_line, platform::executable_folder(), StartupHooks{send_page_hook});
    if (started.outcome == StartupOutcome::Exit) {
        if (started.exit_code != kExitOk) {
            std::fprintf(stderr, "cvd: %s\n", qUtf8Printable(started.reason));
        }
        return started.exit_code;
    }
    HeadlessView view;
    queue::Dispatcher dispatcher(state, view, engine_link::start_detached);
    QString channel_error;
    if (!dispatcher.load(state.runtime_dir + u'/' + QLatin1StringView(platform::kSocketName), &channel_error)) {
        std::fprintf(stderr, "cvd: cannot open the local channel: %s\n", qUtf8Printable(channel_error));
        orderly_shutdown(state);
        return kExitFailure;
    }
    QSocketNotifier channel_notifier(dispatcher.channel().fd(), QSocketNotifier::Read);
    QObject::connect(&channel_notifier, &QSocketNotifier::activated, &application,
                     [&dispatcher] { dispatcher.receive(); });
    // The timer is off while a tick runs and is armed again from its end, so ticks never overlap.
    QTimer repeat_timer;
    repeat_timer.setSingleShot(true);
    std::optional<QString> halted; // the common error path ended the program inside a tick
    QObject::connect(&repeat_timer, &QTimer::timeout, &application, [&] {
        queue::Dispatcher::TickResult result;
        try {
            result = dispatcher.tick();
        } catch (const ProgramHalted& halt) {
            halted = halt.text();
            application.quit();
            return;
        }
        if (result.stop_requested) {
            application.quit();
            return;
        }
        repeat_timer.start(result.next_interval_ms);
    });
    repeat_timer.start(queue::kFastTickMs);
    log_line(u"cvd: running (pid "_s + QString::number(::getpid()) + u"), global database "_s + global_db_path(state));
    application.exec();
    repeat_timer.stop();
    channel_notifier.setEnabled(false);
    if (halted) {
        throw ProgramHalted(*halted);
    }
    dispatcher.unload();
    orderly_shutdown(state);
    log_line(u"cvd: stopped"_s);
    return kExitOk;
}

} // namespace

int run_cvd(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"cvd"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(CVD_VERSION_TEXT));
    const ProgramOptions options = parse_program_arguments(QCoreApplication::arguments().mid(1));
    if (options.show_help) {
        std::printf("%s", qUtf8Printable(cvd_usage_text()));
        return kExitOk;
    }
    if (options.show_version) {
        std::printf("cvd %s\n", CVD_VERSION_TEXT);
        return kExitOk;
    }
    terminal::TerminalPrompter prompter;
    SystemClock clock;
    AppState state(prompter, clock, platform::Registry(platform::Registry::default_root()), platform::runtime_folder());
    try {
        return run_program(state, options, application);
    } catch (const ProgramHalted& halted) {
        std::fprintf(stderr, "cvd: %s\n", qUtf8Printable(halted.text()));
        return kExitFailure;
    }
}

} // namespace cvd::app
