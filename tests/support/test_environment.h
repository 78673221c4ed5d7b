#pragma once

#include "core/app_state.h"
#include "support/pinned_clock.h"
#include "support/scoped_environment.h"
#include "support/scripted_prompter.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QTemporaryDir>
#include <memory>
#include <utility>

namespace cvd::testing {

// A private world for one test: every data folder, the registry root and the runtime folder lie in a
// temporary directory, pointed to by the variables the program reads. The old variables come back when
// the environment ends.
class TestEnvironment
{
public:
    TestEnvironment();
    TestEnvironment(const TestEnvironment&) = delete;
    TestEnvironment& operator=(const TestEnvironment&) = delete;

    QString path(const QString& relative = {}) const;
    QString program_folder() const { return path(QStringLiteral("program/")); }
    QString registry_root() const { return path(QStringLiteral("registry")); }
    QString runtime_dir() const { return path(QStringLiteral("runtime")); }

    // Where the program puts its databases in the normal form.
    QString global_db_folder() const;
    QString user_db_folder() const;

    // A program state over this environment, with the scripted prompter and the pinned clock below.
    std::unique_ptr<AppState> make_state();

    ScriptedPrompter prompter;
    PinnedClock clock;

private:
    QTemporaryDir m_dir;
    ScopedEnvironment m_environment; // the old values come back when the environment ends
};

} // namespace cvd::testing
