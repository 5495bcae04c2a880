#include "service/OsUtils.h"

#include <mindroid/Log.h>

#include <cerrno>
#include <csignal>
#include <system_error>

using mindroid::Log;

namespace hal {

bool OsUtils::killProcess(int32_t /*serial*/, int32_t pid, const std::string& name) {
    const intmax_t id = pid;
    if (pid < 1 || name.empty()) {
        Log::e(TAG, "invalid pid [ %jd] or name is null", id);
        return false;
    }
    if (name != mAllowedProcessList.front()) {
        Log::e(TAG, "not allowed to kill this process");
        return false;
    }
    Log::d(TAG, "killing  [ %jd] with name: %s ", id, name.c_str());
    if (kill(pid, SIGKILL) != 0) {
        Log::e(TAG, "failed to kill [ %jd] with error: %s ", id, std::generic_category().message(errno).c_str());
        return false;
    }
    return true;
}

}  // namespace hal
