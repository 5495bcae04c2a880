#include "component/ExecutorProxy.h"

#include "tests/support/Await.h"
#include "tests/support/LooperThread.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace hal;
using namespace mindroid;

namespace {

class ExecutorProxyTest : public testing::Test {
protected:
    test::LooperThread looper;
    sp<ExecutorProxy> executor = new ExecutorProxy(looper.thread());
    test::Recorder<std::string> runs;

    sp<Runnable> task(std::string name) {
        return new Runnable([this, name] {
            EXPECT_TRUE(Looper::myLooper() == looper.looper());
            runs.add(name);
        });
    }
};

TEST_F(ExecutorProxyTest, Execute_WhenSomeAreQueuedTwiceOrCancelled_ThenEachCallOfTheOthersRunsInOrder) {
    const sp<Runnable> a = task("a");
    const sp<Runnable> cancelled = task("cancelled");
    looper.run([&] {  // Nothing runs before all are queued.
        for (const auto& queued : {a, cancelled, task("b"), cancelled, a}) executor->execute(queued);
        executor->cancel(cancelled);
        executor->cancel(task("never executed"));
        EXPECT_EQ(runs.count(), 0u);
    });
    looper.drain();
    EXPECT_EQ(runs.all(), (std::vector<std::string>{"a", "b", "a"}));
}

}  // namespace
