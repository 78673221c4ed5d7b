#pragma once

// A separate process that inserts rows into cv_messages of a database file, as another program on the
// machine does: each row on a connection of its own (open, insert, close), a lock met on the way waited out
// and the row tried again. It reports every row it committed, with the moment of the commit, so that a test
// can tell which rows must be found afterwards. Header-only and over the store alone, so that the store's
// own tests can use it as well.
#include "store/database.h"

#include <QList>
#include <QString>
#include <array>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace cvd::testing {

class WriterProcess
{
public:
    struct Commit
    {
        qint64 number = 0;       // the row's cv_transaction, counting from 1
        qint64 committed_ms = 0; // steady_ms() just after the commit returned
    };

    // The same monotonic clock in every process of the machine.
    static qint64 steady_ms()
    {
        using namespace std::chrono;
        return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
    }

    // Starts writing into the file at `path` at once, with a pause of `pause_ms` after each row.
    WriterProcess(const QString& path, int pause_ms)
    {
        int reports[2] = {-1, -1};
        int stop[2] = {-1, -1};
        if (::pipe(reports) != 0 || ::pipe(stop) != 0) {
            return;
        }
        m_pid = ::fork();
        if (m_pid == 0) {
            ::close(reports[0]);
            ::close(stop[1]);
            write_rows(path, pause_ms, reports[1], stop[0]);
        }
        ::close(reports[1]);
        ::close(stop[0]);
        m_reports = reports[0];
        m_stop = stop[1];
        ::fcntl(m_reports, F_SETFL, ::fcntl(m_reports, F_GETFL) | O_NONBLOCK);
    }

    ~WriterProcess()
    {
        if (m_pid > 0) {
            ::kill(m_pid, SIGKILL);
            ::waitpid(m_pid, nullptr, 0);
        }
        for (const int fd : {m_reports, m_stop}) {
            if (fd >= 0) {
                ::close(fd);
            }
        }
    }

    WriterProcess(const WriterProcess&) = delete;
    WriterProcess& operator=(const WriterProcess&) = delete;

    bool started() const { return m_pid > 0; }

    // Waits until the writer has reported at least `count` rows in all; false when `bound_ms` ran out first.
    // The bound only keeps a broken test from hanging; it is no measure of speed.
    bool wait_for(qsizetype count, int bound_ms)
    {
        const qint64 deadline = steady_ms() + bound_ms;
        while (collect(), m_commits.size() < count) {
            const qint64 left = deadline - steady_ms();
            if (left <= 0) {
                return false;
            }
            pollfd readable{m_reports, POLLIN, 0};
            ::poll(&readable, 1, static_cast<int>(left));
        }
        return true;
    }

    // Asks the writer to end after its current row and waits for it. True when it ended without a failure.
    bool stop()
    {
        if (m_pid <= 0) {
            return false;
        }
        const char byte = 's';
        [[maybe_unused]] const ssize_t written = ::write(m_stop, &byte, 1);
        int status = 0;
        ::waitpid(m_pid, &status, 0);
        m_pid = -1;
        collect();
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

    // What the writer has reported so far, in the order of its commits.
    const QList<Commit>& commits()
    {
        collect();
        return m_commits;
    }

private:
    [[noreturn]] static void write_rows(const QString& path, int pause_ms, int reports, int stop)
    {
        for (qint64 number = 1;; ++number) {
            pollfd asked{stop, POLLIN, 0};
            if (::poll(&asked, 1, 0) > 0) {
                ::_exit(0);
            }
            if (!insert_row(path, number)) {
                ::_exit(3);
            }
            const Commit commit{number, steady_ms()};
            if (::write(reports, &commit, sizeof commit) != static_cast<ssize_t>(sizeof commit)) {
                ::_exit(4);
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(pause_ms));
        }
    }

    // One row on a connection of its own. A lock held elsewhere is waited out; any other failure ends it.
    static bool insert_row(const QString& path, qint64 number)
    {
        for (;;) {
            try {
                store::Database db = store::Database::open(path);
                store::Statement insert = db.prepare(
                    QStringLiteral("INSERT INTO cv_messages (cv_recipient, cv_message, cv_sent, cv_error, "
                                   "cv_scheduled, cv_date_time_sent, cv_transaction) VALUES ('writer', ?1, -1, 0, "
                                   "-1, '2026-11-20 10:00:00', ?2)"));
                insert.bind(1, QStringLiteral("row %1").arg(number)).bind(2, number);
                insert.exec();
                return true;
            } catch (const store::Error& error) {
                if (error.primary_code() != store::codes::Busy && error.primary_code() != store::codes::Locked) {
                    return false;
                }
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    void collect()
    {
        Commit commit;
        for (;;) {
            const ssize_t got = ::read(m_reports, m_pending.data() + m_pending_size, sizeof commit - m_pending_size);
            if (got <= 0) {
                return;
            }
            m_pending_size += static_cast<size_t>(got);
            if (m_pending_size == sizeof commit) {
                std::memcpy(&commit, m_pending.data(), sizeof commit);
                m_commits.append(commit);
                m_pending_size = 0;
            }
        }
    }

    pid_t m_pid = -1;
    int m_reports = -1;
    int m_stop = -1;
    QList<Commit> m_commits;
    std::array<char, sizeof(Commit)> m_pending{};
    size_t m_pending_size = 0;
};

} // namespace cvd::testing
