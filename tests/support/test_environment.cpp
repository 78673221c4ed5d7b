#include "support/test_environment.h"

#include <QDir>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace cvd::testing {

TestEnvironment::TestEnvironment()
{
    for (const char* folder : {"program", "registry", "runtime", "common", "data", "state"}) {
        QDir(m_dir.path()).mkpath(QString::fromLatin1(folder));
    }
    set_variable("CVD_COMMON_APPDATA", path(u"common"_s));
    set_variable("XDG_DATA_HOME", path(u"data"_s));
    set_variable("XDG_STATE_HOME", path(u"state"_s));
    set_variable("CVD_REGISTRY_ROOT", registry_root());
    set_variable("CVD_RUNTIME_DIR", runtime_dir());
    set_variable("XDG_RUNTIME_DIR", runtime_dir());
}

TestEnvironment::~TestEnvironment()
{
    for (const auto& [name, value] : m_saved) {
        if (value) {
            ::setenv(name.constData(), value->constData(), 1);
        } else {
            ::unsetenv(name.constData());
        }
    }
}

void TestEnvironment::set_variable(const char* name, const QString& value)
{
    const char* old = std::getenv(name);
    m_saved.append({QByteArray(name), old ? std::optional<QByteArray>(QByteArray(old)) : std::nullopt});
    ::setenv(name, value.toUtf8().constData(), 1);
}

QString TestEnvironment::path(const QString& relative) const
{
    return relative.isEmpty() ? m_dir.path() : m_dir.path() + u'/' + relative;
}

QString TestEnvironment::global_db_folder() const
{
    return path(u"common/Halvern/Corvane Desk/5.0/"_s);
}

QString TestEnvironment::user_db_folder() const
{
    return path(u"data/Halvern/Corvane Desk/5.0/"_s);
}

std::unique_ptr<AppState> TestEnvironment::make_state()
{
    return std::make_unique<AppState>(prompter, clock, platform::Registry(registry_root()), runtime_dir());
}

} // namespace cvd::testing
