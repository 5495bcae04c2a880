#include "Parcel.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "Status.h"
#include "Utf.h"

using binder::FlatObject;
using binder::FrameHeader;
using binder::ObjectKind;

namespace {

constexpr size_t padded(size_t size) {
    return (size + 3) & ~size_t{3};
}

template <typename T>
binder_status_t writeScalar(AParcel* parcel, T value) {
    memcpy(parcel->append(sizeof(value)), &value, sizeof(value));
    return STATUS_OK;
}

template <typename T>
binder_status_t readScalar(const AParcel* parcel, T* value) {
    const uint8_t* bytes = parcel->take(sizeof(T));
    if (bytes == nullptr) return STATUS_NOT_ENOUGH_DATA;
    memcpy(value, bytes, sizeof(T));
    return STATUS_OK;
}

binder_status_t writeLength(AParcel* parcel, const void* elements, int32_t length) {
    if (length < -1 || (length > 0 && elements == nullptr)) return STATUS_BAD_VALUE;
    return writeScalar(parcel, length);
}

// A length of which at least `elementSize` bytes each must be left.
binder_status_t readLength(const AParcel* parcel, size_t elementSize, int32_t* length) {
    const binder_status_t status = readScalar(parcel, length);
    if (status != STATUS_OK) return status;
    if (*length < -1) return STATUS_BAD_VALUE;
    // NO_MEMORY, although the bytes are missing: that is what a device answers.
    const bool tooLong = *length > 0 && static_cast<size_t>(*length) > parcel->remaining() / elementSize;
    return tooLong ? STATUS_NO_MEMORY : STATUS_OK;
}

// What a refusing allocator means.
binder_status_t refused(int32_t length) {
    return length < 0 ? STATUS_UNEXPECTED_NULL : STATUS_NO_MEMORY;
}

template <typename T>
binder_status_t writeArray(AParcel* parcel, const T* elements, int32_t length) {
    const binder_status_t status = writeLength(parcel, elements, length);
    if (status != STATUS_OK || length <= 0) return status;
    const size_t size = static_cast<size_t>(length) * sizeof(T);
    memcpy(parcel->append(size), elements, size);
    return STATUS_OK;
}

template <typename T>
binder_status_t readArray(const AParcel* parcel, void* arrayData, bool (*allocator)(void*, int32_t, T**)) {
    int32_t length = 0;
    const binder_status_t status = readLength(parcel, sizeof(T), &length);
    if (status != STATUS_OK) return status;
    T* elements = nullptr;
    if (!allocator(arrayData, length, length < 0 ? nullptr : &elements)) return refused(length);
    if (length <= 0) return STATUS_OK;
    if (elements == nullptr) return STATUS_NO_MEMORY;
    const size_t size = static_cast<size_t>(length) * sizeof(T);
    memcpy(elements, parcel->take(size), size);
    return STATUS_OK;
}

// The units of the next string, or null for a null or a cut one.
const uint8_t* takeString(const AParcel& parcel, size_t* units) {
    int32_t length = 0;
    if (readScalar(&parcel, &length) != STATUS_OK || length < 0) return nullptr;
    *units = static_cast<size_t>(length);
    const uint8_t* bytes = parcel.take((*units + 1) * sizeof(uint16_t));
    const bool terminated = bytes != nullptr && bytes[2 * *units] == 0 && bytes[2 * *units + 1] == 0;
    return terminated ? bytes : nullptr;
}

bool allocateMessage(void* stringData, int32_t length, char** buffer) {
    auto& text = *static_cast<std::string*>(stringData);
    text.clear();
    if (length <= 0) return true;
    text.resize(static_cast<size_t>(length) - 1);
    *buffer = text.data();
    return true;
}

}  // namespace

AParcel::AParcel(AParcel&& other) noexcept
    : mTarget(other.mTarget),
      mCapacity(other.mCapacity),
      mSize(other.mSize),
      mPosition(other.mPosition),
      mHeap(std::move(other.mHeap)),
      mObjects(std::move(other.mObjects)) {
    if (mHeap != nullptr) {
        mBytes = mHeap.get();
    } else {
        memcpy(mInline, other.mInline, sizeof(FrameHeader) + mSize);
    }
    other.mBytes = other.mInline;
    other.mCapacity = kInline;
    other.mSize = other.mPosition = 0;
}

void AParcel::reset() {
    mSize = mPosition = 0;
    mObjects.clear();
}

void AParcel::reserve(size_t size) {
    const size_t needed = sizeof(FrameHeader) + size;
    if (needed <= mCapacity) return;
    const size_t capacity = std::max(needed, 2 * mCapacity);
    std::unique_ptr<uint8_t[]> larger(new uint8_t[capacity]);
    memcpy(larger.get(), mBytes, sizeof(FrameHeader) + mSize);
    mHeap = std::move(larger);
    mBytes = mHeap.get();
    mCapacity = capacity;
}

void AParcel::forgetObjects(size_t begin, size_t end) {
    std::erase_if(mObjects, [begin, end](const Object& object) {
        return object.offset < end && begin < object.offset + sizeof(FlatObject);
    });
}

uint8_t* AParcel::append(size_t size) {
    const size_t end = mPosition + padded(size);
    if (mPosition < mSize && !mObjects.empty()) forgetObjects(mPosition, end);
    reserve(end);
    if (mPosition > mSize) memset(mBytes + sizeof(FrameHeader) + mSize, 0, mPosition - mSize);
    uint8_t* place = mBytes + sizeof(FrameHeader) + mPosition;
    memset(place + size, 0, padded(size) - size);
    mPosition = end;
    mSize = std::max(mSize, end);
    return place;
}

const uint8_t* AParcel::take(size_t size) const {
    if (size > remaining()) return nullptr;
    const uint8_t* bytes = data() + mPosition;
    mPosition += std::min(padded(size), remaining());
    return bytes;
}

void AParcel::writeObject(AIBinder* binder) {
    const auto offset = static_cast<uint32_t>(mPosition);
    memset(append(sizeof(FlatObject)), 0, sizeof(FlatObject));
    if (binder == nullptr) return;
    AIBinder_incStrong(binder);
    const auto behind = std::find_if(mObjects.begin(), mObjects.end(),
                                     [offset](const Object& object) { return object.offset > offset; });
    mObjects.insert(behind, Object{offset, ndk::SpAIBinder(binder)});
    setFlatObject(offset, {ObjectKind::Senders, 0, 0});
}

binder_status_t AParcel::readObject(AIBinder** binder) const {
    const auto offset = static_cast<uint32_t>(mPosition);
    FlatObject flat{};
    if (readScalar(this, &flat) != STATUS_OK) return STATUS_BAD_TYPE;
    *binder = nullptr;
    if (flat.kind == ObjectKind::Null) return STATUS_OK;
    const auto found = std::find_if(mObjects.begin(), mObjects.end(),
                                    [offset](const Object& object) { return object.offset == offset; });
    if (found == mObjects.end()) return STATUS_BAD_TYPE;
    *binder = found->binder.get();
    if (*binder != nullptr) AIBinder_incStrong(*binder);
    return STATUS_OK;
}

void AParcel::assign(const uint8_t* data, size_t size) {
    reset();
    reserve(size);
    if (size != 0) memcpy(mBytes + sizeof(FrameHeader), data, size);
    mSize = size;
}

void AParcel::setFlatObject(size_t offset, FlatObject object) {
    memcpy(mBytes + sizeof(FrameHeader) + offset, &object, sizeof(object));
}

std::basic_string_view<uint8_t> AParcel::frame(binder::FrameKind kind, uint32_t target, uint32_t code) {
    const size_t offsets = mObjects.size() * sizeof(uint32_t);
    reserve(mSize + offsets);
    uint8_t* place = mBytes + sizeof(FrameHeader) + mSize;
    for (const Object& object : mObjects) {
        memcpy(place, &object.offset, sizeof(object.offset));
        place += sizeof(object.offset);
    }
    const size_t size = sizeof(FrameHeader) + mSize + offsets;
    const FrameHeader header{static_cast<uint32_t>(size), kind, static_cast<uint16_t>(mObjects.size()), target, code};
    memcpy(mBytes, &header, sizeof(header));
    return {mBytes, size};
}

binder_status_t binder::writeString(AParcel& parcel, std::string_view text) {
    const std::optional<size_t> units = utf16Length(text);
    if (!units) return STATUS_BAD_VALUE;
    writeScalar(&parcel, static_cast<int32_t>(*units));
    uint8_t* place = parcel.append((*units + 1) * sizeof(uint16_t));
    utf8ToUtf16(text, place);
    memset(place + *units * sizeof(uint16_t), 0, sizeof(uint16_t));
    return STATUS_OK;
}

AParcel* AParcel_create() {
    return new AParcel;
}

void AParcel_delete(AParcel* parcel) {
    delete parcel;
}

binder_status_t AParcel_reset(AParcel* parcel) {
    parcel->reset();
    return STATUS_OK;
}

int32_t AParcel_getDataSize(const AParcel* parcel) {
    return static_cast<int32_t>(parcel->size());
}

int32_t AParcel_getDataPosition(const AParcel* parcel) {
    return static_cast<int32_t>(parcel->position());
}

binder_status_t AParcel_setDataPosition(const AParcel* parcel, int32_t position) {
    if (position < 0) return STATUS_BAD_VALUE;
    parcel->setPosition(static_cast<size_t>(position));
    return STATUS_OK;
}

binder_status_t AParcel_writeBool(AParcel* parcel, bool value) {
    return writeScalar<int32_t>(parcel, value ? 1 : 0);
}
binder_status_t AParcel_writeByte(AParcel* parcel, int8_t value) {
    return writeScalar<int32_t>(parcel, value);
}
binder_status_t AParcel_writeInt32(AParcel* parcel, int32_t value) {
    return writeScalar(parcel, value);
}
binder_status_t AParcel_writeInt64(AParcel* parcel, int64_t value) {
    return writeScalar(parcel, value);
}
binder_status_t AParcel_readInt32(const AParcel* parcel, int32_t* value) {
    return readScalar(parcel, value);
}
binder_status_t AParcel_readInt64(const AParcel* parcel, int64_t* value) {
    return readScalar(parcel, value);
}

binder_status_t AParcel_readBool(const AParcel* parcel, bool* value) {
    int32_t number = 0;
    const binder_status_t status = readScalar(parcel, &number);
    if (status == STATUS_OK) *value = number != 0;
    return status;
}

binder_status_t AParcel_readByte(const AParcel* parcel, int8_t* value) {
    int32_t number = 0;
    const binder_status_t status = readScalar(parcel, &number);
    if (status == STATUS_OK) *value = static_cast<int8_t>(number);
    return status;
}

binder_status_t AParcel_writeByteArray(AParcel* parcel, const int8_t* arrayData, int32_t length) {
    return writeArray(parcel, arrayData, length);
}
binder_status_t AParcel_readByteArray(const AParcel* parcel, void* arrayData, AParcel_byteArrayAllocator allocator) {
    return readArray(parcel, arrayData, allocator);
}
binder_status_t AParcel_writeInt32Array(AParcel* parcel, const int32_t* arrayData, int32_t length) {
    return writeArray(parcel, arrayData, length);
}
binder_status_t AParcel_readInt32Array(const AParcel* parcel, void* arrayData, AParcel_int32ArrayAllocator allocator) {
    return readArray(parcel, arrayData, allocator);
}
binder_status_t AParcel_writeInt64Array(AParcel* parcel, const int64_t* arrayData, int32_t length) {
    return writeArray(parcel, arrayData, length);
}
binder_status_t AParcel_readInt64Array(const AParcel* parcel, void* arrayData, AParcel_int64ArrayAllocator allocator) {
    return readArray(parcel, arrayData, allocator);
}

binder_status_t AParcel_writeBoolArray(AParcel* parcel, const void* arrayData, int32_t length,
                                       AParcel_boolArrayGetter getter) {
    const binder_status_t status = writeLength(parcel, arrayData, length);
    if (status != STATUS_OK) return status;
    for (int32_t i = 0; i < length; ++i) AParcel_writeBool(parcel, getter(arrayData, static_cast<size_t>(i)));
    return STATUS_OK;
}

binder_status_t AParcel_readBoolArray(const AParcel* parcel, void* arrayData, AParcel_boolArrayAllocator allocator,
                                      AParcel_boolArraySetter setter) {
    int32_t length = 0;
    const binder_status_t status = readLength(parcel, sizeof(int32_t), &length);
    if (status != STATUS_OK) return status;
    if (!allocator(arrayData, length)) return refused(length);
    for (int32_t i = 0; i < length; ++i) {
        bool value = false;
        AParcel_readBool(parcel, &value);
        setter(arrayData, static_cast<size_t>(i), value);
    }
    return STATUS_OK;
}

binder_status_t AParcel_writeString(AParcel* parcel, const char* string, int32_t length) {
    if (string == nullptr) return length == -1 ? writeScalar<int32_t>(parcel, -1) : STATUS_BAD_VALUE;
    if (length < 0) return STATUS_BAD_VALUE;
    return binder::writeString(*parcel, {string, static_cast<size_t>(length)});
}

binder_status_t AParcel_readString(const AParcel* parcel, void* stringData, AParcel_stringAllocator allocator) {
    size_t units = 0;
    const uint8_t* utf16 = takeString(*parcel, &units);
    if (utf16 == nullptr) return allocator(stringData, -1, nullptr) ? STATUS_OK : STATUS_UNEXPECTED_NULL;
    const size_t bytes = binder::utf8Length(utf16, units);
    char* buffer = nullptr;
    if (!allocator(stringData, static_cast<int32_t>(bytes + 1), &buffer) || buffer == nullptr) return STATUS_NO_MEMORY;
    binder::utf16ToUtf8(utf16, units, buffer);
    buffer[bytes] = '\0';
    return STATUS_OK;
}

binder_status_t AParcel_writeStrongBinder(AParcel* parcel, AIBinder* binder) {
    parcel->writeObject(binder);
    return STATUS_OK;
}

binder_status_t AParcel_readStrongBinder(const AParcel* parcel, AIBinder** binder) {
    return parcel->readObject(binder);
}

binder_status_t AParcel_writeParcelableArray(AParcel* parcel, const void* arrayData, int32_t length,
                                             AParcel_writeParcelableElement elementWriter) {
    // What stands behind `arrayData` is the writer's business; it may well be null.
    binder_status_t status = length < -1 ? STATUS_BAD_VALUE : writeScalar(parcel, length);
    for (int32_t i = 0; i < length && status == STATUS_OK; ++i) {
        status = elementWriter(parcel, arrayData, static_cast<size_t>(i));
    }
    return status;
}

binder_status_t AParcel_readParcelableArray(const AParcel* parcel, void* arrayData,
                                            AParcel_parcelableArrayAllocator allocator,
                                            AParcel_readParcelableElement elementReader) {
    int32_t length = 0;
    binder_status_t status = readLength(parcel, sizeof(int32_t), &length);
    if (status != STATUS_OK) return status;
    if (!allocator(arrayData, length)) return refused(length);
    for (int32_t i = 0; i < length && status == STATUS_OK; ++i) {
        status = elementReader(parcel, arrayData, static_cast<size_t>(i));
    }
    return status;
}

binder_status_t AParcel_writeStatusHeader(AParcel* parcel, const AStatus* status) {
    if (status->exception == EX_TRANSACTION_FAILED) return status->transport;
    writeScalar(parcel, status->exception);
    if (status->exception == EX_NONE) return STATUS_OK;
    const binder_status_t written = binder::writeString(*parcel, status->message);
    if (written != STATUS_OK) return written;
    writeScalar<int32_t>(parcel, 0);
    return status->exception == EX_SERVICE_SPECIFIC ? writeScalar(parcel, status->serviceSpecific) : STATUS_OK;
}

binder_status_t AParcel_readStatusHeader(const AParcel* parcel, AStatus** status) {
    int32_t exception = EX_NONE;
    int32_t traceSize = 0;
    int32_t serviceSpecific = 0;
    std::string message;
    binder_status_t result = readScalar(parcel, &exception);
    if (result == STATUS_OK && exception != EX_NONE) {
        result = AParcel_readString(parcel, &message, allocateMessage);
        if (result == STATUS_OK) result = readScalar(parcel, &traceSize);
        if (result == STATUS_OK && exception == EX_SERVICE_SPECIFIC) result = readScalar(parcel, &serviceSpecific);
    }
    if (result != STATUS_OK) return result;
    *status = exception == EX_SERVICE_SPECIFIC
                  ? AStatus_fromServiceSpecificErrorWithMessage(serviceSpecific, message.c_str())
                  : AStatus_fromExceptionCodeWithMessage(exception, message.c_str());
    return STATUS_OK;
}
