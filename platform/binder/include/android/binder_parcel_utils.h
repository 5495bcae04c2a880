#pragma once

// Typed reading and writing: one template for each direction, chosen by the type. bool, int8_t, char16_t, int32_t,
// int64_t, uint32_t, uint64_t, float, double and enumerations over integers, std::string, SpAIBinder, std::shared_ptr
// of an interface, records with readFromParcel and writeToParcel, std::vector of any of these (of uint8_t: packed
// bytes), and std::optional of what may be null. Thread: any; one thread at a time uses a parcel.

#include <android/binder_auto_utils.h>
#include <android/binder_interface_utils.h>
#include <android/binder_parcel.h>

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

namespace ndk {

template <typename T>
binder_status_t AParcel_writeVector(AParcel* parcel, const std::vector<T>& vector);
template <typename T>
binder_status_t AParcel_readVector(const AParcel* parcel, std::vector<T>* vector);
template <typename T>
binder_status_t AParcel_writeVector(AParcel* parcel, const std::optional<std::vector<T>>& vector);
template <typename T>
binder_status_t AParcel_readVector(const AParcel* parcel, std::optional<std::vector<T>>* vector);
template <typename T>
binder_status_t AParcel_writeData(AParcel* parcel, const T& value);
template <typename T>
binder_status_t AParcel_readData(const AParcel* parcel, T* value);
template <typename T>
binder_status_t AParcel_writeNullableData(AParcel* parcel, const T& value);
template <typename T>
binder_status_t AParcel_readNullableData(const AParcel* parcel, T* value);

namespace internal {

template <typename T>
constexpr bool isVector = false;
template <typename T>
constexpr bool isVector<std::vector<T>> = true;

template <typename T>
constexpr bool isOptional = false;
template <typename T>
constexpr bool isOptional<std::optional<T>> = true;

template <typename T>
constexpr bool isFixedArray = false;
template <typename T, size_t N>
constexpr bool isFixedArray<std::array<T, N>> = true;

template <typename T>
constexpr bool isInterface = false;
template <typename T>
constexpr bool isInterface<std::shared_ptr<T>> = std::derived_from<T, ICInterface>;

template <typename T>
concept ParcelableRecord = requires(T record, const T constRecord, AParcel* parcel) {
    { record.readFromParcel(parcel) } -> std::same_as<binder_status_t>;
    { constRecord.writeToParcel(parcel) } -> std::same_as<binder_status_t>;
};

// Elements that lie in an array as they lie in memory.
template <typename T>
concept PackedByte = sizeof(T) == 1 && !std::same_as<T, bool> && (std::integral<T> || std::is_enum_v<T>);

template <typename T>
constexpr bool alwaysFalse = false;

// The functions of a number's type, alone and in an array.
template <typename T>
struct NumberCalls {
    binder_status_t (*write)(AParcel* parcel, T value);
    binder_status_t (*read)(const AParcel* parcel, T* value);
    binder_status_t (*writeArray)(AParcel* parcel, const T* values, int32_t length);
    binder_status_t (*readArray)(const AParcel* parcel, void* data, bool (*allocate)(void*, int32_t, T**));
};
template <typename T>
constexpr std::nullptr_t calls = nullptr;
template <>
inline constexpr NumberCalls<char16_t> calls<char16_t>{::AParcel_writeChar, ::AParcel_readChar,
                                                       ::AParcel_writeCharArray, ::AParcel_readCharArray};
template <>
inline constexpr NumberCalls<int32_t> calls<int32_t>{::AParcel_writeInt32, ::AParcel_readInt32,
                                                     ::AParcel_writeInt32Array, ::AParcel_readInt32Array};
template <>
inline constexpr NumberCalls<int64_t> calls<int64_t>{::AParcel_writeInt64, ::AParcel_readInt64,
                                                     ::AParcel_writeInt64Array, ::AParcel_readInt64Array};
template <>
inline constexpr NumberCalls<uint32_t> calls<uint32_t>{::AParcel_writeUint32, ::AParcel_readUint32,
                                                       ::AParcel_writeUint32Array, ::AParcel_readUint32Array};
template <>
inline constexpr NumberCalls<uint64_t> calls<uint64_t>{::AParcel_writeUint64, ::AParcel_readUint64,
                                                       ::AParcel_writeUint64Array, ::AParcel_readUint64Array};
template <>
inline constexpr NumberCalls<float> calls<float>{::AParcel_writeFloat, ::AParcel_readFloat, ::AParcel_writeFloatArray,
                                                 ::AParcel_readFloatArray};
template <>
inline constexpr NumberCalls<double> calls<double>{::AParcel_writeDouble, ::AParcel_readDouble,
                                                   ::AParcel_writeDoubleArray, ::AParcel_readDoubleArray};

template <typename T>
concept Number = !std::same_as<decltype(calls<T>), const std::nullptr_t>;

// Gives a reader room in a std::vector, a std::array, or a std::optional of a vector, of which only the last may be
// null.
template <typename Vector>
bool allocateElements(void* vectorData, int32_t length) {
    auto* vector = static_cast<Vector*>(vectorData);
    if constexpr (isFixedArray<Vector>) {
        return length >= 0 && static_cast<size_t>(length) == vector->size();
    } else if constexpr (isVector<Vector>) {
        if (length < 0) return false;
        vector->resize(static_cast<size_t>(length));
    } else {
        vector->reset();
        if (length >= 0) vector->emplace(static_cast<size_t>(length));
    }
    return true;
}

template <typename Vector>
auto& elementsOf(Vector& vector) {
    if constexpr (isVector<std::remove_const_t<Vector>> || isFixedArray<std::remove_const_t<Vector>>) {
        return vector;
    } else {
        return *vector;
    }
}

template <typename Vector, typename Element>
bool allocateVector(void* vectorData, int32_t length, Element** outBuffer) {
    if (!allocateElements<Vector>(vectorData, length)) return false;
    if (length >= 0) *outBuffer = reinterpret_cast<Element*>(elementsOf(*static_cast<Vector*>(vectorData)).data());
    return true;
}

template <typename Vector>
bool getBool(const void* vectorData, size_t index) {
    return elementsOf(*static_cast<const Vector*>(vectorData))[index];
}

template <typename Vector>
void setBool(void* vectorData, size_t index, bool value) {
    elementsOf(*static_cast<Vector*>(vectorData))[index] = value;
}

template <typename Vector>
binder_status_t writeElement(AParcel* parcel, const void* vectorData, size_t index) {
    return AParcel_writeData(parcel, elementsOf(*static_cast<const Vector*>(vectorData))[index]);
}

template <typename Vector>
binder_status_t readElement(const AParcel* parcel, void* vectorData, size_t index) {
    return AParcel_readData(parcel, &elementsOf(*static_cast<Vector*>(vectorData))[index]);
}

template <typename Element, typename Vector>
binder_status_t writeVector(AParcel* parcel, const Vector& vector, const Element* elements, int32_t length) {
    if constexpr (std::same_as<Element, bool>) {
        return AParcel_writeBoolArray(parcel, &vector, length, getBool<Vector>);
    } else if constexpr (PackedByte<Element>) {
        return AParcel_writeByteArray(parcel, reinterpret_cast<const int8_t*>(elements), length);
    } else if constexpr (Number<Element>) {
        return calls<Element>.writeArray(parcel, elements, length);
    } else {
        return AParcel_writeParcelableArray(parcel, &vector, length, writeElement<Vector>);
    }
}

template <typename Element, typename Vector>
binder_status_t readVector(const AParcel* parcel, Vector* vector) {
    if constexpr (std::same_as<Element, bool>) {
        return AParcel_readBoolArray(parcel, vector, allocateElements<Vector>, setBool<Vector>);
    } else if constexpr (PackedByte<Element>) {
        return AParcel_readByteArray(parcel, vector, allocateVector<Vector, int8_t>);
    } else if constexpr (Number<Element>) {
        return calls<Element>.readArray(parcel, vector, allocateVector<Vector, Element>);
    } else {
        return AParcel_readParcelableArray(parcel, vector, allocateElements<Vector>, readElement<Vector>);
    }
}

template <typename Element>
const Element* dataOf(const std::vector<Element>& vector) {
    return vector.data();
}
inline const bool* dataOf(const std::vector<bool>&) {
    return nullptr;
}

// A string, or a std::optional of one, as the reader's destination.
inline bool allocateString(void* stringData, int32_t length, char** buffer) {
    if (length <= 0) return false;
    auto* string = static_cast<std::string*>(stringData);
    string->resize(static_cast<size_t>(length) - 1);
    *buffer = string->data();
    return true;
}

inline bool allocateNullableString(void* stringData, int32_t length, char** buffer) {
    auto* string = static_cast<std::optional<std::string>*>(stringData);
    string->reset();
    return length < 0 || allocateString(&string->emplace(), length, buffer);
}

}  // namespace internal

inline binder_status_t AParcel_writeString(AParcel* parcel, const std::string& value) {
    return ::AParcel_writeString(parcel, value.data(), static_cast<int32_t>(value.size()));
}
inline binder_status_t AParcel_readString(const AParcel* parcel, std::string* value) {
    return ::AParcel_readString(parcel, value, internal::allocateString);
}
inline binder_status_t AParcel_writeString(AParcel* parcel, const std::optional<std::string>& value) {
    return value ? AParcel_writeString(parcel, *value) : ::AParcel_writeString(parcel, nullptr, -1);
}
inline binder_status_t AParcel_readString(const AParcel* parcel, std::optional<std::string>* value) {
    return ::AParcel_readString(parcel, value, internal::allocateNullableString);
}

// A required object: null is STATUS_UNEXPECTED_NULL both ways.
inline binder_status_t AParcel_writeRequiredStrongBinder(AParcel* parcel, const SpAIBinder& binder) {
    return binder.get() == nullptr ? STATUS_UNEXPECTED_NULL : AParcel_writeStrongBinder(parcel, binder.get());
}
inline binder_status_t AParcel_readNullableStrongBinder(const AParcel* parcel, SpAIBinder* binder) {
    AIBinder* read = nullptr;
    const binder_status_t status = AParcel_readStrongBinder(parcel, &read);
    if (status == STATUS_OK) binder->set(read);
    return status;
}
inline binder_status_t AParcel_readRequiredStrongBinder(const AParcel* parcel, SpAIBinder* binder) {
    const binder_status_t status = AParcel_readNullableStrongBinder(parcel, binder);
    return status == STATUS_OK && binder->get() == nullptr ? STATUS_UNEXPECTED_NULL : status;
}
inline binder_status_t AParcel_writeNullableStrongBinder(AParcel* parcel, const SpAIBinder& binder) {
    return AParcel_writeStrongBinder(parcel, binder.get());
}

// A required record: a 1, then the record; a 0 is STATUS_UNEXPECTED_NULL.
template <typename Record>
binder_status_t AParcel_writeParcelable(AParcel* parcel, const Record& record) {
    const binder_status_t status = AParcel_writeInt32(parcel, 1);
    return status == STATUS_OK ? record.writeToParcel(parcel) : status;
}
template <typename Record>
binder_status_t AParcel_readParcelable(const AParcel* parcel, Record* record) {
    int32_t present = 0;
    const binder_status_t status = AParcel_readInt32(parcel, &present);
    if (status != STATUS_OK) return status;
    return present == 0 ? STATUS_UNEXPECTED_NULL : record->readFromParcel(parcel);
}
template <typename Record>
binder_status_t AParcel_writeNullableParcelable(AParcel* parcel, const std::optional<Record>& record) {
    return record ? AParcel_writeParcelable(parcel, *record) : AParcel_writeInt32(parcel, 0);
}
template <typename Record>
binder_status_t AParcel_readNullableParcelable(const AParcel* parcel, std::optional<Record>* record) {
    record->reset();
    int32_t present = 0;
    const binder_status_t status = AParcel_readInt32(parcel, &present);
    return status != STATUS_OK || present == 0 ? status : record->emplace().readFromParcel(parcel);
}

// Reading a null into a plain vector is STATUS_UNEXPECTED_NULL; the optional one takes it.
template <typename T>
binder_status_t AParcel_writeVector(AParcel* parcel, const std::vector<T>& vector) {
    return internal::writeVector<T>(parcel, vector, internal::dataOf(vector), static_cast<int32_t>(vector.size()));
}
template <typename T>
binder_status_t AParcel_readVector(const AParcel* parcel, std::vector<T>* vector) {
    return internal::readVector<T>(parcel, vector);
}
template <typename T>
binder_status_t AParcel_writeVector(AParcel* parcel, const std::optional<std::vector<T>>& vector) {
    if (vector) return AParcel_writeVector(parcel, *vector);
    return internal::writeVector<T>(parcel, vector, static_cast<const T*>(nullptr), -1);
}
template <typename T>
binder_status_t AParcel_readVector(const AParcel* parcel, std::optional<std::vector<T>>* vector) {
    return internal::readVector<T>(parcel, vector);
}

// A value that is not null. An interface may be: a null one is written and read as such.
template <typename T>
binder_status_t AParcel_writeData(AParcel* parcel, const T& value) {
    if constexpr (internal::isVector<T>) {
        return AParcel_writeVector(parcel, value);
    } else if constexpr (std::is_enum_v<T>) {
        return AParcel_writeData(parcel, static_cast<std::underlying_type_t<T>>(value));
    } else if constexpr (std::same_as<T, bool>) {
        return AParcel_writeBool(parcel, value);
    } else if constexpr (std::same_as<T, int8_t> || std::same_as<T, uint8_t>) {
        return AParcel_writeByte(parcel, static_cast<int8_t>(value));
    } else if constexpr (internal::Number<T>) {
        return internal::calls<T>.write(parcel, value);
    } else if constexpr (internal::isOptional<T>) {
        return AParcel_writeNullableData(parcel, value);
    } else if constexpr (internal::isFixedArray<T>) {
        return internal::writeVector<typename T::value_type>(parcel, value, value.data(),
                                                             static_cast<int32_t>(value.size()));
    } else if constexpr (std::same_as<T, std::string>) {
        return AParcel_writeString(parcel, value);
    } else if constexpr (std::same_as<T, SpAIBinder>) {
        return AParcel_writeRequiredStrongBinder(parcel, value);
    } else if constexpr (internal::isInterface<T>) {
        return T::element_type::writeToParcel(parcel, value);
    } else if constexpr (internal::ParcelableRecord<T>) {
        return AParcel_writeParcelable(parcel, value);
    } else {
        static_assert(internal::alwaysFalse<T>, "no layout is defined for this type");
    }
}

template <typename T>
binder_status_t AParcel_readData(const AParcel* parcel, T* value) {
    if constexpr (internal::isVector<T>) {
        return AParcel_readVector(parcel, value);
    } else if constexpr (std::is_enum_v<T>) {
        std::underlying_type_t<T> number{};
        const binder_status_t status = AParcel_readData(parcel, &number);
        if (status == STATUS_OK) *value = static_cast<T>(number);
        return status;
    } else if constexpr (std::same_as<T, bool>) {
        return AParcel_readBool(parcel, value);
    } else if constexpr (std::same_as<T, int8_t> || std::same_as<T, uint8_t>) {
        return AParcel_readByte(parcel, reinterpret_cast<int8_t*>(value));
    } else if constexpr (internal::Number<T>) {
        return internal::calls<T>.read(parcel, value);
    } else if constexpr (internal::isOptional<T>) {
        return AParcel_readNullableData(parcel, value);
    } else if constexpr (internal::isFixedArray<T>) {
        return internal::readVector<typename T::value_type>(parcel, value);
    } else if constexpr (std::same_as<T, std::string>) {
        return AParcel_readString(parcel, value);
    } else if constexpr (std::same_as<T, SpAIBinder>) {
        return AParcel_readRequiredStrongBinder(parcel, value);
    } else if constexpr (internal::isInterface<T>) {
        return T::element_type::readFromParcel(parcel, value);
    } else if constexpr (internal::ParcelableRecord<T>) {
        return AParcel_readParcelable(parcel, value);
    } else {
        static_assert(internal::alwaysFalse<T>, "no layout is defined for this type");
    }
}

// A value that may be null: a std::optional of string, record or vector, an interface, or a SpAIBinder.
template <typename T>
binder_status_t AParcel_writeNullableData(AParcel* parcel, const T& value) {
    if constexpr (std::same_as<T, SpAIBinder>) {
        return AParcel_writeNullableStrongBinder(parcel, value);
    } else if constexpr (internal::isInterface<T>) {
        return T::element_type::writeToParcel(parcel, value);
    } else if constexpr (internal::isVector<typename T::value_type>) {
        return AParcel_writeVector(parcel, value);
    } else if constexpr (std::same_as<T, std::optional<std::string>>) {
        return AParcel_writeString(parcel, value);
    } else {
        return AParcel_writeNullableParcelable(parcel, value);
    }
}

template <typename T>
binder_status_t AParcel_readNullableData(const AParcel* parcel, T* value) {
    if constexpr (std::same_as<T, SpAIBinder>) {
        return AParcel_readNullableStrongBinder(parcel, value);
    } else if constexpr (internal::isInterface<T>) {
        return T::element_type::readFromParcel(parcel, value);
    } else if constexpr (internal::isVector<typename T::value_type>) {
        return AParcel_readVector(parcel, value);
    } else if constexpr (std::same_as<T, std::optional<std::string>>) {
        return AParcel_readString(parcel, value);
    } else {
        return AParcel_readNullableParcelable(parcel, value);
    }
}

}  // namespace ndk
