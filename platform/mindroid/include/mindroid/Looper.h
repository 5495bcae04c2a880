#pragma once

#include <mindroid/Object.h>

#include <memory>

namespace mindroid {

class MessageQueue;

// The message loop of one thread.
class Looper final : public Object {
public:
    // Gives the calling thread a looper. False, with an error line, when it has one.
    static bool prepare();
    // Runs the calling thread's messages until quit. Returns at once, with an error line, without a looper.
    static void loop();
    // The calling thread's looper, or null.
    [[nodiscard]] static sp<Looper> myLooper();

    // Ends the loop: the message under way is the last one, pending messages are dropped with all they hold, later
    // sends fail. Any thread, during a dispatch too.
    void quit();

    ~Looper() override;

private:
    friend class Handler;
    friend class HandlerThread;

    Looper();
    // Makes it the calling thread's, which has none.
    static void bind(const sp<Looper>& looper);

    const std::unique_ptr<MessageQueue> mQueue;
};

}  // namespace mindroid
