#pragma once

// Services by name. A name is a socket in a folder that only this user may enter: $SUBSYS_BINDER_DIR, else a folder in
// $XDG_RUNTIME_DIR, else one for the user in /tmp. In the process that registered it, a name gives the object itself.
// Thread: any.

#include <android/binder_ibinder.h>
#include <android/binder_status.h>

#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

// Publishes `binder`, of which it keeps a reference. A name of this process is replaced, one left by a dead process
// taken over. EX_ILLEGAL_ARGUMENT for a null object, a remote one, or a bad name (empty, over 127 characters, or
// outside
// `[A-Za-z0-9_./-]`); EX_ILLEGAL_STATE when another live process holds the name; EX_SECURITY when the folder is not
// ours alone; EX_UNSUPPORTED_OPERATION when the system refuses a file or a socket. The cause of each is logged.
[[nodiscard]] binder_exception_t AServiceManager_addService(AIBinder* binder, const char* instance);

// Each returns a strong reference, the caller's, or null. checkService answers at once.
[[nodiscard]] AIBinder* AServiceManager_checkService(const char* instance);
// Tries for 5 seconds.
[[nodiscard]] AIBinder* AServiceManager_getService(const char* instance);
// Blocks until the service is there; null at once for a bad name only.
[[nodiscard]] AIBinder* AServiceManager_waitForService(const char* instance);
// There is no manifest here: a service is declared while a live process holds its name.
[[nodiscard]] bool AServiceManager_isDeclared(const char* instance);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
