#include "rf/LcdInfo.h"

#include "tests/support/DeviceFolder.h"
#include "tests/support/LogCapture.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace {

constexpr const char* FILE_PATH = "/proc/devinfo/lcd";
const std::string PREFIX = "Device version: ";

TEST(ReadLcdInfo, WhenFileVaries_ThenVersionOrNothing) {
    const struct {
        const char* what;
        std::string content;
        std::optional<std::string> expected;
        std::string line;
    } cases[] = {
        {"18 bytes", PREFIX + "AB", std::nullopt, "Read SWTP failed! Unexpected Length"},
        {"19 bytes", PREFIX + "ABC", "ABC", "read lcd_info_tmp: ABC, num: 1 "},
        {"white space", "Device  version:\n\tABC DEF", "ABC", "read lcd_info_tmp: ABC, num: 1 "},
        {"another text", "Panel version : 1234567", "", "read lcd_info_tmp: , num: 0 "},
        {"100 bytes", PREFIX + std::string(84, 'x'), std::string(84, 'x'),
         "read lcd_info_tmp: " + std::string(84, 'x') + ", num: 1 "},
        {"10,000 bytes", PREFIX + std::string(9984, 'x'), std::string(84, 'x'),
         "read lcd_info_tmp: " + std::string(84, 'x') + ", num: 1 "},
        {"zero bytes", std::string(100, '\0'), "", "read lcd_info_tmp: , num: -1 "},
        {"no UTF-8", PREFIX + "\x01\xFF\x80z\xE2\x82", "\x01\xFF\x80z\xE2\x82",
         "read lcd_info_tmp: \x01\xFF\x80z\xE2\x82, num: 1 "},
    };
    for (const auto& [what, content, expected, line] : cases) {
        const test::DeviceFolder device;
        const test::LogCapture log;
        device.write(FILE_PATH, content);
        EXPECT_EQ(hal::readLcdInfo("Tag"), expected) << what;
        const int priority = expected ? ANDROID_LOG_DEBUG : ANDROID_LOG_ERROR;
        EXPECT_EQ(log.lines(), (std::vector<test::LogLine>{{priority, "Tag", line}})) << what;
    }
}

TEST(ReadLcdInfo, WhenThereIsNoRegularFile_ThenNothingAndNoWait) {
    const test::DeviceFolder device;
    const test::LogCapture log;
    EXPECT_EQ(hal::readLcdInfo("Tag"), std::nullopt);
    EXPECT_TRUE(log.has("Tag", "Open LCD_TYPE_PATH failed!", ANDROID_LOG_ERROR));
    device.makeDirectory(FILE_PATH);
    EXPECT_EQ(hal::readLcdInfo("Tag"), std::nullopt);
    device.remove(FILE_PATH);
    device.makeFifo(FILE_PATH);
    EXPECT_EQ(hal::readLcdInfo("Tag"), std::nullopt);
    EXPECT_EQ(log.count("Tag", "Read SWTP failed! Unexpected Length", ANDROID_LOG_ERROR), 2U);
}

}  // namespace
