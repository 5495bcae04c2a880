#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <thread>
#include <vector>

#include <mindroid/Message.h>

#include "tests/support/LooperThread.h"

// Message memory is all that this program asks for with an alignment.
static std::atomic<int> sAlignedAllocations{0};

void* operator new(size_t size, std::align_val_t alignment) {
    ++sAlignedAllocations;
    return std::aligned_alloc(static_cast<size_t>(alignment), size);
}

void operator delete(void* memory, std::align_val_t) noexcept {
    std::free(memory);
}

namespace mindroid {
namespace {

TEST(MessagePool, Traffic_WhenOneThreadSendsAndAnotherSpends_ThenTheHeapIsLeftAlone) {
    test::LooperThread looper;
    for (int burst = 0; burst < 600; ++burst) {
        for (int i = 1; i < 100; ++i) looper.handler()->sendEmptyMessage(i);
        looper.drain();  // with a message of its own
    }
    EXPECT_GT(sAlignedAllocations, 0);
    EXPECT_LE(sAlignedAllocations, 100 + 6 * 64) << "what a burst needs, and what the threads and the pool hold back";
}

TEST(MessagePool, Threads_WhenTheyEnd_ThenTheirMessagesServeOthers) {
    const auto useOneThread = [] {
        std::thread([] {
            std::vector<sp<Message>> messages;
            for (int i = 0; i < 1000; ++i) messages.push_back(Message::obtain());
        }).join();
    };
    for (int i = 0; i < 3; ++i) useOneThread();
    const int before = sAlignedAllocations;
    for (int i = 0; i < 100; ++i) useOneThread();
    EXPECT_LT(sAlignedAllocations - before, 100 * 128);
}

}  // namespace
}  // namespace mindroid
