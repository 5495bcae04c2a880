#pragma once

#include "tests/support/Await.h"
#include "tests/support/ChildProcess.h"

#include <android/binder_auto_utils.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>

#include <cstdlib>
#include <memory>
#include <string>

namespace test {

// A client in a process of its own, which offers one callback of each class. Made while the test has one thread.
template <typename... Callbacks>
class ClientProcess {
public:
    explicit ClientProcess(const std::string& name)
        : mName("/" + name), mProcess([this] { (offer<Callbacks>(), ...); }) {}

    template <typename Interface>
    [[nodiscard]] std::shared_ptr<Interface> callback() const {
        const std::string name = Interface::descriptor + mName;
        return Interface::fromBinder(ndk::SpAIBinder(AServiceManager_waitForService(name.c_str())));
    }
    // Returns when the process is gone; this one may not know yet.
    void kill() { mProcess.end(); }
    // The callback of a client that was killed, once this process knows.
    template <typename Interface>
    [[nodiscard]] std::shared_ptr<Interface> killed() {
        ABinderProcess_startThreadPool();  // It tells of deaths.
        const auto dead = callback<Interface>();
        Event died;
        const ndk::ScopedAIBinder_DeathRecipient recipient(
            AIBinder_DeathRecipient_new([](void* event) { static_cast<Event*>(event)->signal(); }));
        if (AIBinder_linkToDeath(dead->asBinder().get(), recipient.get(), &died) != STATUS_OK) return nullptr;
        kill();
        return died.await() ? dead : nullptr;
    }

private:
    template <typename Callback>
    void offer() const {
        static const auto sCallback = ndk::SharedRefBase::make<Callback>();
        const std::string name = Callback::descriptor + mName;
        if (AServiceManager_addService(sCallback->asBinder().get(), name.c_str()) != EX_NONE) _exit(EXIT_FAILURE);
        ABinderProcess_startThreadPool();
    }

    const std::string mName;
    ChildProcess mProcess;
};

}  // namespace test
