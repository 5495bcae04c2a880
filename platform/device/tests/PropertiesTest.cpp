#include <cutils/properties.h>

#include "tests/support/DeviceFolder.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Threads.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <string>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The process reads properties once, so that each test makes a device.
class Properties : public testing::Test {
protected:
    void write(const std::string& text) const { mDevice.write(BUILD_PROP, text); }

    static constexpr const char* BUILD_PROP = "/vendor/build.prop";
    const test::DeviceFolder mDevice;
    const std::filesystem::path mFile = mDevice.place(BUILD_PROP);
};

TEST_F(Properties, GetBool_WhenTheValueIsOneOfTheTen_ThenItsMeaningElseTheDefault) {
    struct {
        const char* value;
        int expected;  // -1: the default
    } const cases[] = {{"1", 1},  {"y", 1},      {"yes", 1},   {"on", 1},  {"true", 1},  {"0", 0},  {"n", 0},
                       {"no", 0}, {"off", 0},    {"false", 0}, {"", -1},   {"TRUE", -1}, {"2", -1}, {"00", -1},
                       {"t", -1}, {"truex", -1}, {"a=b", -1},  {"-1", -1}, {"no no", -1}};
    std::string text;
    for (size_t i = 0; i < std::size(cases); ++i) text += "key." + std::to_string(i) + "=" + cases[i].value + "\n";
    write(text);
    for (size_t i = 0; i < std::size(cases); ++i) {
        const std::string key = "key." + std::to_string(i);
        for (const int fallback : {0, 1}) {
            const int expected = cases[i].expected < 0 ? fallback : cases[i].expected;
            EXPECT_EQ(property_get_bool(key.c_str(), static_cast<int8_t>(fallback)), expected) << cases[i].value;
        }
    }
}

TEST_F(Properties, GetBool_WhenLinesHaveBlanksCommentsOrAreMalformed_ThenOneWarningAndTheRestIsRead) {
    const test::LogCapture log;
    write("# a comment\n\n   \n  blanks.around = true \nwindows.line=true\r\n#off=true\ntwice=false\ntwice=true\n" +
          std::string("no separator\n=no key\n") + std::string(100'000, 'y') + "\nlast=true");
    for (const char* key : {"blanks.around", "windows.line", "twice", "last"}) {
        EXPECT_TRUE(property_get_bool(key, 0)) << key;
    }
    for (const char* key : {"off", "#off"}) EXPECT_FALSE(property_get_bool(key, 0)) << key;
    const test::LogLine warning{ANDROID_LOG_WARN, "DeviceProperties",
                                mFile.string() + ": 3 lines are no properties, the first is line 9"};
    EXPECT_THAT(log.lines(), ElementsAre(warning));
}

TEST_F(Properties, GetBool_WhenThereIsNoFile_ThenTheDefaultInSilence) {
    const test::LogCapture log;
    EXPECT_TRUE(property_get_bool("any", 1));
    EXPECT_FALSE(property_get_bool("any", 0));
    EXPECT_TRUE(property_get_bool(nullptr, 1));
    EXPECT_THAT(log.lines(), IsEmpty());
}

class NoProperties : public Properties, public testing::WithParamInterface<std::string> {};

TEST_P(NoProperties, GetBool_WhenTheFileIsNone_ThenTheDefaultAndOneWarning) {
    const std::string& kind = GetParam();
    const bool isHuge = kind == "huge";
    if (kind == "fifo") mDevice.makeFifo(BUILD_PROP);
    if (kind == "endless") std::filesystem::create_symlink("/dev/zero", mFile);
    if (kind == "folder") mDevice.makeDirectory(BUILD_PROP);
    if (isHuge) write("key=true\n" + std::string((1 << 20) - 8, '\n'));
    const test::LogCapture log;
    EXPECT_TRUE(property_get_bool("key", 1));
    EXPECT_FALSE(property_get_bool("key", 0));
    const char* reason = isHuge ? "it is longer than 1 MiB" : "it is not a regular file";
    const test::LogLine warning{ANDROID_LOG_WARN, "DeviceProperties", mFile.string() + " is not read: " + reason};
    EXPECT_THAT(log.lines(), ElementsAre(warning));
}
INSTANTIATE_TEST_SUITE_P(Each, NoProperties, testing::Values("fifo", "endless", "folder", "huge"));

TEST_F(Properties, GetBool_WhenManyThreadsCallFirst_ThenAllSeeTheFileAndItsFirstReadingStays) {
    std::string text;
    for (int i = 0; i < 1000; ++i) text += "key." + std::to_string(i) + "=true\n";
    write(text);
    std::atomic<int> seen = 0;
    test::inThreads(8, [&seen](size_t) { seen += property_get_bool("key.999", 0); });
    EXPECT_EQ(seen, 8);
    write("key.999=false\n");
    EXPECT_TRUE(property_get_bool("key.999", 0));
}

}  // namespace
