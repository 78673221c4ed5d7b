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

} // namespace cvd::tools
