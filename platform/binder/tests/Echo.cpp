#include "binder/tests/Echo.h"

#include <android/binder_parcel_utils.h>

#include <cstdio>
#include <cstring>

namespace test {
namespace {

Echo& self(AIBinder* binder) {
    return *static_cast<Echo*>(AIBinder_getUserData(binder));
}

binder_status_t keepObject(Echo& echo, const AParcel* in, AParcel* out) {
    ndk::SpAIBinder object;
    const binder_status_t status = ndk::AParcel_readNullableStrongBinder(in, &object);
    if (status != STATUS_OK) return status;
    if (object.get() != nullptr) (void)AIBinder_associateClass(object.get(), echoClass());
    return AParcel_writeInt32(out, echo.keep(object) == object);
}

binder_status_t copyBytes(const AParcel* from, AParcel* to) {
    std::vector<uint8_t> bytes;
    const binder_status_t status = ndk::AParcel_readVector(from, &bytes);
    return status == STATUS_OK ? ndk::AParcel_writeVector(to, bytes) : status;
}

binder_status_t callBack(Echo& echo, const AParcel* in, AParcel* out) {
    binder_status_t read = STATUS_OK;
    const binder_status_t status = call(
        echo.kept(), ECHO, [&](AParcel* parcel) { read = copyBytes(in, parcel); },
        [&](const AParcel* reply) { copyBytes(reply, out); });
    return read == STATUS_OK ? status : read;
}

binder_status_t post(Echo& echo, const AParcel* in) {
    int32_t count = 0;
    binder_status_t status = AParcel_readInt32(in, &count);
    for (int32_t i = 0; i < count && status == STATUS_OK; ++i) {
        status = call(echo.kept(), NOTE, int32(i), {}, FLAG_ONEWAY);
    }
    return status;
}

binder_status_t note(Echo& echo, const AParcel* in) {
    int32_t value = 0;
    const binder_status_t status = AParcel_readInt32(in, &value);
    if (status != STATUS_OK) return status;
    echo.last = value;
    echo.note(value);
    return status;
}

binder_status_t passOn(Echo& echo, const AParcel* in, AParcel* out) {
    std::string name;
    const binder_status_t status = ndk::AParcel_readString(in, &name);
    return status == STATUS_OK ? AParcel_writeInt32(out, keep(service(name.c_str()), echo.kept())) : status;
}

binder_status_t onTransact(AIBinder* binder, transaction_code_t code, const AParcel* in, AParcel* out) {
    Echo& echo = self(binder);
    int32_t number = 0;
    switch (code) {
        case ECHO:
            return copyBytes(in, out);
        case STATUS:
            AParcel_readInt32(in, &number);
            return number;
        case KEEP:
            return keepObject(echo, in, out);
        case GIVE:
            return AParcel_writeStrongBinder(out, echo.kept().get());
        case DROP:
            echo.keep(nullptr);
            return STATUS_OK;
        case CALLBACK:
            return callBack(echo, in, out);
        case POST:
            return post(echo, in);
        case CALLER:
            AParcel_writeInt32(out, AIBinder_getCallingPid());
            return AParcel_writeInt32(out, static_cast<int32_t>(AIBinder_getCallingUid()));
        case NOTE:
            return note(echo, in);
        case LARGE:
            AParcel_readInt32(in, &number);
            return ndk::AParcel_writeVector(out, std::vector<uint8_t>(static_cast<size_t>(number)));
        case LAST:
            return AParcel_writeInt32(out, echo.last);
        case MAKE:
            return AParcel_writeStrongBinder(out, newEcho(new Echo).get());
        case BOUNCE:
            AParcel_readInt32(in, &number);
            return call(echo.kept(), NOTE, int32(number));
        case OPEN:
            return passOn(echo, in, out);
        default:
            return STATUS_UNKNOWN_TRANSACTION;
    }
}

binder_status_t onDump(AIBinder*, int fd, const char** args, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) {
        if (strcmp(args[i], "fail") == 0) return STATUS_BAD_VALUE;
        dprintf(fd, strcmp(args[i], "large") == 0 ? "%2000000s\n" : "%s\n", args[i]);
    }
    return STATUS_OK;
}

void* onCreate(void* echo) {
    return echo;
}
void onDestroy(void* userData) {
    auto* echo = static_cast<Echo*>(userData);
    echo->onDestroy();
    delete echo;
}

}  // namespace

const char* const ECHO_DESCRIPTOR = "test.IEcho";

const AIBinder_Class* echoClass() {
    static AIBinder_Class* const clazz = [] {
        AIBinder_Class* const defined = AIBinder_Class_define(ECHO_DESCRIPTOR, onCreate, onDestroy, onTransact);
        AIBinder_Class_setOnDump(defined, onDump);
        return defined;
    }();
    return clazz;
}

const AIBinder_Class* otherClass() {
    static AIBinder_Class* const clazz = AIBinder_Class_define("test.IOther", onCreate, onDestroy, onTransact);
    return clazz;
}

ndk::SpAIBinder newEcho(Echo* echo) {
    return ndk::SpAIBinder(AIBinder_new(echoClass(), echo));
}

binder_status_t call(const ndk::SpAIBinder& target, transaction_code_t code, const Write& write, const Read& read,
                     binder_flags_t flags) {
    ndk::ScopedAParcel in;
    ndk::ScopedAParcel out;
    const binder_status_t prepared = AIBinder_prepareTransaction(target.get(), in.getR());
    if (prepared != STATUS_OK) return prepared;
    if (write) write(in.get());
    const binder_status_t status = AIBinder_transact(target.get(), code, in.getR(), out.getR(), flags);
    if (status == STATUS_OK && read) read(out.get());
    return status;
}

Write int32(int32_t value) {
    return [value](AParcel* in) { AParcel_writeInt32(in, value); };
}

std::vector<uint8_t> contentOf(const AParcel* parcel) {
    std::vector<uint8_t> bytes(static_cast<size_t>(AParcel_getDataSize(parcel)));
    AParcel_marshal(parcel, bytes.data(), 0, bytes.size());
    return bytes;
}

std::vector<uint8_t> token() {
    const ndk::SpAIBinder object = newEcho(new Echo);
    ndk::ScopedAParcel parcel;
    (void)AIBinder_prepareTransaction(object.get(), parcel.getR());
    return contentOf(parcel.get());
}

int32_t callForInt(const ndk::SpAIBinder& target, transaction_code_t code, const Write& write) {
    int32_t result = -1;
    const binder_status_t status =
        call(target, code, write, [&](const AParcel* out) { AParcel_readInt32(out, &result); });
    return status == STATUS_OK ? result : status;
}

ndk::SpAIBinder callForObject(const ndk::SpAIBinder& target, transaction_code_t code) {
    ndk::SpAIBinder object;
    call(target, code, {}, [&](const AParcel* out) { ndk::AParcel_readRequiredStrongBinder(out, &object); });
    return object && AIBinder_associateClass(object.get(), echoClass()) ? object : nullptr;
}

binder_status_t keep(const ndk::SpAIBinder& target, const ndk::SpAIBinder& object) {
    return call(target, KEEP, [&](AParcel* in) { AParcel_writeStrongBinder(in, object.get()); });
}

binder_status_t echo(const ndk::SpAIBinder& target, size_t size) {
    std::vector<uint8_t> sent(size);
    for (size_t i = 0; i < size; ++i) sent[i] = static_cast<uint8_t>(i * 7);
    std::vector<uint8_t> received;
    const binder_status_t status = call(
        target, ECHO, [&](AParcel* in) { ndk::AParcel_writeVector(in, sent); },
        [&](const AParcel* out) { ndk::AParcel_readVector(out, &received); });
    return status == STATUS_OK && received != sent ? STATUS_UNKNOWN_ERROR : status;
}

ndk::SpAIBinder service(const char* name) {
    ndk::SpAIBinder found(AServiceManager_waitForService(name));
    return found && AIBinder_associateClass(found.get(), echoClass()) ? found : nullptr;
}

}  // namespace test
