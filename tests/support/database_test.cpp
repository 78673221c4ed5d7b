#include "support/database_test.h"

#include "core/databases.h"
#include "core/settings.h"
#include "store/database.h"
#include "store/schema.h"

#include <QDir>

using namespace Qt::StringLiterals;

namespace cvd::testing {

void DatabaseTest::SetUp()
{
    state = env.make_state();
    state->program_folder = env.program_folder();
    state->global_db_folder = env.path(u"g/"_s);
    state->user_db_folder = env.path(u"u/"_s);
    QDir().mkpath(state->program_folder);
    QDir().mkpath(state->global_db_folder);
    QDir().mkpath(state->user_db_folder);
    if (m_start == Start::LoadSettings) {
        load_settings(*state);
        return;
    }
    store::create_global_database(global_db_path(*state));
    open_database(*state);
}

qint64 DatabaseTest::scalar(const QString& sql)
{
    store::Statement select = state->global_db.prepare(sql);
    return select.step() ? select.integer(0).value_or(-1) : -1;
}

} // namespace cvd::testing
