#include "plugin/LibraryFile.h"

#include <elf.h>
#include <fcntl.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace hal {

namespace {

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

// Whether the file holds all the bytes that the loader would map. Anything but a readable native ELF file passes: the
// loader says by itself what is wrong with it.
bool holdsItsSegments(int fd, off_t size) {
    ElfHeader header;
    if (!readAt(fd, &header, 1, 0) || !isNativeElf(header)) return true;
    std::vector<ElfSegment> segments(header.e_phnum);
    if (!readAt(fd, segments.data(), segments.size(), static_cast<off_t>(header.e_phoff))) return true;
    for (const auto& segment : segments) {
        if (segment.p_type != PT_LOAD) continue;
        const auto available = static_cast<uint64_t>(size);
        if (segment.p_offset > available || segment.p_filesz > available - segment.p_offset) return false;
    }
    return true;
}

}  // namespace

const char* findUnloadable(const std::string& path) {
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) return nullptr;
    struct stat status = {};
    const char* reason = nullptr;
    if (fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) {
        reason = "not a regular file";
    } else if (!holdsItsSegments(fd, status.st_size)) {
        reason = "file is truncated";
    }
    close(fd);
    return reason;
}

}  // namespace hal
