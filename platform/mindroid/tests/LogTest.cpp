#include <mindroid/Log.h>

#include "tests/support/LogCapture.h"

#include <gtest/gtest.h>

namespace mindroid {
namespace {

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
