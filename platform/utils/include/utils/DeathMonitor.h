#pragma once

#include <android/binder_interface_utils.h>
#include <mindroid/Handler.h>
#include <mindroid/Object.h>

#include <cstdint>
#include <memory>

namespace subsys_utils {

// Watches the process behind one callback and posts a message to a handler when it dies. All operations: any thread.
//
//   owner --sp--> DeathMonitor --shared_ptr--> State --sp--> handler, obj
//                                                | owns the callback watched and its death recipient
//                                                v
//             binder library --owns--> cookie --weak_ptr--> State
//             pending message --weak_ptr--> State
//
// Nothing that the binder library or a message queue holds keeps the State alive: a monitor that goes takes its watch
// with it, and no message comes after. A handler that owns its monitor forms a cycle with it, which is for objects that
// live as long as the process.
class DeathMonitor final : public mindroid::Object {
public:
    DeathMonitor();
    ~DeathMonitor() override;

    // Deaths are told from now on by a message with this `what` and `obj`, which goes to the handler's handleMessage.
    void registerClientDeathEvent(const mindroid::sp<mindroid::Handler>& handler, int32_t what,
                                  const mindroid::sp<mindroid::Object>& obj);

    // Watches this callback, and no longer the one before: once init has been called, a death of the one before starts
    // no message any more, not even one that was already in the queue. The handler may still be about to take one, or
    // be busy with it, when init returns. So it must compare what it holds with what died, not just clear it. A
    // callback that is dead already is told like a death. One of this process can't die and is not watched; null
    // watches nothing.
    void init(const std::shared_ptr<ndk::ICInterface>& callback);

private:
    struct State;
    const std::shared_ptr<State> mState;
};

}  // namespace subsys_utils
