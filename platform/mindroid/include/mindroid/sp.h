#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

namespace mindroid {

// Strong pointer to an Object. The pointee lives while at least one sp holds it.
// One sp instance belongs to one thread at a time; the reference count itself is atomic.
template <typename T>
class sp {
public:
    sp() = default;
    sp(std::nullptr_t) {}
    // Implicit, so that `sp<T> p = new T(...)` reads as it does on a device.
    sp(T* object) : mObject(object) {
        if (mObject != nullptr) mObject->incStrong();
    }
    sp(const sp& other) : sp(other.mObject) {}
    sp(sp&& other) noexcept : mObject(std::exchange(other.mObject, nullptr)) {}

    template <typename U, std::enable_if_t<std::is_convertible_v<U*, T*>, int> = 0>
    sp(const sp<U>& other) : sp(static_cast<T*>(other.get())) {}
    template <typename U, std::enable_if_t<std::is_convertible_v<U*, T*>, int> = 0>
    sp(sp<U>&& other) noexcept : mObject(std::exchange(other.mObject, nullptr)) {}

    ~sp() {
        if (mObject != nullptr) mObject->decStrong();
    }

    sp& operator=(sp other) noexcept {
        std::swap(mObject, other.mObject);
        return *this;
    }

    [[nodiscard]] T* get() const { return mObject; }
    T* operator->() const { return mObject; }
    T& operator*() const { return *mObject; }
    explicit operator bool() const { return mObject != nullptr; }

    void clear() { *this = nullptr; }

private:
    template <typename U>
    friend class sp;

    T* mObject = nullptr;
};

template <typename T, typename U>
bool operator==(const sp<T>& a, const sp<U>& b) {
    return a.get() == b.get();
}
template <typename T>
bool operator==(const sp<T>& a, std::nullptr_t) {
    return a.get() == nullptr;
}
template <typename T>
bool operator==(const sp<T>& a, const T* b) {
    return a.get() == b;
}

}  // namespace mindroid
