#pragma once

#include <device/Mutex.h>
#include <mindroid/Handler.h>
#include <mindroid/Object.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace mindroid {

// One listener: where and how it wants to be told.
class Registrant : public Object {
public:
    // Told by a message with this `what`, which goes to the handler's handleMessage.
    Registrant(const sp<Handler>& handler, int32_t what, const sp<Object>& obj = nullptr);
    // Told by running the callback on the handler's looper.
    Registrant(const sp<Handler>& handler, const sp<MessageCallback>& callback, const sp<Object>& obj);

    // Posts one message whose obj is `result`, or the registrant's own object where `result` is null. Thread: any.
    void notify(const sp<Object>& result) const;

private:
    friend class RegistrantList;

    const sp<Handler> mHandler;
    const sp<MessageCallback> mCallback;
    const int32_t mWhat;
    const sp<Object> mObj;
};

// Listeners in the order they were added. Any thread, during a notification too: a notification goes to those that were
// listed when it began.
class RegistrantList : public Object {
public:
    void add(const sp<Registrant>& registrant);
    // Removes every registrant of the handler.
    void remove(const sp<Handler>& handler);
    [[nodiscard]] size_t size() const;
    void notify(const sp<Object>& result = nullptr) const;

private:
    mutable device::Mutex mLock;
    std::vector<sp<Registrant>> mRegistrants SUBSYS_GUARDED_BY(mLock);
};

}  // namespace mindroid
