#pragma once

// What this platform knows beyond the NDK, for tools that help to debug.

#include <android/binder_ibinder.h>

#include <sys/types.h>

#include <cstdint>

extern "C" {
#pragma GCC visibility push(default)

// The process that `binder` lives in, as the kernel named it; one's own for a local object. Thread: any.
[[nodiscard]] pid_t AIBinder_getServerPid(AIBinder* binder);

// How many binder threads there are now, how many of them wait for calls, and how many there may be. Those that joined
// are counted. Thread: any.
void ABinderProcess_getThreadUsage(uint32_t* threads, uint32_t* idle, uint32_t* limit);

// What this process and another one have to do for each other.
typedef struct ABinderProcess_Peer {
    pid_t pid;
    uint32_t waitingCalls;  // its calls that no binder thread has taken; all its oneway calls together count as one
    uint64_t unreadBytes;   // what it has not read yet, with the kernel's overhead
    uint64_t undelivered;   // oneway calls to it that failed because it was too slow, since the first contact
} ABinderProcess_Peer;

// Calls `onPeer` for each living process that this one is in contact with. Waits for no process. Thread: any.
void ABinderProcess_forEachPeer(void (*onPeer)(const ABinderProcess_Peer* peer, void* cookie), void* cookie);

#pragma GCC visibility pop
}
