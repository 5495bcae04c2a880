#pragma once

#include <cstdint>

#include <mindroid/Message.h>
#include <mindroid/Object.h>
#include <mindroid/Runnable.h>

namespace mindroid {

class Looper;

// Receives messages on the thread of one looper. All operations: any thread; handleMessage: looper.
// Messages run in the order of their due time, first sent first run where equal.
class Handler : public Object {
public:
    // Binds to the looper of the calling thread. Without one the handler exists all the same, and sending to it fails.
    Handler();
    explicit Handler(const sp<Looper>& looper);
    ~Handler() override;

    // The base ignores the message.
    virtual void handleMessage(const sp<Message>& message);

    // Runs the message's callback, or handleMessage where it has none. Looper.
    void dispatchMessage(const sp<Message>& message);

    [[nodiscard]] sp<Message> obtainMessage();
    [[nodiscard]] sp<Message> obtainMessage(int32_t what);
    [[nodiscard]] sp<Message> obtainMessage(int32_t what, const sp<Object>& obj);
    [[nodiscard]] sp<Message> obtainMessage(int32_t what, int32_t arg1, int32_t arg2);
    [[nodiscard]] sp<Message> obtainMessage(const sp<Runnable>& callback);

    // Each answers whether the message was queued: false, with a warning, when the handler has no looper, the looper
    // has quit or the message was sent before. A time in the past counts as now; delays below 0 count as 0. The
    // message's target becomes this handler.
    bool sendMessage(const sp<Message>& message);
    bool sendMessageDelayed(const sp<Message>& message, int64_t delayMillis);
    bool sendMessageAtTime(const sp<Message>& message, uint64_t uptimeMillis);
    bool sendEmptyMessage(int32_t what);
    bool sendEmptyMessageDelayed(int32_t what, int64_t delayMillis);
    bool post(const sp<Runnable>& task);
    bool postDelayed(const sp<Runnable>& task, int64_t delayMillis);

    // Drop pending messages of this handler; when they return, none of those will run (one under way goes on).
    // `what` selects among the messages without a callback; a null task selects none.
    void removeMessages(int32_t what);
    void removeCallbacks(const sp<Runnable>& task);
    void removeCallbacksAndMessages();

    // Null when the handler has none.
    [[nodiscard]] const sp<Looper>& getLooper() const { return mLooper; }

private:
    friend class Message;

    bool send(const sp<Message>& message, uint64_t dueTime);
    bool sendNew(const sp<Message>& message, int64_t delayMillis);
    // Takes a message that is marked as sent.
    bool enqueue(Message& message, uint64_t dueTime);

    const sp<Looper> mLooper;
};

}  // namespace mindroid
