#pragma once

#include <mindroid/sp.h>

#include <atomic>
#include <cstdint>

namespace mindroid {

// Root of every reference-counted class. Created with no reference; the first sp takes one, the last
// one to let go deletes the object. Counting: any thread.
// A constructor must not hand out an sp of its own object: letting go of it would delete a half-built object.
//
// The virtual operations keep this order: libraries that are built apart share it.
class Object {
public:
    Object() = default;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    // Identity, unless a class says otherwise.
    [[nodiscard]] virtual bool equals(const sp<Object>& other) const;
    [[nodiscard]] virtual int32_t hashCode() const;
    virtual ~Object();

protected:
    // Called when the first reference is taken, and when the last was given up, just before the deletion.
    virtual void onFirstReference();
    virtual void onLastReference();

public:
    void incStrong() const {
        if (mStrongCount.fetch_add(1, std::memory_order_relaxed) == 0) firstReference();
    }
    void decStrong() const {
        // The only holder needs no atomic subtraction: nobody else can reach the count.
        if (mStrongCount.load(std::memory_order_acquire) == 1 ||
            mStrongCount.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            lastReference();
        }
    }

private:
    void firstReference() const;
    void lastReference() const;

    mutable std::atomic<int32_t> mStrongCount{0};
    // Without a gap after it, so that the first data member of a subclass stands at sizeof(Object) whatever its type.
    [[maybe_unused]] uint32_t mPadding = 0;
};

static_assert(sizeof(Object) == sizeof(void*) + 8);

}  // namespace mindroid
