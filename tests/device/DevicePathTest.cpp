#include <device/DevicePath.h>

#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

namespace {

TEST(DevicePath, Path_WhenNoFolderIsNamed_ThenItself) {
    for (const char* file : {"/proc/devinfo/lcd", "/a/../b", "relative", ""}) {
        unsetenv("SUBSYS_DEVICE_ROOT");
        EXPECT_EQ(device::path(file), file);
        setenv("SUBSYS_DEVICE_ROOT", "", 1);
        EXPECT_EQ(device::path(file), file);
    }
}

TEST(DevicePath, Path_WhenAFolderIsNamed_ThenBelowIt) {
    struct {
        const char* path;
        const char* expected;
    } const cases[] = {
        {"/proc/devinfo/lcd", "/dev/folder/proc/devinfo/lcd"},
        {"/odm/etc/../etc/plugin_config.xml", "/dev/folder/odm/etc/plugin_config.xml"},
        {"//odm///lib.so", "/dev/folder/odm/lib.so"},
        {"odm/lib.so", "/dev/folder/odm/lib.so"},
        {"/../../etc/passwd", "/dev/folder/etc/passwd"},
        {"../../etc/passwd", "/dev/folder/etc/passwd"},
        {"/a/../../../etc/passwd", "/dev/folder/etc/passwd"},
        {"/..hidden", "/dev/folder/..hidden"},
    };
    setenv("SUBSYS_DEVICE_ROOT", "/dev/folder", 1);
    for (const auto& [path, expected] : cases) EXPECT_EQ(device::path(path), expected) << path;
}

TEST(DevicePath, Path_WhenTheFolderChanges_ThenTheNextCallFollows) {
    setenv("SUBSYS_DEVICE_ROOT", "one", 1);
    EXPECT_EQ(device::path("/f"), "one/f");
    setenv("SUBSYS_DEVICE_ROOT", "two/", 1);
    EXPECT_EQ(device::path("/f"), "two/f");
}

}  // namespace
