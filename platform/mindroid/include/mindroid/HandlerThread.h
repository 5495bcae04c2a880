#pragma once

#include <mutex>
#include <string>
#include <thread>

#include <mindroid/Object.h>

namespace mindroid {

class Looper;

// A thread with a looper. The last reference quits the looper and joins the thread (from the thread itself: detaches).
class HandlerThread : public Object {
public:
    // The name is the thread's as debuggers show it, cut to 15 characters.
    explicit HandlerThread(std::string name = "HandlerThread");
    ~HandlerThread() override;

    // Starts the thread and returns when its looper exists. False when it was started before. Owner's thread, but never
    // in a static initialiser of a library: a new thread waits until the library is loaded.
    bool start();
    // Null before start; any thread.
    [[nodiscard]] sp<Looper> getLooper() const;
    // Ends the loop; any thread.
    void quit();
    // Waits for the end of the thread; must not be called on it. Owner's thread.
    void join();

private:
    const std::string mName;
    std::thread mThread;
    mutable std::mutex mLock;
    sp<Looper> mLooper;
};

}  // namespace mindroid
