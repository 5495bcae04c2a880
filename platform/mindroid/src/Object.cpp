#include <mindroid/Object.h>

#include <functional>

namespace mindroid {

namespace {
// Holds the count up during the deletion, so that an sp taken then can't delete a second time.
constexpr int32_t DYING = 1 << 30;
}  // namespace

Object::~Object() = default;

bool Object::equals(const sp<Object>& other) const {
    return other.get() == this;
}

int32_t Object::hashCode() const {
    return static_cast<int32_t>(std::hash<const Object*>()(this));
}

void Object::onFirstReference() {}

void Object::onLastReference() {}

void Object::firstReference() const {
    const_cast<Object*>(this)->onFirstReference();
}

void Object::lastReference() const {
    mStrongCount.store(DYING, std::memory_order_relaxed);
    const_cast<Object*>(this)->onLastReference();
    delete this;
}

}  // namespace mindroid
