#include <device/DevicePath.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {

TEST(DevicePath, Path_WhenAFolderIsNamedOrNone_ThenBelowItOrItself) {
    const struct {
        const char* folder;  // null: the variable is not set
        const char* path;
        const char* expected;
    } cases[] = {
        {nullptr, "/proc/devinfo/lcd", "/proc/devinfo/lcd"},
        {nullptr, "/a/../b", "/a/../b"},
        {nullptr, "relative", "relative"},
        {nullptr, "", ""},
        {"", "/a/../b", "/a/../b"},
        {"/dev/folder", "/proc/devinfo/lcd", "/dev/folder/proc/devinfo/lcd"},
        {"/dev/folder", "/odm/etc/../etc/plugin_config.xml", "/dev/folder/odm/etc/plugin_config.xml"},
        {"/dev/folder", "//odm///lib.so", "/dev/folder/odm/lib.so"},
        {"/dev/folder", "odm/lib.so", "/dev/folder/odm/lib.so"},
        {"/dev/folder", "/../../etc/passwd", "/dev/folder/etc/passwd"},
        {"/dev/folder", "../../etc/passwd", "/dev/folder/etc/passwd"},
        {"/dev/folder", "/a/../../../etc/passwd", "/dev/folder/etc/passwd"},
        {"/dev/folder", "/..hidden", "/dev/folder/..hidden"},
        {"one", "/f", "one/f"},
        {"two/", "/f", "two/f"},
    };
    unsetenv("SUBSYS_DEVICE_ROOT");
    for (const auto& [folder, path, expected] : cases) {
        if (folder != nullptr) setenv("SUBSYS_DEVICE_ROOT", folder, 1);
        EXPECT_EQ(device::path(path), expected) << path;
    }
}

}  // namespace
