#pragma once

// The container of a transaction's data. Reading past the end, a wrong length and a missing object are statuses, never
// undefined; writing without memory is STATUS_NO_MEMORY. In detail: a scalar gives STATUS_NOT_ENOUGH_DATA, an array
// longer than the bytes left STATUS_NO_MEMORY, an array length below -1 STATUS_BAD_VALUE, a missing object
// STATUS_BAD_TYPE, and a cut string reads as null. Thread: any. A parcel is not synchronised; one thread at a time uses
// it.

#include <android/binder_status.h>

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <uchar.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

typedef struct AIBinder AIBinder;
typedef struct AParcel AParcel;

// An empty parcel, bound to no object.
AParcel* AParcel_create(void);
// Null is allowed.
void AParcel_delete(AParcel* parcel);
// Drops data and objects; the position is 0 again.
binder_status_t AParcel_reset(AParcel* parcel);
int32_t AParcel_getDataSize(const AParcel* parcel);
int32_t AParcel_getDataPosition(const AParcel* parcel);
// STATUS_BAD_VALUE below 0. Writing continues there, over what is present; past the end nothing can be read, and
// writing fills the gap with zeroes.
binder_status_t AParcel_setDataPosition(const AParcel* parcel, int32_t position);

// Copies `len` bytes of the data from `start` on. STATUS_BAD_VALUE when there are fewer, STATUS_INVALID_OPERATION for a
// parcel with objects.
binder_status_t AParcel_marshal(const AParcel* parcel, uint8_t* buffer, size_t start, size_t len);
// Replaces the data; the position is 0 again.
binder_status_t AParcel_unmarshal(AParcel* parcel, const uint8_t* buffer, size_t len);

binder_status_t AParcel_writeBool(AParcel* parcel, bool value);
binder_status_t AParcel_readBool(const AParcel* parcel, bool* value);
binder_status_t AParcel_writeChar(AParcel* parcel, char16_t value);
binder_status_t AParcel_readChar(const AParcel* parcel, char16_t* value);
binder_status_t AParcel_writeByte(AParcel* parcel, int8_t value);
binder_status_t AParcel_readByte(const AParcel* parcel, int8_t* value);
binder_status_t AParcel_writeInt32(AParcel* parcel, int32_t value);
binder_status_t AParcel_readInt32(const AParcel* parcel, int32_t* value);
binder_status_t AParcel_writeUint32(AParcel* parcel, uint32_t value);
binder_status_t AParcel_readUint32(const AParcel* parcel, uint32_t* value);
binder_status_t AParcel_writeInt64(AParcel* parcel, int64_t value);
binder_status_t AParcel_readInt64(const AParcel* parcel, int64_t* value);
binder_status_t AParcel_writeUint64(AParcel* parcel, uint64_t value);
binder_status_t AParcel_readUint64(const AParcel* parcel, uint64_t* value);
binder_status_t AParcel_writeFloat(AParcel* parcel, float value);
binder_status_t AParcel_readFloat(const AParcel* parcel, float* value);
binder_status_t AParcel_writeDouble(AParcel* parcel, double value);
binder_status_t AParcel_readDouble(const AParcel* parcel, double* value);

// Allocators give the reader room for `length` elements and return false to refuse, which the reader sees as
// STATUS_NO_MEMORY. A null array comes as length -1 with a null `outBuffer`; refusing that one is
// STATUS_UNEXPECTED_NULL.
typedef bool (*AParcel_byteArrayAllocator)(void* arrayData, int32_t length, int8_t** outBuffer);
typedef bool (*AParcel_int32ArrayAllocator)(void* arrayData, int32_t length, int32_t** outBuffer);
typedef bool (*AParcel_uint32ArrayAllocator)(void* arrayData, int32_t length, uint32_t** outBuffer);
typedef bool (*AParcel_int64ArrayAllocator)(void* arrayData, int32_t length, int64_t** outBuffer);
typedef bool (*AParcel_uint64ArrayAllocator)(void* arrayData, int32_t length, uint64_t** outBuffer);
typedef bool (*AParcel_floatArrayAllocator)(void* arrayData, int32_t length, float** outBuffer);
typedef bool (*AParcel_doubleArrayAllocator)(void* arrayData, int32_t length, double** outBuffer);
typedef bool (*AParcel_charArrayAllocator)(void* arrayData, int32_t length, char16_t** outBuffer);
typedef bool (*AParcel_boolArrayAllocator)(void* arrayData, int32_t length);
typedef bool (*AParcel_boolArrayGetter)(const void* arrayData, size_t index);
typedef void (*AParcel_boolArraySetter)(void* arrayData, size_t index, bool value);

// Array writers: a length of -1 writes null; another negative length, or elements that are null, is STATUS_BAD_VALUE.
binder_status_t AParcel_writeByteArray(AParcel* parcel, const int8_t* arrayData, int32_t length);
binder_status_t AParcel_readByteArray(const AParcel* parcel, void* arrayData, AParcel_byteArrayAllocator allocator);
binder_status_t AParcel_writeInt32Array(AParcel* parcel, const int32_t* arrayData, int32_t length);
binder_status_t AParcel_readInt32Array(const AParcel* parcel, void* arrayData, AParcel_int32ArrayAllocator allocator);
binder_status_t AParcel_writeUint32Array(AParcel* parcel, const uint32_t* arrayData, int32_t length);
binder_status_t AParcel_readUint32Array(const AParcel* parcel, void* arrayData, AParcel_uint32ArrayAllocator allocator);
binder_status_t AParcel_writeInt64Array(AParcel* parcel, const int64_t* arrayData, int32_t length);
binder_status_t AParcel_readInt64Array(const AParcel* parcel, void* arrayData, AParcel_int64ArrayAllocator allocator);
binder_status_t AParcel_writeUint64Array(AParcel* parcel, const uint64_t* arrayData, int32_t length);
binder_status_t AParcel_readUint64Array(const AParcel* parcel, void* arrayData, AParcel_uint64ArrayAllocator allocator);
binder_status_t AParcel_writeFloatArray(AParcel* parcel, const float* arrayData, int32_t length);
binder_status_t AParcel_readFloatArray(const AParcel* parcel, void* arrayData, AParcel_floatArrayAllocator allocator);
binder_status_t AParcel_writeDoubleArray(AParcel* parcel, const double* arrayData, int32_t length);
binder_status_t AParcel_readDoubleArray(const AParcel* parcel, void* arrayData, AParcel_doubleArrayAllocator allocator);
binder_status_t AParcel_writeCharArray(AParcel* parcel, const char16_t* arrayData, int32_t length);
binder_status_t AParcel_readCharArray(const AParcel* parcel, void* arrayData, AParcel_charArrayAllocator allocator);
binder_status_t AParcel_writeBoolArray(AParcel* parcel, const void* arrayData, int32_t length,
                                       AParcel_boolArrayGetter getter);
binder_status_t AParcel_readBoolArray(const AParcel* parcel, void* arrayData, AParcel_boolArrayAllocator allocator,
                                      AParcel_boolArraySetter setter);

// `length` counts the NUL that the parcel writes at the end. Null comes as length -1 with a null `buffer`.
typedef bool (*AParcel_stringAllocator)(void* stringData, int32_t length, char** buffer);

// `length` bytes of UTF-8, without terminator; NULs inside survive. A null string is length -1. A sequence cut by the
// end is STATUS_BAD_VALUE; other bytes that are no UTF-8 are sent as U+FFFD, and so is a lone surrogate when read.
binder_status_t AParcel_writeString(AParcel* parcel, const char* string, int32_t length);
binder_status_t AParcel_readString(const AParcel* parcel, void* stringData, AParcel_stringAllocator allocator);

typedef bool (*AParcel_stringArrayAllocator)(void* arrayData, int32_t length);
typedef bool (*AParcel_stringArrayElementAllocator)(void* arrayData, size_t index, int32_t length, char** buffer);
// The element, null for null, and its length without terminator, -1 for null.
typedef const char* (*AParcel_stringArrayElementGetter)(const void* arrayData, size_t index, int32_t* outLength);

binder_status_t AParcel_writeStringArray(AParcel* parcel, const void* arrayData, int32_t length,
                                         AParcel_stringArrayElementGetter getter);
binder_status_t AParcel_readStringArray(const AParcel* parcel, void* arrayData, AParcel_stringArrayAllocator allocator,
                                        AParcel_stringArrayElementAllocator elementAllocator);

// Null is allowed. An object of a third process cannot be passed on: STATUS_INVALID_OPERATION by AIBinder_transact.
binder_status_t AParcel_writeStrongBinder(AParcel* parcel, AIBinder* binder);
// The caller owns a strong reference of `*binder`, which is null where null was written.
binder_status_t AParcel_readStrongBinder(const AParcel* parcel, AIBinder** binder);

typedef bool (*AParcel_parcelableArrayAllocator)(void* arrayData, int32_t length);
typedef binder_status_t (*AParcel_writeParcelableElement)(AParcel* parcel, const void* arrayData, size_t index);
typedef binder_status_t (*AParcel_readParcelableElement)(const AParcel* parcel, void* arrayData, size_t index);

// Length, then each element as its function writes or reads it; the first failure of one ends it.
binder_status_t AParcel_writeParcelableArray(AParcel* parcel, const void* arrayData, int32_t length,
                                             AParcel_writeParcelableElement elementWriter);
binder_status_t AParcel_readParcelableArray(const AParcel* parcel, void* arrayData,
                                            AParcel_parcelableArrayAllocator allocator,
                                            AParcel_readParcelableElement elementReader);

// EX_TRANSACTION_FAILED writes nothing and returns its status, which fails the whole transaction.
binder_status_t AParcel_writeStatusHeader(AParcel* parcel, const AStatus* status);
// The caller owns `*status`, set when STATUS_OK is returned.
binder_status_t AParcel_readStatusHeader(const AParcel* parcel, AStatus** status);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
