#pragma once

#include <android/binder_auto_utils.h>
#include <device/Mutex.h>

#include <cstdint>
#include <string>

namespace subsys_stubs {

// What a proxy knows about its server's version of the interface. Thread: any.
class VersionCache {
public:
    // Each asks the server until that has answered once.
    ndk::ScopedAStatus version(const ndk::SpAIBinder& server, int32_t* result);
    ndk::ScopedAStatus hash(const ndk::SpAIBinder& server, std::string* result);

private:
    template <class T>
    struct Known {
        device::Mutex lock;
        T value SUBSYS_GUARDED_BY(lock);
    };
    template <class T>
    static ndk::ScopedAStatus get(Known<T>& known, const T& unknown, const ndk::SpAIBinder& server,
                                  transaction_code_t code, T* result);

    Known<int32_t> mVersion{{}, -1};
    Known<std::string> mHash{};
};

}  // namespace subsys_stubs
