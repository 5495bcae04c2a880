#include "binder/src/Poller.h"

#include <gtest/gtest.h>
#include <sys/eventfd.h>

namespace {

using namespace binder;

/** Always ready to be read. */
class Readable final : public Pollable {
public:
    [[nodiscard]] int fd() const override { return mFd.get(); }
    void onReady(uint32_t) override {}
    void onNoMemory() override {}

private:
    const UniqueFd mFd{eventfd(1, EFD_CLOEXEC)};
};

TEST(PollerTest, Arm_WhenTheDescriptorsNumberIsUsedAgain_ThenRefusedAndTheOtherIsHeard) {
    Poller poller;
    ASSERT_TRUE(poller.open());
    auto first = std::make_shared<Readable>();
    const int number = first->fd();
    PollKey removed = 0;
    ASSERT_TRUE(poller.add(first, EPOLLIN, removed));
    poller.remove(removed);
    first.reset();
    const auto next = std::make_shared<Readable>();
    ASSERT_EQ(number, next->fd());
    PollKey key = 0;
    ASSERT_TRUE(poller.add(next, EPOLLIN, key));
    EXPECT_FALSE(poller.arm(removed, EPOLLIN));
    EXPECT_EQ(next, poller.wait(0).pollable);
    EXPECT_TRUE(poller.arm(key, EPOLLOUT));
    EXPECT_EQ(EPOLLOUT, static_cast<int>(poller.wait(0).events));
}

}  // namespace
