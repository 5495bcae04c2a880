#include <mindroid/RegistrantList.h>

#include <mindroid/Log.h>
#include <mindroid/Message.h>
#include <mindroid/Runnable.h>

#include <algorithm>

namespace mindroid {

namespace {

constexpr char TAG[] = "Registrant";

}  // namespace

Registrant::Registrant(const sp<Handler>& handler, int32_t what, const sp<Object>& obj)
    : mHandler(handler), mWhat(what), mObj(obj) {}

Registrant::Registrant(const sp<Handler>& handler, const sp<MessageCallback>& callback, const sp<Object>& obj)
    : mHandler(handler), mCallback(callback), mWhat(0), mObj(obj) {}

void Registrant::notify(const sp<Object>& result) const {
    if (mHandler == nullptr) return Log::w(TAG, "no handler to notify");
    const sp<Message> message = mHandler->obtainMessage(mWhat, result != nullptr ? result : mObj);
    message->mMessageCallback = mCallback;
    message->sendToTarget();
}

void RegistrantList::add(const sp<Registrant>& registrant) {
    if (registrant == nullptr) return;
    const device::MutexLock lock(mLock);
    mRegistrants.push_back(registrant);
}

void RegistrantList::remove(const sp<Handler>& handler) {
    const auto isOther = [&](const sp<Registrant>& registrant) { return registrant->mHandler != handler; };
    // Dies after the lock was let go.
    std::vector<sp<Registrant>> removed;
    const device::MutexLock lock(mLock);
    const auto first = std::stable_partition(mRegistrants.begin(), mRegistrants.end(), isOther);
    removed.assign(first, mRegistrants.end());
    mRegistrants.erase(first, mRegistrants.end());
}

size_t RegistrantList::size() const {
    const device::MutexLock lock(mLock);
    return mRegistrants.size();
}

void RegistrantList::notify(const sp<Object>& result) const {
    std::vector<sp<Registrant>> registrants;
    {
        const device::MutexLock lock(mLock);
        registrants = mRegistrants;
    }
    for (const sp<Registrant>& registrant : registrants) registrant->notify(result);
}

}  // namespace mindroid
