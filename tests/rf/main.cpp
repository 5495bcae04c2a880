// The library reads its plugin configuration while it is loaded: the device folder has to be known before that.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

int main(int argc, char** argv) {
    // A list of the tests needs no device, and would show the library's log lines.
    const bool lists = argc > 1 && strcmp(argv[1], "--gtest_list_tests") == 0;
    const char* root = getenv("SUBSYS_DEVICE_ROOT");
    if (!lists && (root == nullptr || strcmp(root, RF_TEST_DEVICE) != 0)) {
        setenv("SUBSYS_DEVICE_ROOT", RF_TEST_DEVICE, 1);
        execv("/proc/self/exe", argv);
        return EXIT_FAILURE;
    }
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
