#include "Status.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <utility>

namespace {

struct Named {
    int32_t value;
    const char* name;
};

constexpr Named STATUSES[] = {
    {STATUS_OK, "OK"},
    {STATUS_UNKNOWN_ERROR, "UNKNOWN_ERROR"},
    {STATUS_NO_MEMORY, "NO_MEMORY"},
    {STATUS_INVALID_OPERATION, "INVALID_OPERATION"},
    {STATUS_BAD_VALUE, "BAD_VALUE"},
    {STATUS_BAD_TYPE, "BAD_TYPE"},
    {STATUS_NAME_NOT_FOUND, "NAME_NOT_FOUND"},
    {STATUS_PERMISSION_DENIED, "PERMISSION_DENIED"},
    {STATUS_NO_INIT, "NO_INIT"},
    {STATUS_ALREADY_EXISTS, "ALREADY_EXISTS"},
    {STATUS_DEAD_OBJECT, "DEAD_OBJECT"},
    {STATUS_FAILED_TRANSACTION, "FAILED_TRANSACTION"},
    {STATUS_BAD_INDEX, "BAD_INDEX"},
    {STATUS_NOT_ENOUGH_DATA, "NOT_ENOUGH_DATA"},
    {STATUS_WOULD_BLOCK, "WOULD_BLOCK"},
    {STATUS_TIMED_OUT, "TIMED_OUT"},
    {STATUS_UNKNOWN_TRANSACTION, "UNKNOWN_TRANSACTION"},
    {STATUS_FDS_NOT_ALLOWED, "FDS_NOT_ALLOWED"},
    {STATUS_UNEXPECTED_NULL, "UNEXPECTED_NULL"},
};

constexpr Named EXCEPTIONS[] = {
    {EX_NONE, "EX_NONE"},
    {EX_SECURITY, "EX_SECURITY"},
    {EX_BAD_PARCELABLE, "EX_BAD_PARCELABLE"},
    {EX_ILLEGAL_ARGUMENT, "EX_ILLEGAL_ARGUMENT"},
    {EX_NULL_POINTER, "EX_NULL_POINTER"},
    {EX_ILLEGAL_STATE, "EX_ILLEGAL_STATE"},
    {EX_NETWORK_MAIN_THREAD, "EX_NETWORK_MAIN_THREAD"},
    {EX_UNSUPPORTED_OPERATION, "EX_UNSUPPORTED_OPERATION"},
    {EX_SERVICE_SPECIFIC, "EX_SERVICE_SPECIFIC"},
    {EX_PARCELABLE, "EX_PARCELABLE"},
    {EX_TRANSACTION_FAILED, "EX_TRANSACTION_FAILED"},
};

template <size_t Count>
const Named* find(const Named (&table)[Count], int32_t value) {
    const Named* found = std::find_if(table, table + Count, [value](const Named& each) { return each.value == value; });
    return found == table + Count ? nullptr : found;
}

binder_exception_t knownException(binder_exception_t exception) {
    return find(EXCEPTIONS, exception) != nullptr ? exception : EX_TRANSACTION_FAILED;
}

// What stands before the message: the service's code, or the name of the transport's status.
std::string detailOf(const AStatus& status) {
    if (status.exception == EX_SERVICE_SPECIFIC) return std::to_string(status.serviceSpecific) + ": ";
    if (status.exception == EX_TRANSACTION_FAILED) return std::string(find(STATUSES, status.transport)->name) + ": ";
    return {};
}

}  // namespace

namespace binder {

binder_status_t knownStatus(binder_status_t status) {
    return find(STATUSES, status) != nullptr ? status : STATUS_UNKNOWN_ERROR;
}

}  // namespace binder

// Success is the same for everyone, and never destroyed.
AStatus* AStatus_newOk() {
    static AStatus* const ok = new AStatus;
    return ok;
}

AStatus* AStatus_fromExceptionCode(binder_exception_t exception) {
    return AStatus_fromExceptionCodeWithMessage(exception, "");
}

AStatus* AStatus_fromExceptionCodeWithMessage(binder_exception_t exception, const char* message) {
    if (exception == EX_NONE) return AStatus_newOk();
    const binder_exception_t known = knownException(exception);
    const binder_status_t transport = known == EX_TRANSACTION_FAILED ? STATUS_FAILED_TRANSACTION : STATUS_OK;
    return new AStatus{known, 0, transport, message == nullptr ? "" : message};
}

AStatus* AStatus_fromServiceSpecificError(int32_t serviceSpecific) {
    return AStatus_fromServiceSpecificErrorWithMessage(serviceSpecific, "");
}

AStatus* AStatus_fromServiceSpecificErrorWithMessage(int32_t serviceSpecific, const char* message) {
    return new AStatus{EX_SERVICE_SPECIFIC, serviceSpecific, STATUS_OK, message == nullptr ? "" : message};
}

AStatus* AStatus_fromStatus(binder_status_t status) {
    if (status == STATUS_OK) return AStatus_newOk();
    return new AStatus{EX_TRANSACTION_FAILED, 0, binder::knownStatus(status), ""};
}

bool AStatus_isOk(const AStatus* status) {
    return status->exception == EX_NONE;
}

binder_exception_t AStatus_getExceptionCode(const AStatus* status) {
    return status->exception;
}

int32_t AStatus_getServiceSpecificError(const AStatus* status) {
    return status->serviceSpecific;
}

binder_status_t AStatus_getStatus(const AStatus* status) {
    return status->transport;
}

const char* AStatus_getMessage(const AStatus* status) {
    return status->message.c_str();
}

const char* AStatus_getDescription(const AStatus* status) {
    if (AStatus_isOk(status)) return strdup("No error");
    const std::string text = "Status(" + std::to_string(status->exception) + ", " +
                             find(EXCEPTIONS, status->exception)->name + "): '" + detailOf(*status) + status->message +
                             "'";
    return strdup(text.c_str());
}

void AStatus_deleteDescription(const char* description) {
    free(const_cast<char*>(description));
}

void AStatus_delete(AStatus* status) {
    if (status != AStatus_newOk()) delete status;
}
