#include <utils/ByteVector.h>

#include <gtest/gtest.h>

namespace {

TEST(ByteVector, ToVec_WhenThereAreBytesOrNone_ThenACopyOrEmpty) {
    const uint8_t bytes[] = {0, 1, 0xff};
    EXPECT_EQ(subsys_utils::toVec(bytes, 3), (std::vector<uint8_t>{0, 1, 0xff}));
    EXPECT_EQ(subsys_utils::toVec(nullptr, 100), std::vector<uint8_t>());
}

}  // namespace
