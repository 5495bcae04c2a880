#include <device/RuntimeFolder.h>

#include <android-base/unique_fd.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace device {

std::string runtimeFolder() {
    const char* own = getenv("SUBSYS_BINDER_DIR");
    if (own != nullptr && *own != '\0') return own;
    const char* runtime = getenv("XDG_RUNTIME_DIR");
    if (runtime != nullptr && *runtime != '\0') return std::string(runtime) + "/subsys-binder";
    return "/tmp/subsys-binder-" + std::to_string(geteuid());
}

int openRuntimeFolder() {
    const std::string path = runtimeFolder();
    mkdir(path.c_str(), S_IRWXU);
    android::base::unique_fd folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    if (folder < 0 || fstat(folder, &status) != 0) return -1;
    if (status.st_uid == geteuid() && (status.st_mode & (S_IRWXG | S_IRWXO)) == 0) return folder.release();
    errno = EPERM;
    return -1;
}

}  // namespace device
