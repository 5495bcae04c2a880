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

class Base : public Object {};
class Derived : public Base {};

TEST(Object, References_WhenTheyComeAndGo_ThenFirstAndLastAreToldOnce) {
    std::string story;
    {
        sp<Witness> first = new Witness(story);
        const sp<Witness> second = first;
        EXPECT_EQ(first->strongCount(), 2);
        first.clear();
        EXPECT_EQ(second->strongCount(), 1);
        EXPECT_EQ(story, "first ");
    }
    EXPECT_EQ(story, "first last deleted");
}

TEST(Sp, Conversion_WhenUpOrDown_ThenIsTheSameObjectOrNull) {
    sp<Derived> moved = new Derived();
    const sp<Object> base = new Base(), derived = std::move(moved);
    EXPECT_TRUE(moved == nullptr);
    EXPECT_EQ(derived->strongCount(), 1);
    EXPECT_TRUE(derived->equals(derived));
    EXPECT_FALSE(derived->equals(base) || derived->equals(nullptr));
    EXPECT_TRUE(object_cast<Derived>(base) == nullptr);
    EXPECT_EQ(object_cast<Derived>(derived).get(), derived.get());
    EXPECT_EQ(static_object_cast<Base>(derived).get(), derived.get());
}

TEST(Boxes, Equals_WhenClassOrValueDiffers_ThenIsFalse) {
    // One box of each class, all of "one", and a second value of each.
    const auto boxes = [] {
        return std::array<sp<Object>, 8>{
            new Boolean(true), new Byte(1),     new Short(1),       new Integer(1),
            new Long(1),       new String("1"), new ByteArray({1}), new IntegerArray(std::array{1}.data(), 1)};
    };
    const auto ones = boxes(), same = boxes();
    const std::array<sp<Object>, 8> others = {
        new Boolean(false), new Byte(2),     new Short(2),          new Integer(2),
        new Long(2),        new String("2"), new ByteArray({1, 0}), new IntegerArray(nullptr, 1)};
    for (size_t i = 0; i < ones.size(); ++i) {
        for (size_t j = 0; j < ones.size(); ++j) EXPECT_EQ(ones[i]->equals(same[j]), i == j) << i << ' ' << j;
        EXPECT_EQ(ones[i]->hashCode(), same[i]->hashCode()) << i;
        EXPECT_FALSE(ones[i]->equals(others[i])) << i;
        EXPECT_FALSE(ones[i]->equals(nullptr)) << i;
    }
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
