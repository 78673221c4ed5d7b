#pragma once

#include "core/app_state.h"
#include "support/test_environment.h"

#include <QString>
#include <gtest/gtest.h>
#include <memory>

namespace cvd::testing {

// The fixture of most suites: a program state in a private environment with both databases created and
// opened in the folders g/ (global) and u/ (user). With `kLoadSettings` the settings are loaded as at
// start-up, which also creates the databases.
class DatabaseTest : public ::testing::Test
{
protected:
    enum class Start { OpenDatabases, LoadSettings };

    explicit DatabaseTest(Start start = Start::OpenDatabases) : m_start(start) {}
    void SetUp() override;

    store::Database& db() { return state->global_db; }
    // The first column of the first row of a query without parameters; -1 when there is no row.
    qint64 scalar(const QString& sql);

    TestEnvironment env;
    std::unique_ptr<AppState> state;

private:
    Start m_start;
};

} // namespace cvd::testing
