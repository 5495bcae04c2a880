#pragma once

#include <android/binder_auto_utils.h>

#include <cstdint>
#include <mutex>
#include <string>

namespace subsys_stubs {

// What a proxy knows about its server's version of the interface. Thread: any.
class VersionCache {
public:
    // Each asks the server until that has answered once.
    ndk::ScopedAStatus version(const ndk::SpAIBinder& server, int32_t* result);
    ndk::ScopedAStatus hash(const ndk::SpAIBinder& server, std::string* result);

private:
    std::mutex mMutex;
    int32_t mVersion = -1;  // guarded by mMutex, as is mHash
    std::string mHash;
};

}  // namespace subsys_stubs
