#pragma once

#include "Parcel.h"

#include <android/binder_auto_utils.h>
#include <device/Mutex.h>

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

namespace binder {

class LocalBinder;
class RemoteBinder;
class Session;

// The objects that a session's two processes share. An exported one is kept alive here, with the number of times it was
// sent; the peer gives back the number of times its proxy came in when that proxy is gone, so an object that is on its
// way again meanwhile is never lost. An imported one has one proxy, known weakly. Thread: any.
class ObjectTable {
public:
    // Puts the parcel's objects into the form that travels, and counts them as sent.
    [[nodiscard]] binder_status_t pack(AParcel& parcel, const Session& session);
    // The parcel was not sent after all.
    void unpack(AParcel& parcel);
    // The objects of a received parcel; false for an offset or an id that the peer cannot mean.
    [[nodiscard]] bool receive(AParcel& parcel, const std::shared_ptr<Session>& session);

    // Sends a local object outside a parcel; 0 when the session has ended.
    [[nodiscard]] uint32_t send(AIBinder* binder);
    // An object of the peer came in, outside a parcel.
    [[nodiscard]] ndk::SpAIBinder import(uint32_t id, uint64_t descriptorHash, const std::shared_ptr<Session>& session);
    // One of ours that the peer holds, or null.
    [[nodiscard]] ndk::SpAIBinder exported(uint32_t id);
    // The peer gives `count` references back; false when it does not have them. After the last one `dropped` is the
    // object, whose owner's code may run when the caller lets go of it.
    [[nodiscard]] bool release(uint32_t id, uint64_t count, ndk::SpAIBinder& dropped);
    // Forgets a proxy; the number of times it came in.
    [[nodiscard]] uint64_t forget(RemoteBinder& proxy);

    // The session has ended: drops what was exported and gives the living proxies.
    [[nodiscard]] std::vector<ndk::SpAIBinder> close();

private:
    struct Export {
        ndk::SpAIBinder binder;
        uint64_t sent = 0;
    };

    [[nodiscard]] uint32_t sendLocked(AIBinder* binder) SUBSYS_REQUIRES(mLock);
    [[nodiscard]] ndk::SpAIBinder resolve(FlatObject flat, const std::shared_ptr<Session>& session);

    device::Mutex mLock;
    bool mClosed SUBSYS_GUARDED_BY(mLock) = false;
    uint32_t mLastId SUBSYS_GUARDED_BY(mLock) = 0;
    std::unordered_map<uint32_t, Export> mExports SUBSYS_GUARDED_BY(mLock);
    std::unordered_map<const AIBinder*, uint32_t> mIds SUBSYS_GUARDED_BY(mLock);
    std::unordered_map<uint32_t, RemoteBinder*> mImports SUBSYS_GUARDED_BY(mLock);
};

}  // namespace binder
