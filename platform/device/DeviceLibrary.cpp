#include <device/DeviceLibrary.h>

#include <android/log.h>
#include <device/DevicePath.h>
#include <device/Mutex.h>

#include <android-base/unique_fd.h>
#include <dlfcn.h>
#include <elf.h>
#include <fcntl.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <set>
#include <string_view>
#include <vector>

namespace device {

namespace {

constexpr const char* TAG = "DeviceLibrary";

using ElfHeader = ElfW(Ehdr);
using ElfSegment = ElfW(Phdr);

template <typename T>
bool readAt(int fd, T* values, size_t count, off_t offset) {
    const size_t size = sizeof(T) * count;
    return pread(fd, values, size, offset) == static_cast<ssize_t>(size);
}

bool isNativeElf(const ElfHeader& header) {
    constexpr uint8_t nativeClass = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;
    return std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 && header.e_ident[EI_CLASS] == nativeClass &&
           header.e_phentsize == sizeof(ElfSegment);
}

bool endsWithin(const ElfSegment& segment, uint64_t size) {
    return segment.p_type != PT_LOAD || (segment.p_offset <= size && segment.p_filesz <= size - segment.p_offset);
}

// Whether the file holds all the bytes that the loader would map. Anything but a readable native ELF file passes: the
// loader says by itself what is wrong with it.
bool holdsItsSegments(int fd, off_t size) {
    ElfHeader header;
    if (!readAt(fd, &header, 1, 0) || !isNativeElf(header)) return true;
    std::vector<ElfSegment> segments(header.e_phnum);
    if (!readAt(fd, segments.data(), segments.size(), static_cast<off_t>(header.e_phoff))) return true;
    for (const auto& segment : segments) {
        if (!endsWithin(segment, static_cast<uint64_t>(size))) return false;
    }
    return true;
}

// What in the file the loader would not survive, or null. What it only refuses is left to it.
const char* findDangerous(const std::string& file) {
    const android::base::unique_fd fd(open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (fd < 0) return nullptr;
    struct stat status = {};
    if (fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) return "not a regular file";
    return holdsItsSegments(fd, status.st_size) ? nullptr : "file is truncated";
}

// Most of the loader's messages begin with the file; some name only what the file needs.
std::string loaderReason(const std::string& file) {
    std::string_view reason = dlerror();
    if (reason.starts_with(file + ": ")) reason.remove_prefix(file.size() + 2);
    return std::string(reason);
}

struct LinesSoFar {
    Mutex lock;
    std::set<std::string> lines SUBSYS_GUARDED_BY(lock);
};

bool isNew(const std::string& line) {
    // Never destroyed: a plugin may be opened while the process ends.
    static auto& sSoFar = *new LinesSoFar();
    const MutexLock lock(sSoFar.lock);
    return sSoFar.lines.insert(line).second;
}

}  // namespace

void* openLibraryFile(const std::string& file, int flags, std::string& reason) {
    if (const char* danger = findDangerous(file)) {
        reason = danger;
        return nullptr;
    }
    void* const handle = dlopen(file.c_str(), flags);
    if (handle == nullptr) reason = loaderReason(file);
    return handle;
}

void* openLibrary(const std::string& absolutePath) {
    const std::string file = path(absolutePath);
    std::string reason;
    void* const handle = openLibraryFile(file, RTLD_NOW | RTLD_GLOBAL, reason);
    if (handle != nullptr) return handle;
    const std::string line = "can't open " + file + ": " + reason;
    if (isNew(line)) __android_log_write(ANDROID_LOG_ERROR, TAG, line.c_str());
    return nullptr;
}

}  // namespace device
