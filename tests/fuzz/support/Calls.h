#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>
#include <android/binder_parcel.h>

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <span>
#include <string>

namespace fuzz {

// The codes of interfaces, then those that every object answers.
inline transaction_code_t nextCode(FuzzedDataProvider& input) {
    constexpr transaction_code_t OF_ANY[] = {0x00FFFFFF, 0x00FFFFFE, 0x5f504e47,
                                             0x5f444d50, 0x5f455854, static_cast<uint32_t>(STATUS_UNKNOWN_TRANSACTION)};
    const auto code = input.ConsumeIntegral<uint8_t>();
    return code < 32 ? code : OF_ANY[code % std::size(OF_ANY)];
}

// What a parcel without objects holds.
inline std::string contentOf(const AParcel* parcel) {
    std::string bytes(static_cast<size_t>(AParcel_getDataSize(parcel)), '\0');
    AParcel_marshal(parcel, reinterpret_cast<uint8_t*>(bytes.data()), 0, bytes.size());
    return bytes;
}

// Any bytes as words, and objects in between.
inline void writeArguments(AParcel* parcel, std::span<const ndk::SpAIBinder> objects, FuzzedDataProvider& input) {
    for (size_t parts = input.ConsumeIntegralInRange<size_t>(0, 3); parts > 0; --parts) {
        std::string bytes = input.ConsumeRandomLengthString();
        bytes.resize((bytes.size() + 3) / 4 * 4);
        for (size_t at = 0; at < bytes.size(); at += sizeof(int32_t)) {
            int32_t word = 0;
            memcpy(&word, bytes.data() + at, sizeof(word));
            AParcel_writeInt32(parcel, word);
        }
        const auto object = input.ConsumeIntegralInRange<size_t>(0, objects.size());
        AParcel_writeStrongBinder(parcel, object == objects.size() ? nullptr : objects[object].get());
    }
}

// A call of any code with any arguments, some of which are objects.
inline binder_status_t call(const ndk::SpAIBinder& target, std::span<const ndk::SpAIBinder> objects,
                            FuzzedDataProvider& input) {
    ndk::ScopedAParcel in;
    ndk::ScopedAParcel out;
    AIBinder_prepareTransaction(target.get(), in.getR());
    const transaction_code_t code = nextCode(input);
    writeArguments(in.get(), objects, input);
    return AIBinder_transact(target.get(), code, in.getR(), out.getR(), input.ConsumeBool() ? FLAG_ONEWAY : 0);
}

}  // namespace fuzz
