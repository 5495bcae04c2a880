#include "component/Utf8.h"

#include <android/binder_parcel.h>
#include <gtest/gtest.h>

#include <memory>

namespace {

using hal::dropCutSequence;

bool binderTakes(const std::string& text) {
    const std::unique_ptr<AParcel, decltype(&AParcel_delete)> parcel(AParcel_create(), AParcel_delete);
    return AParcel_writeString(parcel.get(), text.data(), static_cast<int32_t>(text.size())) == STATUS_OK;
}

// All texts of up to four of the bytes where sequences begin, continue and change their length.
TEST(Utf8, DropCutSequence_WhenTheBinderRefusesAText_ThenOnlyThenItIsCutUntilTaken) {
    const std::string bytes("a\0\x7f\x80\xbf\xc0\xc1\xc2\xdf\xe0\xe2\xef\xf0\xf4\xf5\xff", 16);
    std::vector<std::string> texts = {""};
    for (size_t i = 0; i < texts.size(); ++i) {
        if (texts[i].size() < 4) {
            for (const char byte : bytes) texts.push_back(texts[i] + byte);
        }
        std::string text = texts[i];
        EXPECT_EQ(dropCutSequence(text), !binderTakes(texts[i])) << testing::PrintToString(texts[i]);
        EXPECT_TRUE(texts[i].starts_with(text) && binderTakes(text)) << testing::PrintToString(texts[i]);
        // What was dropped was needed: one more sequence would be refused again.
        for (size_t more = text.size() + 1; more < texts[i].size(); ++more)
            EXPECT_FALSE(binderTakes(texts[i].substr(0, more)));
    }
}

}  // namespace
