#include <utils/ByteVector.h>

#include <gtest/gtest.h>

namespace {

using Bytes = std::vector<uint8_t>;
using subsys_utils::toVec;

TEST(ByteVector, ToVec_WhenThereAreBytes_ThenTheyAreCopied) {
    const uint8_t bytes[] = {0, 1, 0xff};
    EXPECT_EQ(toVec(bytes, 3), (Bytes{0, 1, 0xff}));
    EXPECT_EQ(toVec(bytes, 1), (Bytes{0}));
    EXPECT_EQ(toVec(bytes, 0), Bytes());
    EXPECT_EQ(toVec(mindroid::sp<mindroid::ByteArray>(new mindroid::ByteArray(bytes, 3))), (Bytes{0, 1, 0xff}));
}

TEST(ByteVector, ToVec_WhenThereIsNothing_ThenEmpty) {
    EXPECT_EQ(toVec(static_cast<const uint8_t*>(nullptr), 100), Bytes());
    EXPECT_EQ(toVec(mindroid::sp<mindroid::ByteArray>()), Bytes());
    EXPECT_EQ(toVec(mindroid::sp<mindroid::ByteArray>(new mindroid::ByteArray(nullptr, 5))), Bytes());
}

}  // namespace
