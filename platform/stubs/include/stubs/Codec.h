#pragma once

#include <android/binder_parcel.h>
#include <android/binder_parcel_utils.h>
#include <android/binder_status.h>

#include <cstdint>

#include "stubs/Fields.h"

// How a record stands in a parcel. Reading is safe on any input.
namespace subsys_stubs {

// The fields behind their size in bytes, which counts itself.
template <Record R>
binder_status_t writeFields(AParcel* parcel, const R& record) {
    const int32_t start = AParcel_getDataPosition(parcel);
    binder_status_t status = AParcel_writeInt32(parcel, 0);
    forEachField(record, [&](const char*, const auto& value) {
        if (status == STATUS_OK) status = ndk::AParcel_writeData(parcel, value);
    });
    if (status != STATUS_OK) return status;
    const int32_t end = AParcel_getDataPosition(parcel);
    status = AParcel_setDataPosition(parcel, start);
    if (status == STATUS_OK) status = AParcel_writeInt32(parcel, end - start);
    if (status == STATUS_OK) status = AParcel_setDataPosition(parcel, end);
    return status;
}

// Reads the fields that the sender knew and skips those that only the sender knows: either may be of another version.
template <Record R>
binder_status_t readFields(const AParcel* parcel, R& record) {
    const int32_t start = AParcel_getDataPosition(parcel);
    int32_t size = 0;
    binder_status_t status = AParcel_readInt32(parcel, &size);
    if (status != STATUS_OK) return status;
    if (size < static_cast<int32_t>(sizeof(size)) || start > INT32_MAX - size) return STATUS_BAD_VALUE;
    forEachField(record, [&](const char*, auto& value) {
        const bool sent = AParcel_getDataPosition(parcel) - start < size;
        if (status == STATUS_OK && sent) status = ndk::AParcel_readData(parcel, &value);
    });
    return status == STATUS_OK ? AParcel_setDataPosition(parcel, start + size) : status;
}

}  // namespace subsys_stubs
