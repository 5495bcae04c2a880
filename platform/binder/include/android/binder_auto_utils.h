#pragma once

// Owners of the objects of the C API. Thread: any; one owner is used by one thread at a time.

#include <android/binder_ibinder.h>
#include <android/binder_parcel.h>
#include <android/binder_status.h>

#include <cstddef>
#include <string>
#include <utility>

namespace ndk {

// Shares an AIBinder: one strong reference for each SpAIBinder.
class SpAIBinder {
public:
    SpAIBinder() = default;
    // Takes over a reference that the caller owns.
    explicit SpAIBinder(AIBinder* binder) : mBinder(binder) {}
    SpAIBinder(std::nullptr_t) {}  // NOLINT(google-explicit-constructor): null is written plainly
    SpAIBinder(const SpAIBinder& other) : mBinder(other.mBinder) {
        if (mBinder != nullptr) AIBinder_incStrong(mBinder);
    }
    SpAIBinder(SpAIBinder&& other) noexcept : mBinder(std::exchange(other.mBinder, nullptr)) {}
    ~SpAIBinder() { set(nullptr); }

    SpAIBinder& operator=(const SpAIBinder& other) { return *this = SpAIBinder(other); }
    SpAIBinder& operator=(SpAIBinder&& other) noexcept {
        if (this != &other) set(std::exchange(other.mBinder, nullptr));
        return *this;
    }

    // Takes over a reference that the caller owns.
    void set(AIBinder* binder) {
        AIBinder* old = std::exchange(mBinder, binder);
        if (old != nullptr) AIBinder_decStrong(old);
    }
    [[nodiscard]] AIBinder* get() const { return mBinder; }
    // Where a function puts a reference for this owner; it must be empty.
    [[nodiscard]] AIBinder** getR() { return &mBinder; }

    explicit operator bool() const { return mBinder != nullptr; }
    friend bool operator==(const SpAIBinder& a, const SpAIBinder& b) { return a.mBinder == b.mBinder; }
    friend bool operator<(const SpAIBinder& a, const SpAIBinder& b) { return AIBinder_lt(a.mBinder, b.mBinder); }
    friend bool operator>(const SpAIBinder& a, const SpAIBinder& b) { return b < a; }
    friend bool operator<=(const SpAIBinder& a, const SpAIBinder& b) { return !(b < a); }
    friend bool operator>=(const SpAIBinder& a, const SpAIBinder& b) { return !(a < b); }

private:
    AIBinder* mBinder = nullptr;
};

namespace impl {

// The only owner of a T, given back with Destroy.
template <typename T, void (*Destroy)(T*)>
class ScopedAResource {
public:
    ScopedAResource() = default;
    explicit ScopedAResource(T* resource) : mResource(resource) {}
    ScopedAResource(ScopedAResource&& other) noexcept : mResource(other.release()) {}
    ScopedAResource(const ScopedAResource&) = delete;
    ~ScopedAResource() { set(nullptr); }

    ScopedAResource& operator=(ScopedAResource&& other) noexcept {
        if (this != &other) set(other.release());
        return *this;
    }
    ScopedAResource& operator=(const ScopedAResource&) = delete;

    void set(T* resource) {
        T* old = std::exchange(mResource, resource);
        if (old != nullptr) Destroy(old);
    }
    [[nodiscard]] T* get() const { return mResource; }
    // Where a function puts, or takes, the resource.
    [[nodiscard]] T** getR() { return &mResource; }
    [[nodiscard]] T* release() { return std::exchange(mResource, nullptr); }

private:
    T* mResource = nullptr;
};

}  // namespace impl

class ScopedAParcel final : public impl::ScopedAResource<AParcel, AParcel_delete> {
public:
    using ScopedAResource::ScopedAResource;
};

class ScopedAIBinder_DeathRecipient final
    : public impl::ScopedAResource<AIBinder_DeathRecipient, AIBinder_DeathRecipient_delete> {
public:
    using ScopedAResource::ScopedAResource;
};

class ScopedAIBinder_Weak final : public impl::ScopedAResource<AIBinder_Weak, AIBinder_Weak_delete> {
public:
    using ScopedAResource::ScopedAResource;

    ScopedAIBinder_Weak() = default;
    ScopedAIBinder_Weak(ScopedAIBinder_Weak&&) noexcept = default;
    ScopedAIBinder_Weak(const ScopedAIBinder_Weak& other) : ScopedAResource(AIBinder_Weak_clone(other.get())) {}
    ScopedAIBinder_Weak& operator=(ScopedAIBinder_Weak&&) noexcept = default;
    ScopedAIBinder_Weak& operator=(const ScopedAIBinder_Weak& other) {
        if (this != &other) set(AIBinder_Weak_clone(other.get()));
        return *this;
    }

    [[nodiscard]] SpAIBinder promote() const { return SpAIBinder(AIBinder_Weak_promote(get())); }
    friend bool operator<(const ScopedAIBinder_Weak& a, const ScopedAIBinder_Weak& b) {
        return AIBinder_Weak_lt(a.get(), b.get());
    }
};

// The outcome of an interface method. Empty (default-constructed) is not a status: use ok().
class ScopedAStatus final : public impl::ScopedAResource<AStatus, AStatus_delete> {
public:
    using ScopedAResource::ScopedAResource;

    [[nodiscard]] bool isOk() const { return AStatus_isOk(get()); }
    [[nodiscard]] binder_exception_t getExceptionCode() const { return AStatus_getExceptionCode(get()); }
    [[nodiscard]] int32_t getServiceSpecificError() const { return AStatus_getServiceSpecificError(get()); }
    [[nodiscard]] binder_status_t getStatus() const { return AStatus_getStatus(get()); }
    [[nodiscard]] const char* getMessage() const { return AStatus_getMessage(get()); }
    [[nodiscard]] std::string getDescription() const {
        const char* text = AStatus_getDescription(get());
        std::string description(text);
        AStatus_deleteDescription(text);
        return description;
    }

    static ScopedAStatus ok() { return ScopedAStatus(AStatus_newOk()); }
    static ScopedAStatus fromExceptionCode(binder_exception_t exception) {
        return ScopedAStatus(AStatus_fromExceptionCode(exception));
    }
    static ScopedAStatus fromExceptionCodeWithMessage(binder_exception_t exception, const char* message) {
        return ScopedAStatus(AStatus_fromExceptionCodeWithMessage(exception, message));
    }
    static ScopedAStatus fromServiceSpecificError(int32_t serviceSpecific) {
        return ScopedAStatus(AStatus_fromServiceSpecificError(serviceSpecific));
    }
    static ScopedAStatus fromServiceSpecificErrorWithMessage(int32_t serviceSpecific, const char* message) {
        return ScopedAStatus(AStatus_fromServiceSpecificErrorWithMessage(serviceSpecific, message));
    }
    static ScopedAStatus fromStatus(binder_status_t status) { return ScopedAStatus(AStatus_fromStatus(status)); }
};

}  // namespace ndk
