#pragma once

#include <mindroid/Handler.h>
#include <mindroid/HandlerThread.h>
#include <mindroid/Looper.h>
#include <mindroid/Runnable.h>

#include <future>
#include <type_traits>
#include <utility>

namespace test {

// Runs the action on the handler's thread and returns what it returns. What was posted there before has run by then.
template <typename Action>
std::invoke_result_t<Action> runOn(const mindroid::sp<mindroid::Handler>& handler, Action action) {
    std::packaged_task<std::invoke_result_t<Action>()> task(std::move(action));
    auto result = task.get_future();
    handler->obtainMessage(new mindroid::Runnable([&] { task(); }))->sendToTarget();
    return result.get();
}

// A looper on a thread of its own, for objects that belong to the looper of the thread that makes them.
class LooperThread {
public:
    LooperThread() : mThread(new mindroid::HandlerThread("test")) {
        mThread->start();
        mHandler = new mindroid::Handler(mThread->getLooper());
    }

    [[nodiscard]] const mindroid::sp<mindroid::HandlerThread>& thread() const { return mThread; }
    [[nodiscard]] mindroid::sp<mindroid::Looper> looper() const { return mThread->getLooper(); }
    [[nodiscard]] const mindroid::sp<mindroid::Handler>& handler() const { return mHandler; }

    template <typename Action>
    std::invoke_result_t<Action> run(Action action) {
        return runOn(mHandler, std::move(action));
    }
    // Returns when everything that is due has run.
    void drain() {
        run([] {});
    }
    // A T that belongs to this looper.
    template <typename T, typename... Args>
    [[nodiscard]] mindroid::sp<T> make(Args&&... args) {
        return run([&] { return mindroid::sp<T>(new T(std::forward<Args>(args)...)); });
    }

private:
    mindroid::sp<mindroid::HandlerThread> mThread;
    mindroid::sp<mindroid::Handler> mHandler;
};

}  // namespace test
