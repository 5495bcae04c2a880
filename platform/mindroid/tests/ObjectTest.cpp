// Objects, their references, and the boxes.

#include <mindroid/Boxes.h>
#include <mindroid/Object.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <utility>

namespace mindroid {
namespace {

class Witness : public Object {
public:
    explicit Witness(std::string& story) : mStory(story) {}
    ~Witness() override { mStory += "deleted"; }

    void touchMyself() { sp<Witness> self(this); }

protected:
    void onFirstReference() override { mStory += "first "; }
    void onLastReference() override {
        mStory += "last ";
        touchMyself();
    }

private:
    std::string& mStory;
};

TEST(Sp, References_WhenTheyAreCopiedMovedAndConverted_ThenFirstAndLastAreToldOnce) {
    std::string story;
    {
        sp<Witness> first = new Witness(story);
        const sp<Witness> second = first;
        const sp<Object> base = std::move(first);
        EXPECT_TRUE(first == nullptr && base == second);
        EXPECT_TRUE(base->equals(second));
        EXPECT_FALSE(base->equals(nullptr) || base->equals(new Integer(1)));
        sp<Object> last = second;
        last.clear();
        EXPECT_EQ(story, "first ");
    }
    EXPECT_EQ(story, "first last deleted");
}

TEST(Boxes, Value_WhenOfTheWholeRange_ThenIsKept) {
    EXPECT_EQ(sp<Byte>(new Byte(0xff))->value(), 0xff);
    EXPECT_EQ(sp<Short>(new Short(0xffff))->value(), 0xffff);
    EXPECT_EQ(sp<Integer>(new Integer(INT32_MIN))->value(), INT32_MIN);
    EXPECT_EQ(sp<Long>(new Long(INT64_MIN))->value(), INT64_MIN);
    EXPECT_TRUE(sp<Boolean>(new Boolean(true))->value());
    EXPECT_EQ(sp<String>(new String(std::string("a\0b", 3)))->value().size(), 3u);
    const std::array<int32_t, 2> numbers{1, -1};
    EXPECT_EQ(sp<IntegerArray>(new IntegerArray(numbers.data(), 2))->data()[1], -1);
}

TEST(Boxes, Construction_WhenFromNull_ThenIsEmpty) {
    EXPECT_EQ(sp<String>(new String(static_cast<const char*>(nullptr)))->value(), "");
    EXPECT_EQ(sp<ByteArray>(new ByteArray(nullptr, 4))->size(), 0u);
    EXPECT_EQ(sp<IntegerArray>(new IntegerArray(nullptr, 4))->size(), 0u);
}

TEST(ByteArray, ToString_WhenAnyBytes_ThenIsLowerCaseHex) {
    const struct {
        std::vector<uint8_t> bytes;
        const char* text;
    } cases[] = {{{}, ""}, {{0}, "00"}, {{0x0a, 0xff, 0x10}, "0aff10"}, {{0xde, 0xad, 0xbe, 0xef}, "deadbeef"}};
    for (const auto& [bytes, text] : cases) EXPECT_EQ(sp<ByteArray>(new ByteArray(bytes))->toString(), text);
}

}  // namespace
}  // namespace mindroid
