#include "tools/control_commands.h"

#include "core/databases.h"
#include "core/error_path.h"
#include "core/file_ops.h"
#include "intake/integration_client.h"
#include "intake/local_channel.h"
#include "platform/registry.h"
#include "platform/runtime.h"
#include "queue/counters.h"
#include "queue/send_page.h"
#include "store/database.h"
#include "tools/direct_access.h"

#include <QElapsedTimer>
#include <QThread>

using namespace Qt::StringLiterals;

namespace cvd::tools {

namespace {

constexpr int kOk = 0;
constexpr int kFailed = 1;
constexpr int kUsage = 2;

intake::IntegrationClient integration_client()
{
    return intake::IntegrationClient(platform::Registry(platform::Registry::default_root()),
                                     platform::runtime_folder());
}

} // namespace

// The line becomes a Waiting row here, whether or not the program runs: only a committed row is reported as
// taken, and the running program takes it at its next tick like any other Waiting row.
int run_send_command(const QStringList& arguments, QTextStream& out, QTextStream& err)
{
    QStringList rest = arguments;
    const bool local_db = take_local_switch(rest);
    if (rest.isEmpty()) {
        err << "cvdctl send: missing the line (RECIPIENT SENDER MESSAGE)\n";
        return kUsage;
    }
    DirectAccess direct(local_db);
    try {
        const queue::SendPageResult result = queue::SendPage(direct.state, rest.join(u' '));
        if (!result.inserted) {
            err << "cvdctl send: " << result.reason << '\n';
            return kFailed;
        }
        out << "enqueued as message " << result.message_id << '\n';
        return kOk;
    } catch (const ProgramHalted& halted) {
        err << "cvdctl send: " << halted.text() << '\n';
        return kFailed;
    }
}

int run_notify_command(const QStringList& arguments, QTextStream& out, QTextStream& err)
{
    if (arguments.size() < 3 || arguments.at(0) != u"--kind") {
        err << "cvdctl notify: usage: notify --kind 2|3 TEXT\n";
        return kUsage;
    }
    bool ok = false;
    const uint kind = arguments.at(1).toUInt(&ok);
    if (!ok || (kind != intake::kActivityKind && kind != intake::kStatusKind)) {
        err << "cvdctl notify: the kind is 2 (activity line) or 3 (status text)\n";
        return kUsage;
    }
    QString error;
    if (!integration_client().notify(kind, arguments.mid(2).join(u' '), &error)) {
        err << "cvdctl notify: " << error << '\n';
        return kFailed;
    }
    out << "sent\n";
    return kOk;
}

int run_stop_command(const QStringList& arguments, QTextStream& out, QTextStream& err)
{
    int limit_seconds = 30;
    if (!read_count_option(arguments, u"--timeout"_s, limit_seconds)) {
        err << "cvdctl stop: usage: stop [--timeout SECONDS]\n";
        return kUsage;
    }
    intake::IntegrationClient client = integration_client();
    if (!client.request_stop()) {
        err << "cvdctl stop: cannot write the stop request\n";
        return kFailed;
    }
    QElapsedTimer waited;
    waited.start();
    while (!client.has_stopped()) {
        if (waited.elapsed() > limit_seconds * 1000LL) {
            err << "cvdctl stop: the program did not stop within " << limit_seconds << " seconds\n";
            return kFailed;
        }
        QThread::msleep(100);
    }
    out << "stopped\n";
    return kOk;
}

int run_status_command(const QStringList& arguments, QTextStream& out, QTextStream& err)
{
    QStringList rest = arguments;
    const bool local_db = take_local_switch(rest);
    const intake::IntegrationClient client = integration_client();
    const bool running = client.program_runs();
    out << "running: " << (running ? "yes" : "no") << '\n';
    if (running) {
        out << "pid: " << client.program_pid() << '\n';
        out << "socket: " << client.channel_path() << '\n';
    }
    DirectAccess direct(local_db);
    const QString path = global_db_path(direct.state);
    if (!isfile(path)) {
        err << "cvdctl status: no database at " << path << '\n';
        return kFailed;
    }
    try {
        store::Database db = store::Database::open(path, store::Database::OpenMode::ReadOnly);
        // The counts of the panels, over every run rather than the running program's own.
        const char* const labels[] = {"waiting", "pending", "sent", "failed"};
        for (const queue::MessageCount count : queue::kMessageCounts) {
            out << labels[static_cast<int>(count)] << ": " << queue::count_messages(db, count, 0) << '\n';
        }
    } catch (const store::Error& error) {
        err << "cvdctl status: " << error.message() << '\n';
        return kFailed;
    }
    return kOk;
}

} // namespace cvd::tools
