#include <mindroid/Log.h>

#include <gtest/gtest.h>

#include "tests/support/LogCapture.h"

namespace mindroid {
namespace {

TEST(Log, Lines_WhenWritten_ThenCarryTagPriorityAndText) {
    const test::LogCapture log;
    Log::d("Tag", "debug %d", 1);
    Log::i("Tag", "info %s", "x");
    Log::w("Other", "warning");
    Log::e("Tag", "error %c", '!');
    EXPECT_EQ(log.lines(), (std::vector<test::LogLine>{{ANDROID_LOG_DEBUG, "Tag", "debug 1"},
                                                       {ANDROID_LOG_INFO, "Tag", "info x"},
                                                       {ANDROID_LOG_WARN, "Other", "warning"},
                                                       {ANDROID_LOG_ERROR, "Tag", "error !"}}));
}

TEST(Log, Line_WhenBelowTheMinimum_ThenIsNotEvenFormatted) {
    const test::LogCapture log;
    int formatted = 0;
    __android_log_set_minimum_priority(ANDROID_LOG_INFO);
    Log::d("Tag", "abc%n", &formatted);
    EXPECT_EQ(formatted, 0);
    Log::i("Tag", "abc%n", &formatted);
    EXPECT_EQ(formatted, 3);
    EXPECT_EQ(log.lines().size(), 1u);
}

}  // namespace
}  // namespace mindroid
