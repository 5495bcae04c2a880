#include <mindroid/RegistrantList.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include <mindroid/Log.h>
#include <mindroid/Message.h>
#include <mindroid/Runnable.h>

namespace mindroid {

namespace {

constexpr char TAG[] = "Registrant";

// Moves the registrants of the handler out, for the caller to destroy without the lock.
std::vector<sp<Registrant>> extract(std::vector<sp<Registrant>>& registrants, const sp<Handler>& handler) {
    const auto isOther = [&](const sp<Registrant>& registrant) { return registrant->getHandler() != handler; };
    const auto first = std::stable_partition(registrants.begin(), registrants.end(), isOther);
    std::vector<sp<Registrant>> removed(std::make_move_iterator(first), std::make_move_iterator(registrants.end()));
    registrants.erase(first, registrants.end());
    return removed;
}

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

void RegistrantList::add(const sp<Handler>& handler, int32_t what, const sp<Object>& obj) {
    add(new Registrant(handler, what, obj));
}

void RegistrantList::remove(const sp<Handler>& handler) {
    std::vector<sp<Registrant>> removed;
    const device::MutexLock lock(mLock);
    removed = extract(mRegistrants, handler);
}

size_t RegistrantList::replace(const sp<Registrant>& registrant) {
    std::vector<sp<Registrant>> removed;
    const device::MutexLock lock(mLock);
    const size_t size = mRegistrants.size();
    if (registrant == nullptr) return size;
    removed = extract(mRegistrants, registrant->getHandler());
    mRegistrants.push_back(registrant);
    return size;
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
