#pragma once

#include "Class.h"

#include <android/binder_ibinder.h>

#include <atomic>
#include <cstdint>

namespace binder {
class LocalBinder;
class RemoteBinder;
}  // namespace binder

// What local objects and proxies share: the counts, and the operations of the C API.
struct AIBinder {
public:
    AIBinder(const AIBinder&) = delete;
    AIBinder& operator=(const AIBinder&) = delete;

    void incStrong() { mStrong.fetch_add(1, std::memory_order_relaxed); }
    void decStrong();
    // False when the last strong reference is gone.
    [[nodiscard]] bool tryIncStrong();
    void incWeak() { mWeak.fetch_add(1, std::memory_order_relaxed); }
    void decWeak();

    // Null where it is the other kind.
    virtual binder::LocalBinder* local() { return nullptr; }
    virtual binder::RemoteBinder* remote() { return nullptr; }

    [[nodiscard]] virtual const AIBinder_Class* clazz() const = 0;
    [[nodiscard]] virtual bool associate(const AIBinder_Class* clazz) = 0;
    // Turns the call in `parcel` into its reply.
    virtual binder_status_t transact(uint32_t code, AParcel& parcel, bool oneway) = 0;

protected:
    AIBinder() = default;
    virtual ~AIBinder() = default;
    // The last strong reference is gone; weak ones may still keep the memory.
    virtual void onLastStrong() = 0;

private:
    std::atomic<int32_t> mStrong{1};
    std::atomic<int32_t> mWeak{1};  // all strong references together count as one
};
