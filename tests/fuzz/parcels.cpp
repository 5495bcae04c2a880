// Values of every type from a parcel of any bytes. What was read can be written, and is read again as it was.

#include "tests/fuzz/support/Calls.h"
#include "tests/fuzz/support/Require.h"

#include <android/binder_parcel_utils.h>
#include <stubs/Table.h>

#include <optional>
#include <vector>

namespace {

using fuzz::require;

template <typename T>
void read(const AParcel* parcel) {
    constexpr bool IS_NULLABLE = requires(T value) {
        value.has_value();
    };
    const auto readFrom = [](const AParcel* from, T& value) {
        if constexpr (IS_NULLABLE) return ndk::AParcel_readNullableData(from, &value);
        if constexpr (!IS_NULLABLE) return ndk::AParcel_readData(from, &value);
    };
    const auto write = [](const T& value) {
        ndk::ScopedAParcel to(AParcel_create());
        if constexpr (IS_NULLABLE) require(ndk::AParcel_writeNullableData(to.get(), value) == STATUS_OK);
        if constexpr (!IS_NULLABLE) require(ndk::AParcel_writeData(to.get(), value) == STATUS_OK);
        AParcel_setDataPosition(to.get(), 0);
        return to;
    };
    T value{};
    if (readFrom(parcel, value) != STATUS_OK) return;
    if constexpr (requires { value.toString(); }) require(!value.toString().empty());
    const ndk::ScopedAParcel written = write(value);
    T again{};
    require(readFrom(written.get(), again) == STATUS_OK);
    require(fuzz::contentOf(write(again).get()) == fuzz::contentOf(written.get()));
}

// Bytes that need not be UTF-8.
void writeText(const AParcel* parcel) {
    std::vector<uint8_t> bytes;
    (void)ndk::AParcel_readVector(parcel, &bytes);
    const std::string text(bytes.begin(), bytes.end());
    const ndk::ScopedAParcel written(AParcel_create());
    if (ndk::AParcel_writeString(written.get(), text) != STATUS_OK) return;
    AParcel_setDataPosition(written.get(), 0);
    read<std::string>(written.get());
}

void readStatus(const AParcel* parcel) {
    ndk::ScopedAStatus status;
    if (AParcel_readStatusHeader(parcel, status.getR()) != STATUS_OK) return;
    require(!status.getDescription().empty() && status.getMessage() != nullptr);
    require(status.isOk() == (status.getExceptionCode() == EX_NONE));
}

// By the functions for arrays of strings, with one that takes memory for each.
void readStrings(const AParcel* parcel) {
    using Strings = std::vector<std::string>;
    const auto allocate = [](void* to, int32_t length) {
        if (length >= 0) static_cast<Strings*>(to)->resize(static_cast<size_t>(length));
        return length >= 0;
    };
    const auto allocateElement = [](void* to, size_t index, int32_t length, char** buffer) {
        if (length <= 0) return false;
        std::string& text = static_cast<Strings*>(to)->at(index);
        text.resize(static_cast<size_t>(length) - 1);
        *buffer = text.data();
        return true;
    };
    const auto element = [](const void* from, size_t index, int32_t* length) {
        const std::string& text = static_cast<const Strings*>(from)->at(index);
        *length = static_cast<int32_t>(text.size());
        return text.data();
    };
    Strings strings;
    if (AParcel_readStringArray(parcel, &strings, allocate, allocateElement) != STATUS_OK) return;
    const ndk::ScopedAParcel written(AParcel_create());
    const auto count = static_cast<int32_t>(strings.size());
    require(AParcel_writeStringArray(written.get(), &strings, count, element) == STATUS_OK);
    AParcel_setDataPosition(written.get(), 0);
    Strings again;
    require(ndk::AParcel_readVector(written.get(), &again) == STATUS_OK && again == strings);
}

void move(const AParcel* parcel) {
    int32_t position = 0;
    (void)AParcel_readInt32(parcel, &position);
    require((AParcel_setDataPosition(parcel, position) == STATUS_OK) == (position >= 0));
}

using Reader = void (*)(const AParcel*);

template <typename... Plain, typename... Record>
std::vector<Reader> readers(std::tuple<Plain...>*, subsys_stubs::TypeList<Record...>) {
    return {read<Plain>...,
            read<std::vector<Plain>>...,
            read<std::optional<std::vector<Plain>>>...,
            read<Record>...,
            read<std::optional<Record>>...,
            read<std::vector<Record>>...,
            read<ndk::SpAIBinder>,
            writeText,
            readStatus,
            readStrings,
            move};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using Plain = std::tuple<bool, int8_t, uint8_t, char16_t, int32_t, uint32_t, int64_t, uint64_t, float, double,
                             std::string, std::optional<std::string>>;
    static const auto READERS = readers(static_cast<Plain*>(nullptr), subsys_stubs::Records());
    FuzzedDataProvider input(data, size);
    const auto kinds = input.ConsumeBytes<uint8_t>(input.ConsumeIntegralInRange<size_t>(1, 32));
    const auto bytes = input.ConsumeRemainingBytes<uint8_t>();
    const ndk::ScopedAParcel parcel(AParcel_create());
    require(AParcel_unmarshal(parcel.get(), bytes.data(), bytes.size()) == STATUS_OK);
    for (const uint8_t kind : kinds) READERS[kind % READERS.size()](parcel.get());
    return 0;
}
