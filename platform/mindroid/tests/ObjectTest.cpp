// Objects, their references, and the boxes.

#include <mindroid/Boxes.h>
#include <mindroid/Object.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

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
        EXPECT_TRUE(first == nullptr && base == second);  // NOLINT(bugprone-use-after-move): it is null, by contract
        EXPECT_TRUE(base->equals(second));
        EXPECT_FALSE(base->equals(nullptr) || base->equals(new Integer(1)));
        sp<Object> last = second;
        last.clear();
        EXPECT_EQ(story, "first ");
    }
    EXPECT_EQ(story, "first last deleted");
}

TEST(Boxes, Construction_WhenFromNull_ThenIsEmpty) {
    EXPECT_EQ(sp<String>(new String(static_cast<const char*>(nullptr)))->value(), "");
    EXPECT_EQ(sp<ByteArray>(new ByteArray(nullptr, 4))->size(), 0u);
    EXPECT_EQ(sp<IntegerArray>(new IntegerArray(nullptr, 4))->size(), 0u);
}

TEST(ByteArray, ToString_WhenAnyBytes_ThenIsLowerCaseHex) {
    EXPECT_EQ(sp<ByteArray>(new ByteArray(std::vector<uint8_t>()))->toString(), "");
    EXPECT_EQ(sp<ByteArray>(new ByteArray(std::vector<uint8_t>{0, 0x0a, 0xff, 0x10}))->toString(), "000aff10");
}

}  // namespace
}  // namespace mindroid
