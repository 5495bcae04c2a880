#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_parcel.h>

#include <cstdint>
#include <vector>

namespace stubs_test {

// The contents of a parcel as 32-bit words, which is what its bytes are padded to.
using Words = std::vector<int32_t>;

// From the present position to the end.
inline Words wordsOf(const AParcel* parcel) {
    Words words;
    int32_t word = 0;
    while (AParcel_readInt32(parcel, &word) == STATUS_OK) words.push_back(word);
    return words;
}

// A parcel with these words, to be read from its beginning.
inline ndk::ScopedAParcel parcelOf(const Words& words) {
    ndk::ScopedAParcel parcel(AParcel_create());
    for (const int32_t word : words) AParcel_writeInt32(parcel.get(), word);
    AParcel_setDataPosition(parcel.get(), 0);
    return parcel;
}

}  // namespace stubs_test
