#include "tools/Dump.h"

#include <sys/mman.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <memory>

namespace subsysctl {

binder_status_t dumpOf(AIBinder* binder, const std::vector<const char*>& arguments, std::string& text) {
    const std::unique_ptr<FILE, int (*)(FILE*)> file(fdopen(memfd_create("dump", MFD_CLOEXEC), "w+"), std::fclose);
    if (!file) return -errno;
    const binder_status_t status = AIBinder_dump(binder, fileno(file.get()), const_cast<const char**>(arguments.data()),
                                                 static_cast<uint32_t>(arguments.size()));
    std::rewind(file.get());
    for (char part[4096]; const size_t size = std::fread(part, 1, sizeof(part), file.get());) text.append(part, size);
    return status;
}

}  // namespace subsysctl
