#pragma once

// What this platform knows beyond the NDK, for tools that help to debug.

#include <android/binder_ibinder.h>

#include <sys/types.h>

#include <cstdint>

extern "C" {
#pragma GCC visibility push(default)

// The process that `binder` lives in, as the kernel named it; one's own for a local object. Thread: any.
[[nodiscard]] pid_t AIBinder_getServerPid(AIBinder* binder);

// How many binder threads there are now, joined ones counted, and how many of them wait for calls. Thread: any.
void ABinderProcess_getThreadUsage(uint32_t* threads, uint32_t* idle);

#pragma GCC visibility pop
}
