#include "support/test_environment.h"

#include <QDir>
#include <QFile>

using namespace Qt::StringLiterals;

namespace cvd::testing {

TestEnvironment::TestEnvironment()
{
    for (const char* folder : {"program", "registry", "runtime", "common", "data", "state"}) {
        QDir(m_dir.path()).mkpath(QString::fromLatin1(folder));
    }
    // Qt wants the runtime folder private, as the desktop makes it, and says so on stderr otherwise.
    QFile::setPermissions(runtime_dir(), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    m_environment.set("CVD_COMMON_APPDATA", path(u"common"_s));
    m_environment.set("XDG_DATA_HOME", path(u"data"_s));
    m_environment.set("XDG_STATE_HOME", path(u"state"_s));
    m_environment.set("CVD_REGISTRY_ROOT", registry_root());
    m_environment.set("CVD_RUNTIME_DIR", runtime_dir());
    m_environment.set("XDG_RUNTIME_DIR", runtime_dir());
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
