#pragma once

#include <android/binder_parcel.h>
#include <android/binder_parcel_utils.h>
#include <android/binder_to_string.h>

#include <cstdint>
#include <string>

// How a record stands in a parcel and in a text. Reading is safe on any input.
namespace subsys_stubs {

// The fields behind their size in bytes, which counts itself.
template <class... Fields>
binder_status_t writeRecord(AParcel* parcel, const Fields&... fields) {
    const int32_t start = AParcel_getDataPosition(parcel);
    binder_status_t status = AParcel_writeInt32(parcel, 0);
    static_cast<void>(((status == STATUS_OK && (status = ndk::AParcel_writeData(parcel, fields)) == STATUS_OK) && ...));
    if (status != STATUS_OK) return status;
    const int32_t end = AParcel_getDataPosition(parcel);
    status = AParcel_setDataPosition(parcel, start);
    if (status == STATUS_OK) status = AParcel_writeInt32(parcel, end - start);
    return status == STATUS_OK ? AParcel_setDataPosition(parcel, end) : status;
}

// Reads the fields that the sender knew and skips those that only the sender knows: either may be of another version.
// The size may reach past the end of the parcel: what is read after such a record is not there.
template <class... Fields>
binder_status_t readRecord(const AParcel* parcel, Fields&... fields) {
    const int32_t start = AParcel_getDataPosition(parcel);
    int32_t size = 0;
    binder_status_t status = AParcel_readInt32(parcel, &size);
    if (status != STATUS_OK) return status;
    if (size < static_cast<int32_t>(sizeof(size)) || start > INT32_MAX - size) return STATUS_BAD_VALUE;
    const auto read = [&](auto& field) {
        if (AParcel_getDataPosition(parcel) - start >= size) return false;
        status = ndk::AParcel_readData(parcel, &field);
        return status == STATUS_OK;
    };
    static_cast<void>((read(fields) && ...));
    return status == STATUS_OK ? AParcel_setDataPosition(parcel, start + size) : status;
}

// `Name{first: 1, second: [2, 3]}`
class RecordText {
public:
    explicit RecordText(const char* name) : mText(name) { mText += '{'; }

    template <class T>
    void add(const char* field, const T& value) {
        mText += mSeparator + (field + (": " + android::internal::ToString(value)));
        mSeparator = ", ";
    }
    [[nodiscard]] std::string end() { return mText + '}'; }

private:
    std::string mText;
    const char* mSeparator = "";
};

}  // namespace subsys_stubs
