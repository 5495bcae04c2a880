#pragma once

// The threads that serve incoming calls. Until they are started, calls to this process wait.
// Thread: any.

#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

// How many threads are started on demand, beyond the one that startThreadPool starts. 15 when never called; with 0 that
// one serves. False once started.
bool ABinderProcess_setThreadPoolMaxThreadCount(uint32_t numThreads);
void ABinderProcess_startThreadPool(void);
// Makes the calling thread one more of them; it does not return.
void ABinderProcess_joinThreadPool(void);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
