#include "app/cvd_program.h"

#include "app/console_front_end.h"
#include "app/headless_front_end.h"
#include "app/stop_signals.h"
#include "core/app_state.h"
#include "core/clock.h"
#include "core/error_path.h"
#include "core/halt_barrier.h"
#include "core/startup.h"
#include "core/version.h"
#include "platform/folders.h"
#include "platform/registry.h"
#include "platform/runtime.h"
#include "queue/send_page.h"

#include <QApplication>
#include <QCoreApplication>
#include <cstdio>

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

QStringList local_arguments(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i) {
        arguments.append(QString::fromLocal8Bit(argv[i]));
    }
    return arguments;
}

int run_started_program(AppState& state, const ProgramOptions& options, FrontEnd& front)
{
    const StartupResult started =
        run_startup(state, options.command_line, platform::executable_folder(), StartupHooks{send_page_hook});
    if (started.outcome == StartupOutcome::Exit) {
        if (started.exit_code != kExitOk) {
            std::fprintf(stderr, "cvd: %s\n", qUtf8Printable(started.reason));
        }
        return started.exit_code;
    }
    const int exit_code = front.run(state);
    if (const std::optional<QString> halt = noted_halt()) {
        // The halt's box has been shown; the databases are in no state for the orderly end.
        throw ProgramHalted(*halt);
    }
    orderly_shutdown(state);
    front.ended();
    return exit_code;
}

} // namespace

int run_front_end(FrontEnd& front, const ProgramOptions& options)
{
    SystemClock clock;
    AppState state(front.prompter(), clock, platform::Registry(platform::Registry::default_root()),
                   platform::runtime_folder());
    // Installed first, so that a stop asked for during start-up is served as soon as the loop runs.
    StopSignals stop_signals(QCoreApplication::instance(), [&front] { front.request_stop(); });
    try {
        return run_started_program(state, options, front);
    } catch (const ProgramHalted& halted) {
        std::fprintf(stderr, "cvd: %s\n", qUtf8Printable(halted.text()));
        return kExitFailure;
    }
}

bool display_available()
{
    for (const char* name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"}) {
        const QByteArray value = qgetenv(name);
        if (!value.isEmpty()) {
            return true;
        }
    }
    return false;
}

namespace {

void set_application_names()
{
    QCoreApplication::setApplicationName(u"cvd"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(CVD_VERSION_TEXT));
    QCoreApplication::setOrganizationName(u"Halvern"_s);
}

} // namespace

int run_cvd(int argc, char** argv)
{
    const ProgramOptions options = parse_program_arguments(local_arguments(argc, argv));
    if (options.show_help) {
        std::printf("%s", qUtf8Printable(cvd_usage_text()));
        return kExitOk;
    }
    if (options.show_version) {
        std::printf("cvd %s\n", CVD_VERSION_TEXT);
        return kExitOk;
    }
    if (!options.headless && !display_available()) {
        std::printf("cvd: no display (DISPLAY, WAYLAND_DISPLAY and QT_QPA_PLATFORM are unset): running headless\n");
        std::fflush(stdout);
    }
    if (options.headless || !display_available()) {
        HaltBarrier<QCoreApplication> application(argc, argv);
        set_application_names();
        HeadlessFrontEnd front;
        return run_front_end(front, options);
    }
    HaltBarrier<QApplication> application(argc, argv);
    set_application_names();
    // The program lives in the tray while its window is hidden; only the orderly end quits it.
    QApplication::setQuitOnLastWindowClosed(false);
    ConsoleFrontEnd front;
    return run_front_end(front, options);
}

} // namespace cvd::app
