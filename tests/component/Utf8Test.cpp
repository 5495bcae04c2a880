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

// A binder that goes by the lengths that bytes announce, and looks at nothing else.
bool lengthsAgree(const std::string& text) {
    size_t at = 0;
    while (at < text.size()) {
        const auto byte = static_cast<uint8_t>(text[at]);
        at += byte < 0xc0 ? 1 : byte < 0xe0 ? 2 : byte < 0xf0 ? 3 : 4;
    }
    return at == text.size();
}

TEST(Utf8, DropCutSequence_WhenTheEndIsWholeOrNot_ThenOnlyWhatIsNotGoes) {
    const struct {
        const char* text;
        const char* left;
    } cases[] = {{"", ""},
                 {"a", "a"},
                 {"\xc3\xa9", "\xc3\xa9"},
                 {"\xe2\x82\xac", "\xe2\x82\xac"},
                 {"\xf0\x9f\x98\x80", "\xf0\x9f\x98\x80"},
                 {"\x80\xbf", "\x80\xbf"},
                 {"a\xc3", "a"},
                 {"\xc3\xa9\xe2\x82", "\xc3\xa9"},
                 {"a\xf0\x9f\x98", "a"},
                 {"a\xe2\xe2\xe2\xe2", "a"},
                 {"a\xff", "a"}};
    for (const auto& [text, left] : cases) {
        std::string dropped = text;
        const bool wasCut = dropCutSequence(dropped);
        EXPECT_EQ(dropped, left);
        EXPECT_EQ(wasCut, dropped != text) << testing::PrintToString(text);
    }
}

// All texts of up to four of the bytes where sequences begin, continue and change their length.
TEST(Utf8, DropCutSequence_WhenABinderRefusesAText_ThenWhatIsLeftIsTaken) {
    const std::string bytes("a\0\x7f\x80\xbf\xc0\xc1\xc2\xdf\xe0\xe2\xef\xf0\xf4\xf5\xff", 16);
    std::vector<std::string> texts = {""};
    for (size_t i = 0; i < texts.size(); ++i) {
        if (texts[i].size() < 4) {
            for (const char byte : bytes) texts.push_back(texts[i] + byte);
        }
        std::string text = texts[i];
        dropCutSequence(text);
        EXPECT_TRUE(texts[i].starts_with(text)) << testing::PrintToString(texts[i]);
        EXPECT_TRUE(binderTakes(text)) << testing::PrintToString(texts[i]);
        EXPECT_TRUE(lengthsAgree(text)) << testing::PrintToString(texts[i]);
    }
}

}  // namespace
