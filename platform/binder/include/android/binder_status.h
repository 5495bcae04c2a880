#pragma once

// Results of the binder API: plain statuses, and AStatus, the outcome of an interface method.
// Thread: any. An AStatus itself is not synchronised; one thread at a time owns it.

#include <errno.h>
#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

enum {
    STATUS_OK = 0,

    STATUS_UNKNOWN_ERROR = (-2147483647 - 1),
    STATUS_NO_MEMORY = -ENOMEM,
    STATUS_INVALID_OPERATION = -ENOSYS,
    STATUS_BAD_VALUE = -EINVAL,
    STATUS_BAD_TYPE = (STATUS_UNKNOWN_ERROR + 1),
    STATUS_NAME_NOT_FOUND = -ENOENT,
    STATUS_PERMISSION_DENIED = -EPERM,
    STATUS_NO_INIT = -ENODEV,
    STATUS_ALREADY_EXISTS = -EEXIST,
    STATUS_DEAD_OBJECT = -EPIPE,
    STATUS_FAILED_TRANSACTION = (STATUS_UNKNOWN_ERROR + 2),
    STATUS_BAD_INDEX = -EOVERFLOW,
    STATUS_NOT_ENOUGH_DATA = -ENODATA,
    STATUS_WOULD_BLOCK = -EWOULDBLOCK,
    STATUS_TIMED_OUT = -ETIMEDOUT,
    STATUS_UNKNOWN_TRANSACTION = -EBADMSG,
    STATUS_FDS_NOT_ALLOWED = (STATUS_UNKNOWN_ERROR + 7),
    STATUS_UNEXPECTED_NULL = (STATUS_UNKNOWN_ERROR + 8),
};
// One of the STATUS_ values; every negative value that is none of them is reported as STATUS_UNKNOWN_ERROR.
typedef int32_t binder_status_t;

enum {
    EX_NONE = 0,
    EX_SECURITY = -1,
    EX_BAD_PARCELABLE = -2,
    EX_ILLEGAL_ARGUMENT = -3,
    EX_NULL_POINTER = -4,
    EX_ILLEGAL_STATE = -5,
    EX_NETWORK_MAIN_THREAD = -6,
    EX_UNSUPPORTED_OPERATION = -7,
    EX_SERVICE_SPECIFIC = -8,
    EX_PARCELABLE = -9,
    // The call did not get through; AStatus_getStatus says why.
    EX_TRANSACTION_FAILED = -129,
};
// One of the EX_ values; a value that is none of them is reported as EX_TRANSACTION_FAILED.
typedef int32_t binder_exception_t;

typedef struct AStatus AStatus;

// Each of these returns an object that the caller deletes with AStatus_delete. Messages are copied.
AStatus* AStatus_newOk(void);
AStatus* AStatus_fromExceptionCode(binder_exception_t exception);
AStatus* AStatus_fromExceptionCodeWithMessage(binder_exception_t exception, const char* message);
AStatus* AStatus_fromServiceSpecificError(int32_t serviceSpecific);
AStatus* AStatus_fromServiceSpecificErrorWithMessage(int32_t serviceSpecific, const char* message);
// EX_TRANSACTION_FAILED with this status; ok for STATUS_OK.
AStatus* AStatus_fromStatus(binder_status_t status);

bool AStatus_isOk(const AStatus* status);
binder_exception_t AStatus_getExceptionCode(const AStatus* status);
// The service's own code of EX_SERVICE_SPECIFIC, else 0.
int32_t AStatus_getServiceSpecificError(const AStatus* status);
// The transport's status of EX_TRANSACTION_FAILED, else STATUS_OK.
binder_status_t AStatus_getStatus(const AStatus* status);
// Never null; valid as long as the status.
const char* AStatus_getMessage(const AStatus* status);

// A line for a log, to be deleted with AStatus_deleteDescription.
const char* AStatus_getDescription(const AStatus* status);
void AStatus_deleteDescription(const char* description);
// Null is allowed.
void AStatus_delete(AStatus* status);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
