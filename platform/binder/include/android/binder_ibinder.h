#pragma once

// Binder objects, local and remote, and transactions on them.
// Thread: any, for every function; the callbacks say their own.

#include <android/binder_parcel.h>
#include <android/binder_status.h>

#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

typedef uint32_t binder_flags_t;
enum {
    // Returns when the call is queued. No reply, and the handler's status is lost.
    FLAG_ONEWAY = 0x01,
    // The kernel is to clear its copy of the data. There is none here.
    FLAG_CLEAR_BUF = 0x20,
};

typedef uint32_t transaction_code_t;
enum {
    FIRST_CALL_TRANSACTION = 0x00000001,
    LAST_CALL_TRANSACTION = 0x00ffffff,
};

// What a local object is: its interface descriptor and its callbacks. Defined once for an interface, never freed.
typedef struct AIBinder_Class AIBinder_Class;
typedef struct AIBinder_Weak AIBinder_Weak;
typedef struct AIBinder_DeathRecipient AIBinder_DeathRecipient;

// Turns the argument of AIBinder_new into the object's user data.
typedef void* (*AIBinder_Class_onCreate)(void* args);
// The last strong reference is gone. Thread: any.
typedef void (*AIBinder_Class_onDestroy)(void* userData);
// A call. `out` is discarded when it is oneway. Thread: binder; the caller's own for a call inside the process.
typedef binder_status_t (*AIBinder_Class_onTransact)(AIBinder* binder, transaction_code_t code, const AParcel* in,
                                                     AParcel* out);
typedef binder_status_t (*AIBinder_onDump)(AIBinder* binder, int fd, const char** args, uint32_t numArgs);

// Null when an argument is null.
AIBinder_Class* AIBinder_Class_define(const char* interfaceDescriptor, AIBinder_Class_onCreate onCreate,
                                      AIBinder_Class_onDestroy onDestroy, AIBinder_Class_onTransact onTransact);
// To be set before the first object of the class is made.
void AIBinder_Class_setOnDump(AIBinder_Class* clazz, AIBinder_onDump onDump);
const char* AIBinder_Class_getDescriptor(const AIBinder_Class* clazz);
// The names of the methods, for tools: the first is that of code 1. The array is not copied. To be set before the first
// object of the class is made.
void AIBinder_Class_setTransactionCodeToFunctionNameMap(AIBinder_Class* clazz,
                                                        const char** transactionCodeToFunctionName, size_t length);
// Null for a code without a name.
const char* AIBinder_Class_getFunctionName(AIBinder_Class* clazz, transaction_code_t code);

// A local object with one strong reference, the caller's.
AIBinder* AIBinder_new(const AIBinder_Class* clazz, void* args);
void AIBinder_incStrong(AIBinder* binder);
// Null is refused with a log. Destroys the object when this was the last reference; its death links end with it.
void AIBinder_decStrong(AIBinder* binder);

bool AIBinder_isRemote(const AIBinder* binder);
// True for a local object. False for good once the death of a remote one was noticed.
bool AIBinder_isAlive(const AIBinder* binder);
// A call to the object's process and back.
binder_status_t AIBinder_ping(AIBinder* binder);
// Calls the class's onDump. A descriptor does not travel here: what a remote object writes comes back as text, cut at
// the size of a reply, and is written to `fd` then.
binder_status_t AIBinder_dump(AIBinder* binder, int fd, const char** args, uint32_t numArgs);

// An object that goes with `binder`, which must be local (else STATUS_INVALID_OPERATION), and is found at its proxies
// too. Replaces the one before.
binder_status_t AIBinder_setExtension(AIBinder* binder, AIBinder* ext);
// `*outExt` is the caller's reference, or null when there is none.
binder_status_t AIBinder_getExtension(AIBinder* binder, AIBinder** outExt);

// An order of objects, the same as long as they live; a weak reference compares as its object does, dead or alive.
bool AIBinder_lt(const AIBinder* lhs, const AIBinder* rhs);

// Says that this is an object of `clazz`; a remote object's descriptor is asked for, once, and compared. False for an
// object of another class.
bool AIBinder_associateClass(AIBinder* binder, const AIBinder_Class* clazz);
// The class it was made with or associated with first, or null.
const AIBinder_Class* AIBinder_getClass(AIBinder* binder);
// Of a local object what onCreate returned, else null.
void* AIBinder_getUserData(AIBinder* binder);

// The peer of the call that this thread is in (pid 0 when it is oneway), one's own outside a call.
uid_t AIBinder_getCallingUid(void);
pid_t AIBinder_getCallingPid(void);

// A parcel for AIBinder_transact, with the interface token written. STATUS_INVALID_OPERATION without a class.
binder_status_t AIBinder_prepareTransaction(AIBinder* binder, AParcel** in);
// Sends `*in`, which it takes and sets to null whatever happens, and gives the caller the reply in `*out` (to be
// deleted; null on failure). STATUS_UNKNOWN_TRANSACTION for a code outside 1..0xffffff, STATUS_DEAD_OBJECT when the
// object's process is gone, STATUS_FAILED_TRANSACTION for more than 1 MiB less two pages, or when a oneway call's
// process has about half of that waiting; the handler's status otherwise. On a local object the handler runs in place.
binder_status_t AIBinder_transact(AIBinder* binder, transaction_code_t code, AParcel** in, AParcel** out,
                                  binder_flags_t flags);

AIBinder_Weak* AIBinder_Weak_new(AIBinder* binder);
void AIBinder_Weak_delete(AIBinder_Weak* weakBinder);
// Another weak reference of the same object; null for null.
AIBinder_Weak* AIBinder_Weak_clone(const AIBinder_Weak* weak);
bool AIBinder_Weak_lt(const AIBinder_Weak* lhs, const AIBinder_Weak* rhs);
// A new strong reference, or null when the object is gone.
AIBinder* AIBinder_Weak_promote(AIBinder_Weak* weakBinder);

// Thread: binder.
typedef void (*AIBinder_DeathRecipient_onBinderDied)(void* cookie);
// The link of this cookie is over: the place to free it. Exactly once for each link. Thread: any.
typedef void (*AIBinder_DeathRecipient_onBinderUnlinked)(void* cookie);

AIBinder_DeathRecipient* AIBinder_DeathRecipient_new(AIBinder_DeathRecipient_onBinderDied onBinderDied);
// To be set before the first link.
void AIBinder_DeathRecipient_setOnUnlinked(AIBinder_DeathRecipient* recipient,
                                           AIBinder_DeathRecipient_onBinderUnlinked onUnlinked);
// Ends every link of the recipient. An obituary that runs meanwhile on another thread is finished first, unless this is
// called from an obituary, which waits for no other one.
void AIBinder_DeathRecipient_delete(AIBinder_DeathRecipient* recipient);

// `onBinderDied(cookie)` comes once when the object's process dies. STATUS_INVALID_OPERATION for a local object,
// STATUS_DEAD_OBJECT for a dead one, STATUS_NO_MEMORY, all after `onUnlinked(cookie)`. The same link may be made several times. The
// caller keeps a reference of the object: dropping the last one ends its links without an obituary.
binder_status_t AIBinder_linkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient, void* cookie);
// STATUS_NAME_NOT_FOUND without such a link; STATUS_DEAD_OBJECT when the object has died.
binder_status_t AIBinder_unlinkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient, void* cookie);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
