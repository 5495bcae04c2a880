#include <device/DevicePath.h>

#include <cstdlib>
#include <filesystem>

namespace device {

std::string path(std::string_view absolutePath) {
    const char* root = std::getenv("SUBSYS_DEVICE_ROOT");
    if (root == nullptr || *root == '\0') return std::string(absolutePath);
    // Resolved against "/", so that a leading ".." stays at the top.
    const auto below = std::filesystem::path("/").append(absolutePath).lexically_normal();
    return (std::filesystem::path(root) / below.relative_path()).string();
}

}  // namespace device
