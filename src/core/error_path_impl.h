#pragma once

#include "core/error_path.h"
#include "store/database.h"

namespace cvd {

template <typename Step> auto with_retry(AppState& state, const QString& procedure, Step&& step) -> decltype(step())
{
    for (;;) {
        try {
            return step();
        } catch (const store::Error& error) {
            handle_error(state, procedure, database_error_info(error));
        } catch (const FileError& error) {
            handle_error(state, procedure, file_error_info(error.error_number()));
        }
    }
}

} // namespace cvd
