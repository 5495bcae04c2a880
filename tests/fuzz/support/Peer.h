#pragma once

#include "binder/src/Frame.h"
#include "binder/src/Socket.h"
#include "tests/fuzz/support/Calls.h"
#include "tests/support/NamesFolder.h"

#include <sys/un.h>

#include <cstring>
#include <string>

// What the two hostile peers have in common.
namespace fuzz {

inline constexpr const char* NAME = "name";

template <typename T>
std::string bytesOf(const T& value) {
    return {reinterpret_cast<const char*>(&value), sizeof(value)};
}

inline sockaddr_un addressIn(const test::NamesFolder& folder) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    strncpy(address.sun_path, (folder.path() / (std::string("socket@") + NAME)).c_str(), sizeof(address.sun_path) - 1);
    return address;
}

// By which an object tells of its interface: FNV-1a.
inline uint64_t hashOf(std::string_view descriptor) {
    uint64_t hash = 0xcbf29ce484222325;
    for (const char each : descriptor) hash = (hash ^ static_cast<uint8_t>(each)) * 0x100000001b3;
    return hash;
}

// A process that nobody has met, since it has another key than those before.
inline binder::Key nextKey() {
    static uint64_t sCount = 0;
    binder::Key key{};
    memcpy(key.data(), &++sCount, sizeof(sCount));
    return key;
}

// A frame whose size is right. What its data begins with, often a token, is one of `beginnings`.
inline std::string nextFrame(std::span<const std::string> beginnings, FuzzedDataProvider& input) {
    binder::FrameHeader header{};
    header.kind = static_cast<binder::FrameKind>(input.ConsumeIntegralInRange<uint16_t>(0, 6));
    header.objects = input.ConsumeIntegralInRange<uint16_t>(0, 3);
    header.target = input.ConsumeIntegralInRange<uint32_t>(0, 7);
    header.code = nextCode(input);
    const size_t beginning = input.ConsumeIntegralInRange<size_t>(0, beginnings.size());
    std::string data = beginning == beginnings.size() ? "" : beginnings[beginning];
    data += input.ConsumeRandomLengthString();
    header.size = static_cast<uint32_t>(sizeof(header) + data.size());
    return bytesOf(header) + data;
}

// What a call to the object begins with.
inline std::string tokenOf(const ndk::SpAIBinder& object) {
    ndk::ScopedAParcel parcel;
    AIBinder_prepareTransaction(object.get(), parcel.getR());
    return contentOf(parcel.get());
}

// What the peer does not take is lost.
inline void send(const binder::UniqueFd& fd, const std::string& bytes, const std::vector<int>& passed = {}) {
    if (bytes.empty() || !fd.isValid()) return;
    const binder::Bytes view(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    (void)(passed.empty() ? binder::sendSome(fd, view, MSG_DONTWAIT)
                          : binder::sendWith(fd, view, passed, MSG_DONTWAIT));
}

}  // namespace fuzz
