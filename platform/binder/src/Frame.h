#pragma once

// What travels on a connection. Both ends are this machine's, so integers are in its order (little-endian).
//
// A connection begins with a hello of its opener. Then it carries frames: a header, the parcel's data, and the offsets
// of the objects in that data.
//
//   control  oneway calls and reference counts, in both directions; its end is the end of the session
//   call     calls of the opener, one at a time, and their replies
//   reverse  the same the other way, opened when the acceptor asks for it on the control connection

#include <array>
#include <cstddef>
#include <cstdint>

namespace binder {

// A random name for a process or a session.
using Key = std::array<uint8_t, 16>;

inline constexpr uint32_t kProtocol = 0x42640001;

// A call with its object offsets: 1 MiB less two pages; half of that for a oneway call.
inline constexpr size_t kMaxCall = (1U << 20) - 2 * 4096;
inline constexpr size_t kMaxOneway = kMaxCall / 2;
inline constexpr size_t kMaxObjects = 4096;

enum class HelloKind : uint32_t {
    Identify = 1,  // who serves this name? answered with the process's key; another hello may follow
    Root = 2,      // the object of this name, in the session `key`; another hello may follow
    Control = 3,   // `key` is the opener's process; answered with the key of the new session
    Call = 4,      // `key` is the session's, here and below; not answered
    Reverse = 5,
};

struct Hello {
    uint32_t protocol;
    HelloKind kind;
    Key key;
};
static_assert(sizeof(Hello) == 24);

struct HelloReply {
    uint32_t protocol;
    uint32_t object;
    uint64_t descriptor;  // of the object; see FlatObject
    Key key;
};
static_assert(sizeof(HelloReply) == 32);

enum class FrameKind : uint16_t {
    Call = 1,
    Reply = 2,  // `code` is the status; data only with STATUS_OK
    Oneway = 3,
    Release = 4,      // gives `code` references of the receiver's object `target` back
    OpenReverse = 5,  // asks the opener of the session for one more reverse connection
};

struct FrameHeader {
    uint32_t size;  // of the whole frame
    FrameKind kind;
    uint16_t objects;
    uint32_t target;  // the receiver's object
    uint32_t code;

    [[nodiscard]] size_t dataSize() const { return size - sizeof(FrameHeader) - objects * sizeof(uint32_t); }
    // Whether the sizes agree with each other and the limit: nothing is allocated before.
    [[nodiscard]] bool isSane() const {
        return size >= sizeof(FrameHeader) + objects * sizeof(uint32_t) && size <= sizeof(FrameHeader) + kMaxCall &&
               objects <= kMaxObjects;
    }
};
static_assert(sizeof(FrameHeader) == 16);

// An object inside a parcel's data. A null one is Null with id 0, and has no offset in the frame.
enum class ObjectKind : uint32_t { Null = 0, Senders = 1, Receivers = 2 };

// It brings a hash of its interface's descriptor along, so that its class can be checked without a call back to a
// process that may hang.
struct FlatObject {
    ObjectKind kind;
    uint32_t id;
    uint64_t descriptor;
};
static_assert(sizeof(FlatObject) == 16);

// A code outside the users' range, answered without the object's class.
inline constexpr uint32_t kPingCode = 0x5f504e47;

}  // namespace binder
