#include "tools/Dump.h"

#include <device/Escape.h>

#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <sstream>

namespace subsysctl {

namespace {

// A service may write anything.
std::string printable(const std::string& text) {
    std::string lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines += device::escaped(line) + "\n";
    return lines;
}

}  // namespace

binder_status_t dumpOf(AIBinder* binder, const std::vector<const char*>& arguments, std::string& text) {
    const int file = memfd_create("dump", MFD_CLOEXEC);
    if (file < 0) return -errno;
    const binder_status_t status = AIBinder_dump(binder, file, const_cast<const char**>(arguments.data()),
                                                 static_cast<uint32_t>(arguments.size()));
    std::array<char, 4096> part{};
    text.clear();
    for (ssize_t size = 0; (size = pread(file, part.data(), part.size(), static_cast<off_t>(text.size()))) > 0;) {
        text.append(part.data(), static_cast<size_t>(size));
    }
    close(file);
    text = printable(text);
    return status;
}

DumpLines linesOf(const std::string& dump) {
    DumpLines lines;
    std::istringstream in(dump);
    for (std::string line; std::getline(in, line);) {
        const size_t colon = line.find(": ");
        if (colon != std::string::npos) lines[line.substr(0, colon)] = line.substr(colon + 2);
    }
    return lines;
}

}  // namespace subsysctl
