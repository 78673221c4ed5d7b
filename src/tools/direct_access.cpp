#include "tools/direct_access.h"

#include "core/startup.h"
#include "platform/folders.h"
#include "platform/registry.h"
#include "platform/runtime.h"

using namespace Qt::StringLiterals;

namespace cvd::tools {

DirectAccess::DirectAccess(bool local_db)
    : state(prompter, clock, platform::Registry(platform::Registry::default_root()), platform::runtime_folder())
{
    state.program_folder = platform::executable_folder();
    state.local_db = local_db;
    fix_folders(state);
}

bool take_local_switch(QStringList& arguments)
{
    return arguments.removeAll(u"--localdb"_s) + arguments.removeAll(u"/localdb"_s) > 0;
}

bool read_count_option(const QStringList& options, const QString& flag, int& value)
{
    if (options.isEmpty()) {
        return true;
    }
    if (options.size() != 2 || options.at(0) != flag) {
        return false;
    }
    bool ok = false;
    const int count = options.at(1).toInt(&ok);
    if (!ok || count < 0) {
        return false;
    }
    value = count;
    return true;
}

} // namespace cvd::tools
