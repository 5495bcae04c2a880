#include "RemoteBinder.h"

#include "Log.h"
#include "Session.h"

namespace binder {

bool RemoteBinder::associate(const AIBinder_Class* clazz) {
    const AIBinder_Class* known = mClass.load(std::memory_order_acquire);
    if (known != nullptr) return known == clazz || known->descriptorHash == clazz->descriptorHash;
    if (!isAlive()) return false;
    if (mDescriptorHash != clazz->descriptorHash) {
        warn("an object of process %d is no %s", mSession->peer().pid, clazz->descriptor.c_str());
        return false;
    }
    return mClass.compare_exchange_strong(known, clazz, std::memory_order_acq_rel) ||
           known->descriptorHash == clazz->descriptorHash;
}

binder_status_t RemoteBinder::transact(uint32_t code, AParcel& parcel, bool oneway) {
    return oneway ? mSession->post(mId, code, parcel) : mSession->call(mId, code, parcel);
}

bool RemoteBinder::isAlive() const {
    return mSession->isAlive();
}

void RemoteBinder::onLastStrong() {
    unlinkAll(*this);
    const uint64_t count = mSession->objects().forget(*this);
    mSession->release(mId, count);
}

}  // namespace binder
