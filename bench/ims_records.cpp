// The conversions of the IMS ORTC records, with every text and payload at its longest, beside a memcpy of the internal
// record, whose texts and data lie in strings of their own on the interface's side: to pack them, each is a memcpy of
// its own; to unpack them, new strings are made. Both sides are a call into another library: the compiler does not know
// the sizes that memcpy gets. An unpacked record is made anew each time, as the service does it.

#include "bench/support/Stats.h"
#include "ims/ImsOrtcConversions.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

namespace interface = aidl::vendor::nuvex::hardware::subsys_interface::subsys;

constexpr int ROUNDS = 21;
constexpr int CALLS = 100'000;

// The compiler must take the object for read and changed.
template <typename T>
void escape(T& object) {
    asm volatile("" : : "r"(&object) : "memory");
}

template <typename Action>
double nanosPerCall(Action action) {
    const int64_t start = bench::cpuNanos();
    for (int i = 0; i < CALLS; ++i) action();
    return static_cast<double>(bench::cpuNanos() - start) / CALLS;
}

// For each text, and data, that the interface's record has.
template <typename Info, typename Action>
void forEachText(const Info& info, Action action) {
    if constexpr (requires { info.text1; }) {
        for (const auto* text : {&info.text1, &info.text2, &info.text3, &info.text4, &info.text5, &info.text6}) {
            action(*text);
        }
    }
    if constexpr (requires { info.ipAddr; }) action(info.ipAddr);
    if constexpr (requires { info.data; }) action(info.data);
    if constexpr (requires { info.connectInfo; }) action(info.connectInfo);
    if constexpr (requires { info.msg; }) action(info.msg);
}

// The floor: a memcpy of `size` bytes of the record, and what moves the texts.
template <typename Record, typename Convert, typename Move>
void compare(const char* name, Convert convert, size_t size, Move moveTexts) {
    bench::Ratio ratio;
    std::vector<double> ours;
    std::vector<double> floor;
    Record source{};
    Record copy{};
    for (int round = 0; round < ROUNDS; ++round) {
        floor.push_back(nanosPerCall([&] {
            escape(source);
            escape(size);
            std::memcpy(&copy, &source, size);
            escape(copy);
            moveTexts();
        }));
        ours.push_back(nanosPerCall(convert));
        ratio.add(ours.back(), floor.back());
    }
    ratio.print(name, "1.3");
    std::printf("    %.1f ns, memcpy of %zu bytes and its texts %.1f ns\n", bench::median(ours), size,
                bench::median(floor));
}

template <typename Record, typename Info>
void comparePack(const char* name, Record (*pack)(const Info&), Info info) {
    const auto convert = [&] {
        escape(info);
        Record record = pack(info);
        escape(record);
    };
    Record place{};
    size_t fixed = sizeof(Record);
    forEachText(info, [&](const auto& text) { fixed -= text.size(); });
    compare<Record>(name, convert, fixed, [&] {
        forEachText(info, [&](const auto& text) {
            std::memcpy(&place, text.data(), text.size());
            escape(place);
        });
    });
}

template <typename Record, typename Info>
void compareUnpack(const char* name, void (*unpack)(const Record&, Info&), Record record = {}) {
    const auto convert = [&] {
        Info info;
        escape(record);
        unpack(record, info);
        escape(info);
    };
    Info unpacked;
    unpack(record, unpacked);
    compare<Record>(name, convert, sizeof(Record), [&] { forEachText(unpacked, [](auto text) { escape(text); }); });
}

interface::CallInfo callInfo() {
    interface::CallInfo info;
    info.text1.assign(31, 'x');
    info.text2.assign(31, 'x');
    info.text3.assign(255, 'x');
    info.text4.assign(63, 'x');
    info.text5.assign(255, 'x');
    info.text6.assign(255, 'x');
    return info;
}

interface::ImsRtpDataInfo rtpData() {
    interface::ImsRtpDataInfo info;
    info.data.assign(255, 0x5a);
    info.dataLen = 255;
    return info;
}

interface::ImsRtpPubIpAddrInfo address() {
    interface::ImsRtpPubIpAddrInfo info;
    info.ipAddr.assign(63, 'x');
    return info;
}

interface::ImsRtpRedunSignalMsg signalMsg() {
    interface::ImsRtpRedunSignalMsg msg;
    msg.msg.assign(249, 'x');
    return msg;
}

hal::OrtcConnectInfoType connectInfo() {
    hal::OrtcConnectInfoType record{};
    std::memset(record.connectInfo, 'x', sizeof record.connectInfo - 1);
    return record;
}

}  // namespace

int main() {
    std::printf("IMS ORTC records\n");
    comparePack("packCallInfo", hal::packCallInfo, callInfo());
    comparePack("packOrtcRoomInfo", hal::packOrtcRoomInfo, {});
    comparePack("packImsRtpDataInfo", hal::packImsRtpDataInfo, rtpData());
    comparePack("packImsRtpPubIpAddrInfo", hal::packImsRtpPubIpAddrInfo, address());
    comparePack("packImsRtpRedunSignalMsg", hal::packImsRtpRedunSignalMsg, signalMsg());
    compareUnpack("unpackImsRtpPubIpAddrInfo", hal::unpackImsRtpPubIpAddrInfo, hal::packImsRtpPubIpAddrInfo(address()));
    compareUnpack("unpackImsRtpDataInfo", hal::unpackImsRtpDataInfo, hal::packImsRtpDataInfo(rtpData()));
    compareUnpack("unpackOrtcStatus", hal::unpackOrtcStatus);
    compareUnpack("unpackOrtcConnectInfo", hal::unpackOrtcConnectInfo, connectInfo());
    compareUnpack("unpackImsRtpRedunSignalMsg", hal::unpackImsRtpRedunSignalMsg,
                  hal::packImsRtpRedunSignalMsg(signalMsg()));
    compareUnpack("unpackImsRtpRedunDataLinkStateInfo", hal::unpackImsRtpRedunDataLinkStateInfo);
    compareUnpack("unpackImsRtpRedunSignalMsgRspInfo", hal::unpackImsRtpRedunSignalMsgRspInfo);
}
