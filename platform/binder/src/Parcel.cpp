#include "Parcel.h"

#include "Class.h"
#include "IBinder.h"
#include "Log.h"
#include "Status.h"
#include "Utf.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <utility>

using binder::FlatObject;
using binder::FrameHeader;
using binder::ObjectKind;

namespace {

template <typename T>
binder_status_t writeScalar(AParcel* parcel, T value) {
    uint8_t* const place = parcel->append(sizeof(value));
    if (place == nullptr) return STATUS_NO_MEMORY;
    memcpy(place, &value, sizeof(value));
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
    uint8_t* const place = parcel->append(size);
    if (place == nullptr) return STATUS_NO_MEMORY;
    memcpy(place, elements, size);
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

// What travels as a whole int32.
template <typename T>
binder_status_t writeWord(AParcel* parcel, T value) {
    return writeScalar(parcel, static_cast<int32_t>(value));
}

template <typename T>
binder_status_t readWord(const AParcel* parcel, T* value) {
    int32_t word = 0;
    const binder_status_t status = readScalar(parcel, &word);
    if (status == STATUS_OK) *value = static_cast<T>(word);
    return status;
}

template <typename WriteElement>
binder_status_t writeEach(AParcel* parcel, const void* elements, int32_t length, WriteElement writeElement) {
    binder_status_t status = writeLength(parcel, elements, length);
    for (int32_t i = 0; i < length && status == STATUS_OK; ++i) status = writeElement(static_cast<size_t>(i));
    return status;
}

// Elements of at least four bytes.
template <typename Allocate, typename ReadElement>
binder_status_t readEach(const AParcel* parcel, Allocate allocate, ReadElement readElement) {
    int32_t length = 0;
    binder_status_t status = readLength(parcel, sizeof(int32_t), &length);
    if (status != STATUS_OK) return status;
    if (!allocate(length)) return refused(length);
    for (int32_t i = 0; i < length && status == STATUS_OK; ++i) status = readElement(static_cast<size_t>(i));
    return status;
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

AParcel::AParcel(AParcel&& other) noexcept : mTarget(other.mTarget) {
    *this = std::move(other);
}

AParcel& AParcel::operator=(AParcel&& other) noexcept {
    mHeap = std::move(other.mHeap);
    mObjects = std::move(other.mObjects);
    mCapacity = std::exchange(other.mCapacity, INLINE);
    mSize = other.mSize;
    mPosition = other.mPosition;
    mBytes = mHeap != nullptr ? mHeap.get() : mInline;
    if (mHeap == nullptr) memcpy(mInline, other.mInline, sizeof(FrameHeader) + mSize);
    other.mBytes = other.mInline;
    other.reset();
    return *this;
}

void AParcel::reset() {
    mSize = mPosition = mOffsets = 0;
    mObjects.clear();
}

bool AParcel::reserve(size_t size) {
    const size_t needed = sizeof(FrameHeader) + size;
    if (needed <= mCapacity) return true;
    const size_t capacity = std::max(needed, 2 * mCapacity);
    if (capacity > INT32_MAX) return false;
    std::unique_ptr<uint8_t[]> larger(new (std::nothrow) uint8_t[capacity]);
    if (larger == nullptr) {
        binder::warn("there is no memory for a parcel of %zu bytes", size);
        return false;
    }
    memcpy(larger.get(), mBytes, sizeof(FrameHeader) + mSize);
    mHeap = std::move(larger);
    mBytes = mHeap.get();
    mCapacity = capacity;
    return true;
}

void AParcel::mustReserve(size_t size) {
    if (!reserve(size)) throw std::bad_alloc();
}

void AParcel::forgetObjects(size_t begin, size_t end) {
    std::erase_if(mObjects, [begin, end](const Object& object) {
        return object.offset < end && begin < object.offset + sizeof(FlatObject);
    });
}

// Over what is present, past its end, or with more room.
uint8_t* AParcel::appendSlowly(size_t size) {
    const size_t end = mPosition + padded(size);
    if (!reserve(end)) return nullptr;
    if (mPosition < mSize) forgetObjects(mPosition, end);
    uint8_t* const bytes = mBytes + sizeof(FrameHeader);
    if (mPosition > mSize) memset(bytes + mSize, 0, mPosition - mSize);
    memset(bytes + mPosition + size, 0, padded(size) - size);
    uint8_t* const place = bytes + mPosition;
    mPosition = end;
    mSize = std::max(mSize, end);
    return place;
}

binder_status_t AParcel::writeObject(AIBinder* binder) {
    const auto offset = static_cast<uint32_t>(mPosition);
    uint8_t* const place = append(sizeof(FlatObject));
    if (place == nullptr) return STATUS_NO_MEMORY;
    memset(place, 0, sizeof(FlatObject));
    if (binder == nullptr) return STATUS_OK;
    AIBinder_incStrong(binder);
    const auto behind = std::find_if(mObjects.begin(), mObjects.end(),
                                     [offset](const Object& object) { return object.offset > offset; });
    mObjects.insert(behind, Object{offset, ndk::SpAIBinder(binder)});
    setFlatObject(offset, {ObjectKind::Senders, 0, 0});
    return STATUS_OK;
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

void AParcel::assign(const uint8_t* data, size_t size, size_t offsets) {
    reset();
    const size_t all = size + offsets * sizeof(uint32_t);
    mustReserve(all);
    if (all != 0) memcpy(mBytes + sizeof(FrameHeader), data, all);
    mSize = size;
    mOffsets = offsets;
}

uint32_t AParcel::offsetAt(size_t index) const {
    uint32_t offset = 0;
    memcpy(&offset, data() + mSize + index * sizeof(offset), sizeof(offset));
    return offset;
}

void AParcel::setFlatObject(size_t offset, FlatObject object) {
    memcpy(mBytes + sizeof(FrameHeader) + offset, &object, sizeof(object));
}

std::basic_string_view<uint8_t> AParcel::frame(binder::FrameKind kind, uint32_t target, uint32_t code) {
    mustReserve(transportSize());
    uint8_t* place = mBytes + sizeof(FrameHeader) + mSize;
    for (const Object& object : mObjects) {
        memcpy(place, &object.offset, sizeof(object.offset));
        place += sizeof(object.offset);
    }
    const auto size = static_cast<uint32_t>(sizeof(FrameHeader) + transportSize());
    const FrameHeader header{size, kind, static_cast<uint16_t>(mObjects.size()), target, code};
    memcpy(mBytes, &header, sizeof(header));
    return {mBytes, size};
}

// Callers drop the status of a oneway call, so the line is all that tells of its loss.
static binder_status_t refuseText(const AParcel& parcel) {
    const AIBinder_Class* const clazz = parcel.target() != nullptr ? parcel.target()->clazz() : nullptr;
    binder::warn("a string for %s ends inside a UTF-8 sequence: refused, and its call with it",
                 clazz != nullptr ? clazz->descriptor.c_str() : "a parcel");
    return STATUS_BAD_VALUE;
}

binder_status_t binder::writeString(AParcel& parcel, std::string_view text) {
    const std::optional<size_t> units = utf16Length(text);
    if (!units) return refuseText(parcel);
    const binder_status_t status = writeScalar(&parcel, static_cast<int32_t>(*units));
    uint8_t* const place = status == STATUS_OK ? parcel.append((*units + 1) * sizeof(uint16_t)) : nullptr;
    if (place == nullptr) return STATUS_NO_MEMORY;
    utf8ToUtf16(text, place);
    memset(place + *units * sizeof(uint16_t), 0, sizeof(uint16_t));
    return STATUS_OK;
}

AParcel* AParcel_create() {
    return new (std::nothrow) AParcel;
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

binder_status_t AParcel_marshal(const AParcel* parcel, uint8_t* buffer, size_t start, size_t len) {
    if (parcel->transportSize() != parcel->size()) return STATUS_INVALID_OPERATION;
    if (start > parcel->size() || len > parcel->size() - start) return STATUS_BAD_VALUE;
    memcpy(buffer, parcel->data() + start, len);
    return STATUS_OK;
}

binder_status_t AParcel_unmarshal(AParcel* parcel, const uint8_t* buffer, size_t len) try {
    if (len > INT32_MAX) return STATUS_BAD_VALUE;
    parcel->assign(buffer, len);
    return STATUS_OK;
} catch (const std::bad_alloc&) {
    return STATUS_NO_MEMORY;
}

binder_status_t AParcel_writeInt32(AParcel* parcel, int32_t value) {
    return writeScalar(parcel, value);
}
binder_status_t AParcel_writeUint32(AParcel* parcel, uint32_t value) {
    return writeScalar(parcel, value);
}
binder_status_t AParcel_writeInt64(AParcel* parcel, int64_t value) {
    return writeScalar(parcel, value);
}
binder_status_t AParcel_writeUint64(AParcel* parcel, uint64_t value) {
    return writeScalar(parcel, value);
}
binder_status_t AParcel_writeFloat(AParcel* parcel, float value) {
    return writeScalar(parcel, value);
}
binder_status_t AParcel_writeDouble(AParcel* parcel, double value) {
    return writeScalar(parcel, value);
}
binder_status_t AParcel_writeBool(AParcel* parcel, bool value) {
    return writeWord(parcel, value);
}
binder_status_t AParcel_writeChar(AParcel* parcel, char16_t value) {
    return writeWord(parcel, value);
}
binder_status_t AParcel_writeByte(AParcel* parcel, int8_t value) {
    return writeWord(parcel, value);
}

binder_status_t AParcel_readInt32(const AParcel* parcel, int32_t* value) {
    return readScalar(parcel, value);
}
binder_status_t AParcel_readUint32(const AParcel* parcel, uint32_t* value) {
    return readScalar(parcel, value);
}
binder_status_t AParcel_readInt64(const AParcel* parcel, int64_t* value) {
    return readScalar(parcel, value);
}
binder_status_t AParcel_readUint64(const AParcel* parcel, uint64_t* value) {
    return readScalar(parcel, value);
}
binder_status_t AParcel_readFloat(const AParcel* parcel, float* value) {
    return readScalar(parcel, value);
}
binder_status_t AParcel_readDouble(const AParcel* parcel, double* value) {
    return readScalar(parcel, value);
}
binder_status_t AParcel_readBool(const AParcel* parcel, bool* value) {
    return readWord(parcel, value);
}
binder_status_t AParcel_readChar(const AParcel* parcel, char16_t* value) {
    return readWord(parcel, value);
}
binder_status_t AParcel_readByte(const AParcel* parcel, int8_t* value) {
    return readWord(parcel, value);
}

binder_status_t AParcel_writeByteArray(AParcel* parcel, const int8_t* arrayData, int32_t length) {
    return writeArray(parcel, arrayData, length);
}
binder_status_t AParcel_writeInt32Array(AParcel* parcel, const int32_t* arrayData, int32_t length) {
    return writeArray(parcel, arrayData, length);
}
binder_status_t AParcel_writeUint32Array(AParcel* parcel, const uint32_t* arrayData, int32_t length) {
    return writeArray(parcel, arrayData, length);
}
binder_status_t AParcel_writeInt64Array(AParcel* parcel, const int64_t* arrayData, int32_t length) {
    return writeArray(parcel, arrayData, length);
}
binder_status_t AParcel_writeUint64Array(AParcel* parcel, const uint64_t* arrayData, int32_t length) {
    return writeArray(parcel, arrayData, length);
}
binder_status_t AParcel_writeFloatArray(AParcel* parcel, const float* arrayData, int32_t length) {
    return writeArray(parcel, arrayData, length);
}
binder_status_t AParcel_writeDoubleArray(AParcel* parcel, const double* arrayData, int32_t length) {
    return writeArray(parcel, arrayData, length);
}

binder_status_t AParcel_readByteArray(const AParcel* parcel, void* arrayData, AParcel_byteArrayAllocator allocator) {
    return readArray(parcel, arrayData, allocator);
}
binder_status_t AParcel_readInt32Array(const AParcel* parcel, void* arrayData, AParcel_int32ArrayAllocator allocator) {
    return readArray(parcel, arrayData, allocator);
}
binder_status_t AParcel_readUint32Array(const AParcel* parcel, void* arrayData,
                                        AParcel_uint32ArrayAllocator allocator) {
    return readArray(parcel, arrayData, allocator);
}
binder_status_t AParcel_readInt64Array(const AParcel* parcel, void* arrayData, AParcel_int64ArrayAllocator allocator) {
    return readArray(parcel, arrayData, allocator);
}
binder_status_t AParcel_readUint64Array(const AParcel* parcel, void* arrayData,
                                        AParcel_uint64ArrayAllocator allocator) {
    return readArray(parcel, arrayData, allocator);
}
binder_status_t AParcel_readFloatArray(const AParcel* parcel, void* arrayData, AParcel_floatArrayAllocator allocator) {
    return readArray(parcel, arrayData, allocator);
}
binder_status_t AParcel_readDoubleArray(const AParcel* parcel, void* arrayData,
                                        AParcel_doubleArrayAllocator allocator) {
    return readArray(parcel, arrayData, allocator);
}

binder_status_t AParcel_writeBoolArray(AParcel* parcel, const void* arrayData, int32_t length,
                                       AParcel_boolArrayGetter getter) {
    return writeEach(parcel, arrayData, length,
                     [&](size_t index) { return AParcel_writeBool(parcel, getter(arrayData, index)); });
}
binder_status_t AParcel_writeCharArray(AParcel* parcel, const char16_t* arrayData, int32_t length) {
    return writeEach(parcel, arrayData, length,
                     [&](size_t index) { return AParcel_writeChar(parcel, arrayData[index]); });
}
binder_status_t AParcel_writeStringArray(AParcel* parcel, const void* arrayData, int32_t length,
                                         AParcel_stringArrayElementGetter getter) {
    return writeEach(parcel, arrayData, length, [&](size_t index) {
        int32_t size = 0;
        const char* const text = getter(arrayData, index, &size);
        return AParcel_writeString(parcel, text, size);
    });
}

binder_status_t AParcel_readBoolArray(const AParcel* parcel, void* arrayData, AParcel_boolArrayAllocator allocator,
                                      AParcel_boolArraySetter setter) {
    const auto allocate = [&](int32_t length) { return allocator(arrayData, length); };
    return readEach(parcel, allocate, [&](size_t index) {
        bool value = false;
        const binder_status_t status = AParcel_readBool(parcel, &value);
        if (status == STATUS_OK) setter(arrayData, index, value);
        return status;
    });
}
binder_status_t AParcel_readCharArray(const AParcel* parcel, void* arrayData, AParcel_charArrayAllocator allocator) {
    char16_t* units = nullptr;
    const auto allocate = [&](int32_t length) {
        return allocator(arrayData, length, length < 0 ? nullptr : &units) && (length <= 0 || units != nullptr);
    };
    return readEach(parcel, allocate, [&](size_t index) { return AParcel_readChar(parcel, &units[index]); });
}
binder_status_t AParcel_readStringArray(const AParcel* parcel, void* arrayData, AParcel_stringArrayAllocator allocator,
                                        AParcel_stringArrayElementAllocator elementAllocator) {
    struct Element {
        void* array;
        size_t index;
        AParcel_stringArrayElementAllocator allocator;
    };
    const auto allocate = [&](int32_t length) { return allocator(arrayData, length); };
    return readEach(parcel, allocate, [&](size_t index) {
        Element element{arrayData, index, elementAllocator};
        return AParcel_readString(parcel, &element, [](void* data, int32_t length, char** buffer) {
            const auto* const self = static_cast<Element*>(data);
            return self->allocator(self->array, self->index, length, buffer);
        });
    });
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

binder_status_t AParcel_writeStrongBinder(AParcel* parcel, AIBinder* binder) try {
    return parcel->writeObject(binder);
} catch (const std::bad_alloc&) {
    return STATUS_NO_MEMORY;
}

binder_status_t AParcel_readStrongBinder(const AParcel* parcel, AIBinder** binder) {
    return parcel->readObject(binder);
}

binder_status_t AParcel_writeParcelableArray(AParcel* parcel, const void* arrayData, int32_t length,
                                             AParcel_writeParcelableElement elementWriter) {
    // What stands behind `arrayData` is the writer's business; it may well be null.
    const void* const some = parcel;
    return writeEach(parcel, some, length, [&](size_t index) { return elementWriter(parcel, arrayData, index); });
}

binder_status_t AParcel_readParcelableArray(const AParcel* parcel, void* arrayData,
                                            AParcel_parcelableArrayAllocator allocator,
                                            AParcel_readParcelableElement elementReader) {
    const auto allocate = [&](int32_t length) { return allocator(arrayData, length); };
    return readEach(parcel, allocate, [&](size_t index) { return elementReader(parcel, arrayData, index); });
}

binder_status_t AParcel_writeStatusHeader(AParcel* parcel, const AStatus* status) {
    if (status->exception == EX_TRANSACTION_FAILED) return status->transport;
    binder_status_t written = writeScalar(parcel, status->exception);
    if (written != STATUS_OK || status->exception == EX_NONE) return written;
    written = binder::writeString(*parcel, status->message);
    if (written == STATUS_OK) written = writeScalar<int32_t>(parcel, 0);
    if (written != STATUS_OK || status->exception != EX_SERVICE_SPECIFIC) return written;
    return writeScalar(parcel, status->serviceSpecific);
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
