// The properties of a simulated device. A device build leaves this file out and links the device's libcutils.
#include <android/log.h>
#include <cutils/properties.h>
#include <device/DevicePath.h>

#include <android-base/file.h>
#include <android-base/properties.h>
#include <android-base/strings.h>
#include <android-base/unique_fd.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <mutex>
#include <sstream>
#include <string>
#include <string_view>

namespace {

constexpr const char* TAG = "DeviceProperties";
constexpr off_t MAX_SIZE = 1 << 20;

// True for blank lines, comments and properties that were taken over.
bool takeLine(const std::string& text) {
    const std::string line = android::base::Trim(text);
    if (line.empty() || line.front() == '#') return true;
    const size_t separator = line.find('=');
    if (separator == std::string::npos) return false;
    const std::string key = android::base::Trim(line.substr(0, separator));
    return !key.empty() && android::base::SetProperty(key, android::base::Trim(line.substr(separator + 1)));
}

// Why the file is not read, or null. No file is an empty one; a pipe or a device would never end.
const char* read(const std::string& file, std::string& text) {
    const android::base::unique_fd fd(open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (fd < 0) return errno == ENOENT || errno == ENOTDIR ? nullptr : "it can't be opened";
    struct stat status {};
    if (fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) return "it is not a regular file";
    if (status.st_size > MAX_SIZE) return "it is longer than 1 MiB";
    text.resize(static_cast<size_t>(status.st_size));
    return android::base::ReadFully(fd, text.data(), text.size()) ? nullptr : "it can't be read";
}

void load(const std::string& file) {
    std::string text;
    if (const char* reason = read(file, text)) {
        __android_log_print(ANDROID_LOG_WARN, TAG, "%s is not read: %s", file.c_str(), reason);
        return;
    }
    std::istringstream lines(text);
    size_t number = 0, bad = 0, firstBad = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        if (!takeLine(line) && bad++ == 0) firstBad = number;
    }
    if (bad == 0) return;
    __android_log_print(ANDROID_LOG_WARN, TAG, "%s: %zu lines are no properties, the first is line %zu", file.c_str(),
                        bad, firstBad);
}

}  // namespace

int8_t property_get_bool(const char* key, int8_t default_value) {
    // libbase's store bears no writer beside its readers: it is filled once and only read from then on.
    static std::once_flag sLoaded;
    std::call_once(sLoaded, [] { load(device::path("/vendor/build.prop")); });
    if (key == nullptr) return default_value;
    return android::base::GetBoolProperty(key, default_value != 0) ? 1 : 0;
}
