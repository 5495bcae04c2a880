#pragma once

#include <mindroid/HandlerThread.h>
#include <mindroid/Object.h>

#include <cstdint>

namespace hal {

// Makes the one T of the process. Each construction makes a new T and puts it in the place of the one before, which
// then lives only as long as someone still holds it.
template <typename T>
class ComponentSingleton : public mindroid::Object {
public:
    ComponentSingleton(int32_t id, const mindroid::sp<mindroid::HandlerThread>& thread) {
        sInstance = new T(id, thread);
    }

    // Never destroyed: threads may still use the T while the process ends.
    static inline mindroid::sp<T>& sInstance = *new mindroid::sp<T>();
};

}  // namespace hal
