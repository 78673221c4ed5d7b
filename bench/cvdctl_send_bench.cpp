// How many messages a script can hand in with `cvdctl send`, one process per message, while
// `cvd --headless` runs: everything a call costs, from the start of the process to its exit.
#include "platform/folders.h"
#include "platform/runtime.h"
#include "store/database.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>
#include <benchmark/benchmark.h>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <optional>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <vector>

extern char** environ;

using namespace Qt::StringLiterals;

namespace {

// Starts a program of the build's bin folder with its output thrown away; -1 when it cannot be started.
pid_t spawn(const QStringList& command)
{
    std::vector<QByteArray> words;
    words.push_back(QFile::encodeName(cvd::platform::executable_folder() + command.first()));
    for (const QString& argument : command.mid(1)) {
        words.push_back(argument.toUtf8());
    }
    std::vector<char*> argv;
    for (QByteArray& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    pid_t pid = -1;
    const int failed = posix_spawn(&pid, argv.front(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return failed ? -1 : pid;
}

// The exit status of a started program once it has ended; -1 for one that did not start or end normally.
// The processor time it took (user and system) is added to *cpu_seconds when given.
int exit_status(pid_t pid, double* cpu_seconds = nullptr)
{
    if (pid <= 0) {
        return -1;
    }
    int status = 0;
    rusage usage{};
    while (::wait4(pid, &status, 0, &usage) < 0 && errno == EINTR) {
    }
    if (cpu_seconds != nullptr) {
        for (const timeval& time : {usage.ru_utime, usage.ru_stime}) {
            *cpu_seconds += static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
        }
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// cvd --headless in a private environment of its own, with one recipient. The variables the programs read
// are set for as long as it runs and restored afterwards, for the benchmarks that follow in this process.
class RunningProgram
{
public:
    RunningProgram()
    {
        for (const char* name : {"CVD_COMMON_APPDATA", "XDG_DATA_HOME", "XDG_STATE_HOME", "CVD_REGISTRY_ROOT",
                                 "CVD_RUNTIME_DIR", "XDG_RUNTIME_DIR"}) {
            const char* old = std::getenv(name);
            m_saved.push_back({name, old ? std::optional<QByteArray>(old) : std::nullopt});
            const QString folder = m_dir.path() + u'/' + QString::fromLatin1(name);
            QDir().mkpath(folder);
            ::setenv(name, QFile::encodeName(folder).constData(), 1);
        }
        m_pid = spawn({u"cvd"_s, u"--headless"_s});
        const QDeadlineTimer deadline(60000);
        while (m_pid > 0 && !deadline.hasExpired() && !cvd::platform::running_marker_is_held(runtime_dir())) {
            QThread::msleep(20);
        }
        if (!cvd::platform::running_marker_is_held(runtime_dir())) {
            m_error = "cvd --headless did not start (are cvd and cvdctl built?)";
            return;
        }
        cvd::store::Database db =
            cvd::store::Database::open(m_dir.path() + u"/CVD_COMMON_APPDATA/Halvern/Corvane Desk/5.0/cvd.mdb"_s);
        db.exec(
            u"INSERT INTO cv_recipients (cv_name, cv_id, cv_carrier, cv_group) VALUES ('bob', '5551', 'tapnet', 0)"_s);
    }

    ~RunningProgram()
    {
        if (m_pid > 0) {
            ::kill(m_pid, SIGTERM);
            exit_status(m_pid);
        }
        for (const auto& [name, value] : m_saved) {
            if (value) {
                ::setenv(name, value->constData(), 1);
            } else {
                ::unsetenv(name);
            }
        }
    }
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    const char* error() const { return m_error; }

private:
    QString runtime_dir() const { return m_dir.path() + u"/CVD_RUNTIME_DIR"_s; }

    QTemporaryDir m_dir;
    std::vector<std::pair<const char*, std::optional<QByteArray>>> m_saved;
    pid_t m_pid = -1;
    const char* m_error = nullptr;
};

// Runs the command once per iteration; items_per_second is processes per second, cpu_ms what each took of
// the processor itself, which a busy machine inflates less than the elapsed time.
void run_processes(benchmark::State& bench, const QStringList& command)
{
    double cpu_seconds = 0;
    for (auto _ : bench) {
        if (exit_status(spawn(command), &cpu_seconds) != 0) {
            bench.SkipWithError("the command failed");
            return;
        }
    }
    bench.SetItemsProcessed(bench.iterations());
    bench.counters["cpu_ms"] = benchmark::Counter(cpu_seconds * 1000 / static_cast<double>(bench.iterations()));
}

void BM_CvdctlSendWhileTheProgramRuns(benchmark::State& bench)
{
    RunningProgram program;
    if (program.error() != nullptr) {
        bench.SkipWithError(program.error());
        return;
    }
    run_processes(bench, {u"cvdctl"_s, u"send"_s, u"bob"_s, u"ops"_s, u"Disk full on db1, please look"_s});
}
BENCHMARK(BM_CvdctlSendWhileTheProgramRuns)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(500);

// The floor: a process of the same program that links QtCore, starts and exits without any work.
void BM_CvdctlVersionOnly(benchmark::State& bench)
{
    run_processes(bench, {u"cvdctl"_s, u"--version"_s});
}
BENCHMARK(BM_CvdctlVersionOnly)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(500);

} // namespace
