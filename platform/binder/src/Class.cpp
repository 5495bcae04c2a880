#include "Class.h"

#include <cstring>

namespace {
constexpr auto STRICT_MODE = static_cast<int32_t>(0x80000000);
constexpr int32_t NO_WORK_SOURCE = -1;
constexpr int32_t SYSTEM_HEADER = 0x53595354;

// FNV-1a.
uint64_t hashOf(std::string_view text) {
    uint64_t hash = 0xcbf29ce484222325;
    for (const char each : text) hash = (hash ^ static_cast<uint8_t>(each)) * 0x100000001b3;
    return hash;
}
}  // namespace

AIBinder_Class::AIBinder_Class(const char* interfaceDescriptor, AIBinder_Class_onCreate create,
                               AIBinder_Class_onDestroy destroy, AIBinder_Class_onTransact transact)
    : descriptor(interfaceDescriptor),
      descriptorHash(hashOf(descriptor)),
      onCreate(create),
      onDestroy(destroy),
      onTransact(transact) {
    for (const int32_t word : {STRICT_MODE, NO_WORK_SOURCE, SYSTEM_HEADER}) AParcel_writeInt32(&mToken, word);
    AParcel_writeString(&mToken, descriptor.data(), static_cast<int32_t>(descriptor.size()));
}

void AIBinder_Class::writeToken(AParcel& parcel) const {
    parcel.assign(mToken.data(), mToken.size());
    parcel.setPosition(mToken.size());
}

bool AIBinder_Class::takeToken(const AParcel& parcel) const {
    const uint8_t* token = parcel.take(mToken.size());
    return token != nullptr && memcmp(token, mToken.data(), mToken.size()) == 0;
}

AIBinder_Class* AIBinder_Class_define(const char* interfaceDescriptor, AIBinder_Class_onCreate onCreate,
                                      AIBinder_Class_onDestroy onDestroy, AIBinder_Class_onTransact onTransact) {
    if (interfaceDescriptor == nullptr || onCreate == nullptr || onDestroy == nullptr || onTransact == nullptr) {
        return nullptr;
    }
    return new AIBinder_Class(interfaceDescriptor, onCreate, onDestroy, onTransact);
}

void AIBinder_Class_setOnDump(AIBinder_Class* clazz, AIBinder_onDump onDump) {
    clazz->onDump = onDump;
}

const char* AIBinder_Class_getDescriptor(const AIBinder_Class* clazz) {
    return clazz->descriptor.c_str();
}

void AIBinder_Class_setTransactionCodeToFunctionNameMap(AIBinder_Class* clazz,
                                                        const char** transactionCodeToFunctionName, size_t length) {
    clazz->functionNames = transactionCodeToFunctionName;
    clazz->functionCount = length;
}

const char* AIBinder_Class_getFunctionName(AIBinder_Class* clazz, transaction_code_t code) {
    const bool isKnown = clazz->functionNames != nullptr && code >= 1 && code - 1 < clazz->functionCount;
    return isKnown ? clazz->functionNames[code - 1] : nullptr;
}
