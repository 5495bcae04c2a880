#include "ObjectTable.h"

#include "IBinder.h"
#include "RemoteBinder.h"
#include "Session.h"

#include <cstring>
#include <utility>

namespace binder {

binder_status_t ObjectTable::pack(AParcel& parcel, const Session& session) {
    const auto& objects = parcel.objects();
    if (objects.empty()) return STATUS_OK;
    if (objects.size() > MAX_OBJECTS) return STATUS_FAILED_TRANSACTION;
    for (const auto& object : objects) {
        RemoteBinder* remote = object.binder.get()->remote();
        if (remote != nullptr && remote->session() != &session) return STATUS_INVALID_OPERATION;
    }
    const device::MutexLock lock(mLock);
    if (mClosed) return STATUS_DEAD_OBJECT;
    for (const auto& object : objects) {
        AIBinder* binder = object.binder.get();
        parcel.setFlatObject(
            object.offset, binder->remote() != nullptr
                               ? FlatObject{ObjectKind::Receivers, binder->remote()->id(), 0}
                               : FlatObject{ObjectKind::Senders, sendLocked(binder), binder->clazz()->descriptorHash});
    }
    return STATUS_OK;
}

void ObjectTable::unpack(AParcel& parcel) {
    for (const auto& object : parcel.objects()) {
        uint32_t id = 0;
        {
            const device::MutexLock lock(mLock);
            const auto found = mIds.find(object.binder.get());
            if (found != mIds.end()) id = found->second;
        }
        ndk::SpAIBinder dropped;
        if (id != 0) (void)release(id, 1, dropped);
    }
}

bool ObjectTable::receive(AParcel& parcel, const std::shared_ptr<Session>& session) {
    const size_t count = parcel.offsetCount();
    size_t end = 0;
    for (size_t i = 0; i < count; ++i) {
        const uint32_t offset = parcel.offsetAt(i);
        if (offset < end || offset % sizeof(uint32_t) != 0) return false;
        end = size_t{offset} + sizeof(FlatObject);
        if (end > parcel.size()) return false;
        FlatObject flat{};
        memcpy(&flat, parcel.data() + offset, sizeof(flat));
        ndk::SpAIBinder binder = resolve(flat, session);
        if (binder.get() == nullptr) return false;
        parcel.objects().push_back({offset, std::move(binder)});
    }
    return true;
}

ndk::SpAIBinder ObjectTable::resolve(FlatObject flat, const std::shared_ptr<Session>& session) {
    if (flat.id == 0) return nullptr;
    if (flat.kind == ObjectKind::Senders) return import(flat.id, flat.descriptor, session);
    return flat.kind == ObjectKind::Receivers ? exported(flat.id) : nullptr;
}

uint32_t ObjectTable::send(AIBinder* binder) {
    const device::MutexLock lock(mLock);
    return mClosed ? 0 : sendLocked(binder);
}

uint32_t ObjectTable::sendLocked(AIBinder* binder) {
    uint32_t& id = mIds[binder];
    if (id == 0) id = ++mLastId;
    Export& entry = mExports[id];
    if (entry.sent++ == 0) {
        binder->incStrong();
        entry.binder.set(binder);
    }
    return id;
}

ndk::SpAIBinder ObjectTable::import(uint32_t id, uint64_t descriptorHash, const std::shared_ptr<Session>& session) {
    const device::MutexLock lock(mLock);
    RemoteBinder*& proxy = mImports[id];
    // One whose last reference is just gone gives back what it received, not this.
    if (proxy == nullptr || !proxy->tryIncStrong()) proxy = new RemoteBinder(session, id, descriptorHash);
    ++proxy->received;
    return ndk::SpAIBinder(proxy);
}

ndk::SpAIBinder ObjectTable::exported(uint32_t id) {
    const device::MutexLock lock(mLock);
    const auto found = mExports.find(id);
    return found == mExports.end() ? nullptr : found->second.binder;
}

bool ObjectTable::release(uint32_t id, uint64_t count, ndk::SpAIBinder& dropped) {
    const device::MutexLock lock(mLock);
    const auto found = mExports.find(id);
    if (found == mExports.end()) return mClosed;
    if (count == 0 || count > found->second.sent) return false;
    found->second.sent -= count;
    if (found->second.sent == 0) {
        dropped = std::move(found->second.binder);
        mIds.erase(dropped.get());
        mExports.erase(found);
    }
    return true;
}

uint64_t ObjectTable::forget(RemoteBinder& proxy) {
    const device::MutexLock lock(mLock);
    const auto found = mImports.find(proxy.id());
    if (found != mImports.end() && found->second == &proxy) mImports.erase(found);
    return proxy.received;
}

std::vector<ndk::SpAIBinder> ObjectTable::close() {
    std::unordered_map<uint32_t, Export> dropped;  // without the lock: their owners' code may run
    std::vector<ndk::SpAIBinder> living;
    const device::MutexLock lock(mLock);
    mClosed = true;
    dropped.swap(mExports);
    mIds.clear();
    for (const auto& [id, proxy] : mImports) {
        if (proxy != nullptr && proxy->tryIncStrong()) living.emplace_back(proxy);
    }
    return living;
}

}  // namespace binder
