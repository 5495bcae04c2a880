#include "NameFolder.h"

#include "Limits.h"
#include "Log.h"

#include <device/RuntimeFolder.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace binder {
namespace {

constexpr size_t MAX_NAME = 127;
constexpr int BACKLOG = 128;

// A file name: '%' and '@' cannot be part of a name, so two names or a name and its lock never meet.
std::string fileOf(std::string_view name, std::string_view kind) {
    std::string file = std::string(kind) + "@" + std::string(name);
    std::replace(file.begin(), file.end(), '/', '%');
    return file;
}

std::string socketOf(std::string_view name) {
    return fileOf(name, "socket");
}
std::string lockOf(std::string_view name) {
    return fileOf(name, "lock");
}

// The address of an open file, which may have a longer name than an address holds.
sockaddr_un addressOf(int fd, const std::string& file) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const char* slash = file.empty() ? "" : "/";
    snprintf(address.sun_path, sizeof(address.sun_path), "/proc/self/fd/%d%s%s", fd, slash, file.c_str());
    return address;
}

const sockaddr* plain(const sockaddr_un& address) {
    return static_cast<const sockaddr*>(static_cast<const void*>(&address));
}

UniqueFd streamSocket(int flags) {
    return UniqueFd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | flags, 0));
}

// Of connecting, writing and reading.
void setTimeout(const UniqueFd& fd, std::chrono::seconds time) {
    const timeval timeout{time.count(), 0};
    setsockopt(fd.get(), SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof(timeout));
    setsockopt(fd.get(), SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof(timeout));
}

struct flock wholeFile() {
    struct flock region {};
    region.l_type = F_WRLCK;
    region.l_whence = SEEK_SET;
    return region;
}

// Leaves errno as it is.
void logTrouble(const std::string& trouble) {
    const int reason = errno;
    warn("the folder of names %s %s", device::runtimeFolder().c_str(), trouble.c_str());
    errno = reason;
}

bool isSameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

}  // namespace

bool NameFolder::isName(const char* name) {
    if (name == nullptr) return false;
    const std::string_view text(name);
    return !text.empty() && text.size() <= MAX_NAME && std::all_of(text.begin(), text.end(), [](char each) {
        return (each >= 'a' && each <= 'z') || (each >= 'A' && each <= 'Z') || (each >= '0' && each <= '9') ||
               strchr("_./-", each) != nullptr;
    });
}

UniqueFd NameFolder::open() {
    std::string trouble;
    UniqueFd folder(device::makeRuntimeFolder(trouble));
    if (!folder.isValid()) logTrouble(trouble);
    return folder;
}

UniqueFd NameFolder::openExisting() {
    std::string trouble;
    UniqueFd folder(device::openRuntimeFolder(trouble));
    if (!folder.isValid() && errno != ENOENT) logTrouble(trouble);
    return folder;
}

bool NameFolder::watch(const UniqueFd& folder, const UniqueFd& inotify, uint32_t events) {
    return inotify_add_watch(inotify.get(), addressOf(folder.get(), "").sun_path, events) >= 0;
}

UniqueFd NameFolder::lock(const UniqueFd& folder, std::string_view name) {
    UniqueFd file(
        openat(folder.get(), lockOf(name).c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    struct flock region = wholeFile();
    return file.isValid() && fcntl(file.get(), F_OFD_SETLK, &region) == 0 ? std::move(file) : UniqueFd();
}

bool NameFolder::isLockIn(const UniqueFd& folder, std::string_view name, const UniqueFd& lock) {
    struct stat here {};
    struct stat held {};
    return fstatat(folder.get(), lockOf(name).c_str(), &here, AT_SYMLINK_NOFOLLOW) == 0 &&
           fstat(lock.get(), &held) == 0 && isSameFile(here, held);
}

ino_t NameFolder::socketIn(const UniqueFd& folder, std::string_view name) {
    struct stat status {};
    return fstatat(folder.get(), socketOf(name).c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 ? status.st_ino : 0;
}

bool NameFolder::isLocked(std::string_view name) {
    const UniqueFd folder = openExisting();
    if (!folder.isValid()) return false;
    const UniqueFd file(openat(folder.get(), lockOf(name).c_str(), O_RDWR | O_NOFOLLOW | O_CLOEXEC));
    struct flock region = wholeFile();
    return file.isValid() && fcntl(file.get(), F_OFD_GETLK, &region) == 0 && region.l_type != F_UNLCK;
}

UniqueFd NameFolder::listen(const UniqueFd& folder, std::string_view name) {
    static std::atomic<int> sCount{0};
    const std::string fresh = "new@" + std::to_string(getpid()) + "@" + std::to_string(++sCount);
    unlinkat(folder.get(), fresh.c_str(), 0);
    UniqueFd listener = streamSocket(SOCK_NONBLOCK);
    const sockaddr_un address = addressOf(folder.get(), fresh);
    // It listens before it gets its name, so that nobody finds it deaf.
    if (listener.isValid() && bind(listener.get(), plain(address), sizeof(address)) == 0 &&
        ::listen(listener.get(), BACKLOG) == 0 &&
        renameat(folder.get(), fresh.c_str(), folder.get(), socketOf(name).c_str()) == 0) {
        return listener;
    }
    const int reason = errno;
    unlinkat(folder.get(), fresh.c_str(), 0);
    errno = reason;
    return UniqueFd();
}

UniqueFd NameFolder::connect(std::string_view name) {
    const UniqueFd folder = openExisting();
    if (!folder.isValid()) return UniqueFd();
    const UniqueFd file(openat(folder.get(), socketOf(name).c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    UniqueFd connection = streamSocket(0);
    if (!file.isValid() || !connection.isValid()) return UniqueFd();
    setTimeout(connection, HELLO_TIME);
    const sockaddr_un address = addressOf(file.get(), "");
    return ::connect(connection.get(), plain(address), sizeof(address)) == 0 ? std::move(connection) : UniqueFd();
}

}  // namespace binder
