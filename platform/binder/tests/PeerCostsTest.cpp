#include "binder/src/Limits.h"
#include "binder/src/PeerCosts.h"
#include "binder/src/Socket.h"

#include <gtest/gtest.h>

#include <deque>

namespace {

using namespace binder;

bool isShutDown(const UniqueFd& fd) {
    uint8_t byte = 0;
    return receiveSome(fd, &byte, sizeof(byte), MSG_DONTWAIT) == 0;
}

TEST(PeerCostsTest, HalfSent_WhenAllProcessesTogetherSendTooMuchHalf_ThenTheOldestConnectionEnds) {
    std::deque<std::pair<UniqueFd, UniqueFd>> connections;
    std::deque<HalfSent> halves;
    for (size_t sum = 0; sum <= MAX_ALL_HALF_SENT; sum += MAX_HALF_SENT) {
        ASSERT_TRUE(connections.empty() || !isShutDown(connections.front().second)) << sum;
        const UniqueFd& fd = connections.emplace_back(socketPair()).first;
        halves.emplace_back(fd.get(), static_cast<pid_t>(halves.size() + 1)).set(MAX_HALF_SENT);
    }
    EXPECT_TRUE(isShutDown(connections.front().second));
    EXPECT_FALSE(isShutDown(connections.at(1).second));
}

}  // namespace
