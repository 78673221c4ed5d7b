#include "store/error_codes.h"

#include <sqlite3.h>

namespace cvd::store {

bool is_transient_error(int extended_code)
{
    switch (extended_code & 0xff) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return true;
    case SQLITE_IOERR:
        break;
    default:
        return false;
    }
    switch (extended_code) {
    case SQLITE_IOERR_LOCK:
    case SQLITE_IOERR_RDLOCK:
    case SQLITE_IOERR_UNLOCK:
    case SQLITE_IOERR_CHECKRESERVEDLOCK:
    case SQLITE_IOERR_SHMLOCK:
    case SQLITE_IOERR_SHMMAP:
    case SQLITE_IOERR_BLOCKED:
        return true;
    default:
        return false;
    }
}

bool is_damage_error(int extended_code)
{
    const int primary = extended_code & 0xff;
    return primary == SQLITE_CORRUPT || primary == SQLITE_NOTADB;
}

} // namespace cvd::store
