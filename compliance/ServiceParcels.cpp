#include "compliance/ServiceRun.h"

#include <android/binder_ibinder.h>
#include <android/binder_parcel.h>
#include <android/binder_parcel_utils.h>

#include <functional>
#include <tuple>
#include <type_traits>
#include <vector>

namespace compliance {

namespace {

using Write = std::function<binder_status_t(AParcel*)>;

std::string nameOf(binder_status_t status) {
    return status == STATUS_OK ? "success" : ndk::ScopedAStatus::fromStatus(status).getDescription();
}

// The status of a call whose data are what `write` writes.
binder_status_t transact(AIBinder* binder, transaction_code_t code, const Write& write) {
    ndk::ScopedAParcel in;
    ndk::ScopedAParcel out;
    binder_status_t status = AIBinder_prepareTransaction(binder, in.getR());
    if (status == STATUS_OK) status = write(in.get());
    return status == STATUS_OK ? AIBinder_transact(binder, code, in.getR(), out.getR(), 0) : status;
}

// One way to call a method wrongly, and what the caller is told. The method is not reached.
struct WrongCall {
    std::string what;
    binder_status_t expected;
    Write write;
};

// What a reader of this type says at the end of the data.
template <class T>
constexpr binder_status_t missingStatus() {
    if constexpr (subsys_stubs::isInterfacePointer<T>) return STATUS_BAD_TYPE;
    return std::is_same_v<T, std::string> ? STATUS_UNEXPECTED_NULL : STATUS_NOT_ENOUGH_DATA;
}

// The first arguments, with no value in particular, and then numbers.
template <class Arguments>
Write writeFirst(size_t count, const std::vector<int32_t>& numbers = {}) {
    return [count, numbers](AParcel* parcel) {
        binder_status_t status = STATUS_OK;
        size_t index = 0;
        const auto write = [&](const auto& argument) {
            if (status == STATUS_OK && index++ < count) status = ndk::AParcel_writeData(parcel, argument);
        };
        std::apply([&](const auto&... each) { (write(each), ...); }, Arguments{});
        for (const int32_t number : numbers) {
            if (status == STATUS_OK) status = AParcel_writeInt32(parcel, number);
        }
        return status;
    };
}

template <class Method>
std::vector<WrongCall> wrongCallsOf(const Method& method) {
    using Arguments = typename Method::Arguments;
    std::vector<WrongCall> calls;
    size_t index = 0;
    const auto add = [&]<class T>(const T&) {
        const std::string name = method.arguments[index];
        calls.push_back({"data that end before " + name, missingStatus<T>(), writeFirst<Arguments>(index)});
        if constexpr (subsys_stubs::Record<T>) {
            calls.push_back({"a null " + name, STATUS_UNEXPECTED_NULL, writeFirst<Arguments>(index, {0})});
            calls.push_back({name + " of 3 bytes", STATUS_BAD_VALUE, writeFirst<Arguments>(index, {1, 3})});
        }
        ++index;
    };
    std::apply([&](const auto&... each) { (add(each), ...); }, Arguments{});
    return calls;
}

Verdict tryAll(AIBinder* binder, transaction_code_t code, const std::vector<WrongCall>& calls) {
    for (const auto& call : calls) {
        const binder_status_t status = transact(binder, code, call.write);
        if (status != call.expected) return failed(nameOf(call.expected) + " for " + call.what, nameOf(status));
    }
    return ok();
}

Verdict tryUnknown(AIBinder* binder, transaction_code_t code) {
    return tryAll(binder, code, {{"the code", STATUS_UNKNOWN_TRANSACTION, [](AParcel*) { return STATUS_OK; }}});
}

}  // namespace

void checkParcels(ServiceRun& run) {
    const auto binder = run.service->asBinder();
    transaction_code_t last = 0;
    subsys_stubs::forEachMethod<interface::ISubsys>([&](const auto& method) {
        last = method.code;
        run.checks.check(std::string("incomplete calls of ") + method.name, BINDER,
                         [&] { return tryAll(binder.get(), method.code, wrongCallsOf(method)); });
    });
    for (const transaction_code_t code : {last + 1, transaction_code_t{0x00FFFF00}}) {
        run.checks.check("unknown transaction " + std::to_string(code), BINDER,
                         [&] { return tryUnknown(binder.get(), code); });
    }
}

}  // namespace compliance
