#include "Dump.h"

#include "Frame.h"
#include "IBinder.h"
#include "Parcel.h"
#include "UniqueFd.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

namespace binder {
namespace {

// Room for the length is left.
constexpr size_t MAX_TEXT = MAX_CALL - 64;

bool allocateText(void* text, int32_t length, int8_t** buffer) {
    if (length < 0) return false;
    auto& bytes = *static_cast<std::string*>(text);
    bytes.resize(static_cast<size_t>(length));
    *buffer = reinterpret_cast<int8_t*>(bytes.data());
    return true;
}

bool allocateArgument(void* text, int32_t length, char** buffer) {
    if (length <= 0) return false;
    auto& string = *static_cast<std::string*>(text);
    string.resize(static_cast<size_t>(length) - 1);
    *buffer = string.data();
    return true;
}

bool allocateArguments(void* arguments, int32_t length) {
    if (length < 0) return false;
    static_cast<std::vector<std::string>*>(arguments)->resize(static_cast<size_t>(length));
    return true;
}

binder_status_t readArgument(const AParcel* in, void* arguments, size_t index) {
    return AParcel_readString(in, &(*static_cast<std::vector<std::string>*>(arguments))[index], allocateArgument);
}

binder_status_t writeArgument(AParcel* in, const void* arguments, size_t index) {
    const char* const argument = static_cast<const char* const*>(arguments)[index];
    return AParcel_writeString(in, argument, static_cast<int32_t>(strlen(argument)));
}

bool writeAll(int fd, const std::string& text) {
    for (size_t written = 0; written < text.size();) {
        const ssize_t count = write(fd, text.data() + written, text.size() - written);
        if (count < 0 && errno != EINTR) return false;
        if (count > 0) written += static_cast<size_t>(count);
    }
    return true;
}

std::string contentOf(int file) {
    std::string text(std::min(static_cast<size_t>(std::max<off_t>(lseek(file, 0, SEEK_END), 0)), MAX_TEXT), '\0');
    const ssize_t count = pread(file, text.data(), text.size(), 0);
    text.resize(static_cast<size_t>(std::max<ssize_t>(count, 0)));
    return text;
}

}  // namespace

binder_status_t requestDump(AIBinder* remote, int fd, const char** args, uint32_t count) {
    AParcel parcel(remote);
    binder_status_t status = AParcel_writeParcelableArray(&parcel, args, static_cast<int32_t>(count), writeArgument);
    if (status == STATUS_OK) status = remote->transact(DUMP_CODE, parcel, false);
    std::string text;
    if (status == STATUS_OK) status = AParcel_readByteArray(&parcel, &text, allocateText);
    if (status != STATUS_OK) return status;
    return writeAll(fd, text) ? STATUS_OK : -errno;
}

binder_status_t answerDump(AIBinder* local, const AParcel& in, AParcel& out) {
    std::vector<std::string> arguments;
    const binder_status_t status = AParcel_readParcelableArray(&in, &arguments, allocateArguments, readArgument);
    if (status != STATUS_OK) return status;
    const UniqueFd file(memfd_create("dump", MFD_CLOEXEC));
    if (!file.isValid()) return -errno;
    std::vector<const char*> pointers;
    pointers.reserve(arguments.size());
    for (const std::string& each : arguments) pointers.push_back(each.c_str());
    const binder_status_t dumped =
        AIBinder_dump(local, file.get(), pointers.data(), static_cast<uint32_t>(pointers.size()));
    if (dumped != STATUS_OK) return dumped;
    const std::string text = contentOf(file.get());
    return AParcel_writeByteArray(&out, reinterpret_cast<const int8_t*>(text.data()),
                                  static_cast<int32_t>(text.size()));
}

}  // namespace binder
