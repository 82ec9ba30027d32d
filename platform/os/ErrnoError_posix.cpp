#include "platform/os/ErrnoError.h"
#include "platform/os/LastError.h"

#include <cerrno>

namespace qfc {
namespace {

DWORD ErrorOf(int number) {
    switch (number) {
        case ENOENT:
            return ERROR_FILE_NOT_FOUND;
        case ENOTDIR:
        case ENAMETOOLONG:
            return ERROR_PATH_NOT_FOUND;
        case EEXIST:
            return ERROR_FILE_EXISTS;
        case ENOSPC:
        case EDQUOT:
            return ERROR_DISK_FULL;
        case ENOMEM:
            return ERROR_NOT_ENOUGH_MEMORY;
        case EINVAL:
            return ERROR_INVALID_PARAMETER;
        default:
            return ERROR_ACCESS_DENIED;
    }
}

}  // namespace

bool FailWithErrno() {
    SetLastError(ErrorOf(errno));
    return false;
}

}  // namespace qfc
