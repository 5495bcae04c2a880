#pragma once

#include "Parcel.h"

#include <android/binder_ibinder.h>

#include <string>

struct AIBinder_Class {
    AIBinder_Class(const char* interfaceDescriptor, AIBinder_Class_onCreate create, AIBinder_Class_onDestroy destroy,
                   AIBinder_Class_onTransact transact);

    // Makes what a call of this interface begins with the content of the parcel.
    void writeToken(AParcel& parcel) const;
    // Moves behind the token; false when it is not this interface's.
    [[nodiscard]] bool takeToken(const AParcel& parcel) const;

    const std::string descriptor;
    const uint64_t descriptorHash;
    const AIBinder_Class_onCreate onCreate;
    const AIBinder_Class_onDestroy onDestroy;
    const AIBinder_Class_onTransact onTransact;
    AIBinder_onDump onDump = nullptr;
    const char** functionNames = nullptr;  // by code, from 1 on
    size_t functionCount = 0;

private:
    AParcel mToken;
};
