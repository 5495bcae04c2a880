#pragma once

#include <android/binder_ibinder.h>
#include <device/Mutex.h>

#include <list>
#include <memory>

namespace binder {

class RemoteBinder;

// One link. In the lists of its object and its recipient until one of the three ends of a link takes it out of both.
struct DeathLink {
    RemoteBinder* binder;
    AIBinder_DeathRecipient* recipient;
    void* cookie;
};
using Links = std::list<std::shared_ptr<DeathLink>>;
// Guards every list of links: death is rare, one lock keeps it simple.
inline constinit device::Mutex sLinksLock;

// Ends the links of an object whose last reference is gone.
void unlinkAll(RemoteBinder& binder);

// Tells every link of the object its death. The caller holds a reference; the object's session is not alive.
void sendObituaries(RemoteBinder& binder);

}  // namespace binder
