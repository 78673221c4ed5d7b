#include "core/app_state.h"

#include <utility>

namespace cvd {

AppState::AppState(Prompter& prompter_in, Clock& clock_in, platform::Registry registry_in, QString runtime_dir_in)
    : prompter(prompter_in), clock(clock_in), registry(std::move(registry_in)), runtime_dir(std::move(runtime_dir_in))
{
    process_table.fill(QString(), kProcessTableSize);
}

} // namespace cvd
