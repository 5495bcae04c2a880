#pragma once

#include "DeathRecipient.h"
#include "IBinder.h"

#include <atomic>
#include <cstdint>
#include <memory>

namespace binder {

class Session;

// A proxy of an object that lives in the peer of a session. The session's table knows it, weakly; it shares the
// session.
class RemoteBinder final : public AIBinder {
public:
    RemoteBinder(std::shared_ptr<Session> session, uint32_t id, uint64_t descriptorHash)
        : mSession(std::move(session)), mId(id), mDescriptorHash(descriptorHash) {}

    RemoteBinder* remote() override { return this; }
    [[nodiscard]] const AIBinder_Class* clazz() const override { return mClass.load(std::memory_order_acquire); }
    [[nodiscard]] bool associate(const AIBinder_Class* clazz) override;
    binder_status_t transact(uint32_t code, AParcel& parcel, bool oneway) override;

    [[nodiscard]] bool isAlive() const;
    [[nodiscard]] const Session* session() const { return mSession.get(); }
    [[nodiscard]] uint32_t id() const { return mId; }

    uint64_t received = 0;  // times it came in; guarded by the session's table
    Links links SUBSYS_GUARDED_BY(sLinksLock);

protected:
    ~RemoteBinder() override = default;
    void onLastStrong() override;

private:
    const std::shared_ptr<Session> mSession;
    const uint32_t mId;
    const uint64_t mDescriptorHash;
    std::atomic<const AIBinder_Class*> mClass{nullptr};
};

}  // namespace binder
