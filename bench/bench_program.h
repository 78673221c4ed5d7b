#pragma once

// The program a window benchmark runs over: a temporary folder, an AppState on it, and the console pieces a
// window is built with.
#include "console/activity_log.h"
#include "console/console_context.h"
#include "console/window_owner.h"
#include "core/app_state.h"
#include "core/clock.h"
#include "core/databases.h"
#include "platform/registry.h"
#include "store/database.h"
#include "store/schema.h"
#include "support/null_prompter.h"

#include <QDir>
#include <QString>
#include <QTemporaryDir>

// The console pieces over one AppState, for benchmarks whose AppState lives longer than one window.
struct BenchConsole
{
    explicit BenchConsole(cvd::AppState& state) : context{state, shared, windows, activity, nullptr, {}, {}} {}
    BenchConsole(const BenchConsole&) = delete;
    BenchConsole& operator=(const BenchConsole&) = delete;

    cvd::console::ConsoleState shared;
    cvd::console::WindowOwner windows;
    cvd::console::ActivityLog activity;
    cvd::console::ConsoleContext context;
};

template <class Prompter = cvd::testing::NullPrompter> struct BenchProgram
{
    BenchProgram() : state(prompter, clock, cvd::platform::Registry(dir.path() + u"/registry"), dir.path()) {}
    BenchProgram(const BenchProgram&) = delete;
    BenchProgram& operator=(const BenchProgram&) = delete;

    // Both database folders in the temporary folder, and a fresh global database made and opened there.
    void open_fresh_global_database()
    {
        state.global_db_folder = dir.path() + u'/';
        state.user_db_folder = dir.path() + u'/';
        cvd::store::create_global_database(cvd::global_db_path(state));
        state.global_db = cvd::store::Database::open(cvd::global_db_path(state));
    }

    // The databases in a folder `name` of their own, the user's below it, opened as at start-up.
    void open_named_databases(const QString& name)
    {
        using namespace Qt::StringLiterals;
        state.global_db_folder = dir.path() + u'/' + name + u'/';
        state.user_db_folder = state.global_db_folder + u"user/"_s;
        QDir().mkpath(state.user_db_folder);
        cvd::store::create_global_database(cvd::global_db_path(state));
        cvd::open_database(state);
    }

    QTemporaryDir dir;
    Prompter prompter;
    cvd::SystemClock clock;
    cvd::AppState state;
    BenchConsole console{state};
    cvd::console::ConsoleContext& context = console.context;
};

// `count` recipients r0, r1, ... of priority 5 whose full names sort in another order than their names; every
// `group_every`th is a group.
inline void fill_recipients(cvd::store::Database& db, int count, int group_every)
{
    using namespace Qt::StringLiterals;
    cvd::store::Transaction commit(db);
    cvd::store::Statement insert =
        db.prepare(u"INSERT INTO cv_recipients (cv_name, cv_full_name, cv_group, cv_ad_hoc, cv_priority) "
                   u"VALUES (?1, ?2, ?3, 0, 5)"_s);
    for (int i = 0; i < count; ++i) {
        insert.reset();
        insert.bind(1, u"r"_s + QString::number(i))
            .bind(2, u"Recipient "_s + QString::number((i * 7919) % count))
            .bind(3, i % group_every == 0 ? -1 : 0);
        insert.exec();
    }
    commit.commit();
}
