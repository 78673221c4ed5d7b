#include "app/headless_front_end.h"

#include "core/app_state.h"
#include "core/databases.h"
#include "core/halt_barrier.h"
#include "core/startup.h"
#include "dispatch/dispatch_loop.h"
#include "platform/runtime.h"

#include <QCoreApplication>
#include <cstdio>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace cvd::app {

namespace {

void log_line(const QString& text)
{
    std::printf("%s\n", qUtf8Printable(text));
    std::fflush(stdout);
}

} // namespace

int HeadlessFrontEnd::run(AppState& state)
{
    dispatch::DispatchLoop loop(state, m_view, engine_link::start_detached);
    QString channel_error;
    if (!loop.start(state.runtime_dir + u'/' + QLatin1StringView(platform::kSocketName), &channel_error)) {
        std::fprintf(stderr, "cvd: cannot open the local channel: %s\n", qUtf8Printable(channel_error));
        return kExitFailure;
    }
    log_line(u"cvd: running (pid "_s + QString::number(::getpid()) + u"), global database "_s + global_db_path(state));
    const int exit_code = QCoreApplication::exec();
    if (noted_halt()) {
        return exit_code;
    }
    loop.stop();
    return exit_code;
}

void HeadlessFrontEnd::request_stop()
{
    QCoreApplication::quit();
}

void HeadlessFrontEnd::ended()
{
    log_line(u"cvd: stopped"_s);
}

} // namespace cvd::app
