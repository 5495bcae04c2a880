#include "host/ComponentLibrary.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <vector>

namespace {

template <typename T>
bool readAt(int fd, uint64_t offset, T* values, size_t count) {
    const size_t size = sizeof(T) * count;
    return pread(fd, values, size, static_cast<off_t>(offset)) == static_cast<ssize_t>(size);
}

// Whether the file ends before a part of it that the loader would map. Of what is no library the loader says so itself.
bool isCutShort(int fd, uint64_t size) {
    ElfW(Ehdr) header{};
    if (!readAt(fd, 0, &header, 1) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) return false;
    if (header.e_phentsize != sizeof(ElfW(Phdr))) return false;
    std::vector<ElfW(Phdr)> segments(header.e_phnum);
    if (!readAt(fd, header.e_phoff, segments.data(), segments.size())) return true;
    for (const auto& segment : segments) {
        if (segment.p_type != PT_LOAD) continue;
        if (segment.p_offset > size || segment.p_filesz > size - segment.p_offset) return true;
    }
    return false;
}

// What keeps the loader from the file, or null: it waits for ever on a FIFO, and the process dies with SIGBUS when it
// loads a library that was cut short.
const char* findUnloadable(const std::string& library) {
    const int fd = open(library.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) return nullptr;
    struct stat status {};
    const char* reason = nullptr;
    if (fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) {
        reason = "not a regular file";
    } else if (isCutShort(fd, static_cast<uint64_t>(status.st_size))) {
        reason = "file is truncated";
    }
    close(fd);
    return reason;
}

}  // namespace

bool loadComponentLibrary(const std::string& name) {
    // An absolute path, so that dlopen takes no bare name to its search path.
    const std::string library = std::filesystem::absolute(name);
    const char* unloadable = findUnloadable(library);
    if (unloadable == nullptr && dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL) != nullptr) return true;
    const std::string reason = unloadable != nullptr ? library + ": " + unloadable : dlerror();
    fprintf(stderr, "subsysd: can't load a component library: %s\n", reason.c_str());
    return false;
}
