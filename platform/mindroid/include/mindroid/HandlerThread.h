#pragma once

#include <mindroid/Looper.h>
#include <mindroid/Object.h>

#include <string>
#include <thread>

namespace mindroid {

// A thread with a looper. The last reference quits the looper and joins the thread (from the thread itself: detaches).
class HandlerThread : public Object {
public:
    // The name is the thread's as debuggers show it, cut to 15 characters.
    explicit HandlerThread(std::string name = "HandlerThread");
    ~HandlerThread() override;

    // Starts the thread, which runs what its looper was sent before and since. False when it was started before, and,
    // with an error line, when the system has no thread to give for a second: the looper has quit then. One thread at a
    // time.
    bool start();
    // There from the beginning. Thread: any.
    [[nodiscard]] sp<Looper> getLooper() const { return mLooper; }

private:
    static void run(const std::string& name, const sp<Looper>& looper);

    const std::string mName;
    const sp<Looper> mLooper;
    std::thread mThread;
    bool mStarted = false;
};

}  // namespace mindroid
