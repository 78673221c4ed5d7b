#include "tools/control_commands.h"

#include "terminal/terminal_prompter.h"
#include "core/app_state.h"
#include "core/clock.h"
#include "core/databases.h"
#include "core/error_path.h"
#include "core/file_ops.h"
#include "core/startup.h"
#include "platform/datagram.h"
#include "platform/folders.h"
#include "platform/registry.h"
#include "platform/runtime.h"
#include "queue/send_page.h"
#include "store/database.h"
#include "tools/direct_access.h"

#include <QElapsedTimer>
#include <QThread>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace cvd::tools {

namespace {

constexpr int kOk = 0;
constexpr int kFailed = 1;
constexpr int kUsage = 2;
constexpr quint32 kActivityKind = 2;
constexpr quint32 kStatusKind = 3;
const QString kTransferKey = u"SOFTWARE\\Halvern\\Transfer"_s;

platform::Registry machine_store()
{
    return platform::Registry(platform::Registry::default_root());
}

// The running program's channel: the published `Socket`, else the usual place in the runtime folder.
QString channel_path()
{
    const std::optional<QString> published =
        machine_store().read_text(platform::Hive::LocalMachine, kTransferKey, u"Socket"_s);
    if (published && !published->isEmpty()) {
        return *published;
    }
    return platform::runtime_folder() + u'/' + QLatin1StringView(platform::kSocketName);
}

bool program_runs()
{
    return platform::program_is_running(platform::runtime_folder());
}

// The channel holds only a few datagrams while the program is busy in a tick; a full channel is tried again
// for a while before the send counts as failed.
bool send_to_program(quint32 kind, const QString& text, QString* error)
{
    constexpr int kTries = 50;
    for (int attempt = 1;; ++attempt) {
        if (platform::send_datagram(channel_path(), kind, text, error)) {
            return true;
        }
        if (attempt == kTries || !program_runs()) {
            return false;
        }
        QThread::msleep(100);
    }
}

} // namespace

int run_send_command(const QStringList& arguments, QTextStream& out, QTextStream& err)
{
    QStringList rest = arguments;
    const bool local_db = take_local_switch(rest);
    if (rest.isEmpty()) {
        err << "cvdctl send: missing the line (RECIPIENT SENDER MESSAGE)\n";
        return kUsage;
    }
    const QString line = rest.join(u' ');
    if (program_runs()) {
        QString error;
        if (send_to_program(kStatusKind, u"sendpage "_s + line, &error)) {
            out << "handed to the running program\n";
            return kOk;
        }
        err << "cvdctl send: " << error << '\n';
        return kFailed;
    }
    DirectAccess direct(local_db);
    try {
        const queue::SendPageResult result = queue::SendPage(direct.state, line);
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
    if (!ok || (kind != kActivityKind && kind != kStatusKind)) {
        err << "cvdctl notify: the kind is 2 (activity line) or 3 (status text)\n";
        return kUsage;
    }
    if (!program_runs()) {
        err << "cvdctl notify: Corvane Desk is not running\n";
        return kFailed;
    }
    QString error;
    if (!send_to_program(kind, arguments.mid(2).join(u' '), &error)) {
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
    platform::Registry registry = machine_store();
    if (!registry.create_key(platform::Hive::LocalMachine, kTransferKey) ||
        !registry.write_number(platform::Hive::LocalMachine, kTransferKey, u"Stop"_s, 1)) {
        err << "cvdctl stop: cannot write the stop request\n";
        return kFailed;
    }
    QElapsedTimer waited;
    waited.start();
    while (registry.read_number(platform::Hive::LocalMachine, kTransferKey, u"Running"_s).value_or(0) != 0) {
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
    platform::Registry registry = machine_store();
    const bool running = program_runs();
    out << "running: " << (running ? "yes" : "no") << '\n';
    if (running) {
        out << "pid: " << registry.read_number(platform::Hive::LocalMachine, kTransferKey, u"Handle"_s).value_or(0)
            << '\n';
        out << "socket: " << channel_path() << '\n';
    }
    DirectAccess direct(local_db);
    const QString path = global_db_path(direct.state);
    if (!isfile(path)) {
        err << "cvdctl status: no database at " << path << '\n';
        return kFailed;
    }
    try {
        store::Database db = store::Database::open(path, store::Database::OpenMode::ReadOnly);
        // Finished group rows (transaction 0) and the pseudo recipient never count.
        const QList<std::pair<const char*, QString>> counts{
            {"waiting", u"(cv_scheduled = 0) AND (cv_sent = 0) AND (cv_error = 0)"_s},
            {"pending", u"(cv_scheduled <> 0) AND (cv_sent = 0) AND (cv_error = 0)"_s},
            {"sent", u"(cv_sent <> 0) AND (cv_error = 0) AND (cv_transaction <> 0)"_s},
            {"failed", u"(cv_error <> 0) AND (cv_transaction <> 0)"_s},
        };
        for (const auto& [label, condition] : counts) {
            store::Statement count = db.prepare(u"SELECT count(*) FROM cv_messages WHERE "_s + condition +
                                                u" AND (cv_recipient <> 'cvdscreen')"_s);
            out << label << ": " << (count.step() ? count.integer(0).value_or(0) : 0) << '\n';
        }
    } catch (const store::Error& error) {
        err << "cvdctl status: " << error.message() << '\n';
        return kFailed;
    }
    return kOk;
}

} // namespace cvd::tools
