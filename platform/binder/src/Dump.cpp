#include "Dump.h"

#include "Frame.h"
#include "IBinder.h"
#include "Log.h"
#include "Parcel.h"
#include "UniqueFd.h"

#include <android/binder_parcel_utils.h>

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace binder {
namespace {

// Room for the length is left.
constexpr size_t MAX_TEXT = MAX_CALL - 64;

bool writeAll(int fd, const std::vector<uint8_t>& text) {
    for (size_t written = 0; written < text.size();) {
        const ssize_t count = write(fd, text.data() + written, text.size() - written);
        if (count < 0 && errno != EINTR) return false;
        if (count > 0) written += static_cast<size_t>(count);
    }
    return true;
}

std::vector<uint8_t> contentOf(int file) {
    std::vector<uint8_t> text(std::min(static_cast<size_t>(std::max<off_t>(lseek(file, 0, SEEK_END), 0)), MAX_TEXT));
    const ssize_t count = pread(file, text.data(), text.size(), 0);
    text.resize(static_cast<size_t>(std::max<ssize_t>(count, 0)));
    return text;
}

}  // namespace

binder_status_t requestDump(AIBinder* remote, int fd, const char** args, uint32_t count) {
    AParcel parcel(remote);
    binder_status_t status = ndk::AParcel_writeVector(&parcel, std::vector<std::string>(args, args + count));
    if (status == STATUS_OK) status = remote->transact(DUMP_CODE, parcel, false);
    std::vector<uint8_t> text;
    if (status == STATUS_OK) status = ndk::AParcel_readVector(&parcel, &text);
    if (status != STATUS_OK) return status;
    return writeAll(fd, text) ? STATUS_OK : -errno;
}

binder_status_t answerDump(AIBinder* local, const AParcel& in, AParcel& out) {
    std::vector<std::string> arguments;
    const binder_status_t status = ndk::AParcel_readVector(&in, &arguments);
    if (status != STATUS_OK) return status;
    const UniqueFd file(memfd_create("dump", MFD_CLOEXEC));
    if (!file.isValid()) {
        warn("no dump can be made: %s", strerror(errno));
        return STATUS_UNKNOWN_ERROR;
    }
    std::vector<const char*> pointers;
    pointers.reserve(arguments.size());
    for (const std::string& each : arguments) pointers.push_back(each.c_str());
    const binder_status_t dumped =
        AIBinder_dump(local, file.get(), pointers.data(), static_cast<uint32_t>(pointers.size()));
    return dumped == STATUS_OK ? ndk::AParcel_writeVector(&out, contentOf(file.get())) : dumped;
}

}  // namespace binder
