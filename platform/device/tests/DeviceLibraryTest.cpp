#include <device/DeviceLibrary.h>

#include "tests/support/DeviceFolder.h"
#include "tests/support/LogCapture.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* PATH = "/vendor/lib64/libplugin.so";

int answerOf(void* library) {
    return reinterpret_cast<int (*)()>(dlsym(library, "answer"))();
}

class DeviceLibrary : public testing::Test {
protected:
    // What is logged when the library is opened twice, and can't be.
    [[nodiscard]] std::vector<std::string> whyNotTwice() {
        mLog.clear();
        EXPECT_EQ(device::openLibrary(PATH), nullptr);
        EXPECT_EQ(device::openLibrary(PATH), nullptr);
        for (const auto& line : mLog.lines()) EXPECT_EQ(line.priority, ANDROID_LOG_ERROR);
        return mLog.texts("DeviceLibrary");
    }

    const test::DeviceFolder mDevice;
    const std::string mFile = mDevice.place(PATH);
    test::LogCapture mLog;
};

TEST_F(DeviceLibrary, Open_WhenBelowTheDevice_ThenItsSymbolsAreThereForAll) {
    mDevice.copy(PATH, WHOLE_LIBRARY);
    EXPECT_EQ(dlsym(RTLD_DEFAULT, "answer"), nullptr);
    void* const library = device::openLibrary(PATH);
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(answerOf(library), 42);
    EXPECT_NE(dlsym(RTLD_DEFAULT, "answer"), nullptr);
    EXPECT_THAT(mLog.lines(), IsEmpty());
}

TEST_F(DeviceLibrary, Open_WhenItFails_ThenEachReasonOnce) {
    const std::string head = "can't open " + mFile + ": ";
    const std::string missing = head + "cannot open shared object file: No such file or directory";
    EXPECT_THAT(whyNotTwice(), ElementsAre(missing));
    mDevice.copy(PATH, UNRESOLVED_LIBRARY);
    EXPECT_THAT(whyNotTwice(), ElementsAre(head + "undefined symbol: missingFunction"));
    mDevice.write(PATH, "no library");
    EXPECT_THAT(whyNotTwice(), ElementsAre(HasSubstr(head)));
    mDevice.remove(PATH);
    mDevice.makeFifo(PATH);
    EXPECT_THAT(whyNotTwice(), ElementsAre(head + "not a regular file"));
    mDevice.remove(PATH);
    EXPECT_THAT(whyNotTwice(), IsEmpty());
}

TEST_F(DeviceLibrary, Open_WhenCutShortAnywhere_ThenOpensOrFailsButNeverDies) {
    std::ifstream file(WHOLE_LIBRARY, std::ios::binary);
    const std::string whole(std::istreambuf_iterator<char>(file), {});
    for (size_t size = 0; size < whole.size(); size += 101) {
        mDevice.remove(PATH);
        mDevice.write(PATH, whole.substr(0, size));
        // The section table at the end of the file is not needed.
        void* const library = device::openLibrary(PATH);
        if (library == nullptr) continue;
        EXPECT_EQ(answerOf(library), 42) << size;
        dlclose(library);
    }
    EXPECT_TRUE(mLog.has("DeviceLibrary", "can't open " + mFile + ": file is truncated"));
}

TEST_F(DeviceLibrary, OpenFile_WhenOfThisMachine_ThenFoundThereAndTheReasonIsReturned) {
    std::string reason;
    EXPECT_NE(device::openLibraryFile(WHOLE_LIBRARY, RTLD_NOW, reason), nullptr);
    EXPECT_EQ(device::openLibraryFile(UNRESOLVED_LIBRARY, RTLD_NOW, reason), nullptr);
    EXPECT_EQ(reason, "undefined symbol: missingFunction");
    EXPECT_THAT(mLog.lines(), IsEmpty());
}

}  // namespace
