#include <device/DeviceLibrary.h>
#include <device/DevicePath.h>

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {

TEST(OnDevice, PathAndOpen_WhenAFolderIsNamed_ThenThePathIsItselfAllTheSame) {
    setenv("SUBSYS_DEVICE_ROOT", "/nowhere", 1);
    EXPECT_EQ(device::path("/odm/../lib.so"), "/odm/../lib.so");
    EXPECT_NE(device::openLibrary(WHOLE_LIBRARY), nullptr);
    EXPECT_EQ(device::openLibrary(UNRESOLVED_LIBRARY), nullptr);
    std::string reason;
    EXPECT_EQ(device::openLibraryFile("/missing.so", RTLD_NOW, reason), nullptr);
    EXPECT_EQ(reason, "/missing.so: cannot open shared object file: No such file or directory");
}

}  // namespace
