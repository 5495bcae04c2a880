#include <device/RuntimeFolder.h>

#include <android-base/unique_fd.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace device {

namespace {

int fail(std::string& trouble, const char* what, int error) {
    trouble = what + std::string(strerror(error));
    errno = error;
    return -1;
}

// Why a folder is not this user's alone, or null.
const char* troubleWith(const struct stat& status) {
    if (S_ISLNK(status.st_mode)) return "is a link";
    if (!S_ISDIR(status.st_mode)) return "is no folder";
    if (status.st_uid != geteuid()) return "belongs to another user";
    return (status.st_mode & (S_IRWXG | S_IRWXO)) != 0 ? "is open to other users" : nullptr;
}

}  // namespace

std::string runtimeFolder() {
    const char* own = getenv("SUBSYS_BINDER_DIR");
    if (own != nullptr && *own != '\0') return own;
    const char* runtime = getenv("XDG_RUNTIME_DIR");
    if (runtime != nullptr && *runtime != '\0') return std::string(runtime) + "/subsys-binder";
    return "/tmp/subsys-binder-" + std::to_string(geteuid());
}

int openRuntimeFolder(std::string& trouble) {
    android::base::unique_fd folder(open(runtimeFolder().c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    if (folder < 0 || fstat(folder, &status) != 0) return fail(trouble, "cannot be opened: ", errno);
    const char* const found = troubleWith(status);
    if (found == nullptr) return folder.release();
    trouble = found;
    errno = EPERM;
    return -1;
}

int makeRuntimeFolder(std::string& trouble) {
    const bool isThere = mkdir(runtimeFolder().c_str(), S_IRWXU) == 0 || errno == EEXIST;
    return isThere ? openRuntimeFolder(trouble) : fail(trouble, "cannot be made: ", errno);
}

}  // namespace device
