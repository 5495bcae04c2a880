#pragma once

// What travels between two processes. Both are on this machine, so integers are in its order (little-endian).
//
// A client connects to the socket of a name and says hellos. With Open it hands over two sockets, and the two processes
// have a session:
//
//   control  where Open was said: brings call connections, in both directions
//   channel  one for each direction: oneway calls and reference counts; its reader sends back how many bytes of oneway
//            calls have run. The end of a channel is the end of the session, and so is the end of the control socket.
//   call     a socket pair, one end passed over the control socket: calls of its opener, their replies, and in between
//            the calls that come back from whoever serves the call
//
// All carry frames: a header, the parcel's data, the offsets of the objects in that data.

#include "Limits.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace binder {

// A random name of a process.
using Key = std::array<uint8_t, 16>;

inline constexpr uint32_t PROTOCOL = 0x42640002;

enum class HelloKind : uint32_t {
    Identify = 1,  // which process serves this name?
    Open = 2,      // a session, and the object of this name; brings the opener's channel and the one back to it
    Root = 3,      // the object of this name, in the session of the two processes
};

// `process` is the sender's own. Each hello is answered. Another one may follow, but none follows Open.
struct Hello {
    uint32_t protocol;
    HelloKind kind;
    Key process;
};
static_assert(sizeof(Hello) == 24);

struct HelloReply {
    uint32_t protocol;
    uint32_t object;      // of Open and Root
    uint64_t descriptor;  // of the object; see FlatObject
    Key process;          // the server's
};
static_assert(sizeof(HelloReply) == 32);

enum class FrameKind : uint16_t {
    Call = 1,        // on call connections
    Reply = 2,       // `code` is the status; data only with STATUS_OK
    Oneway = 3,      // on channels
    Release = 4,     // gives `code` references of the receiver's object `target` back
    Connection = 5,  // on the control socket: brings the receiver's end of a call connection
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
        return size >= sizeof(FrameHeader) + objects * sizeof(uint32_t) && size <= sizeof(FrameHeader) + MAX_CALL &&
               objects <= MAX_OBJECTS;
    }
};
static_assert(sizeof(FrameHeader) == 16);

// Bytes of oneway calls, headers and overhead counted, that the channel's reader has run since its beginning.
using Ack = uint64_t;

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

// Codes outside the users' range, answered without the object's class.
inline constexpr uint32_t PING_CODE = 0x5f504e47;
inline constexpr uint32_t DUMP_CODE = 0x5f444d50;       // strings -> status and text
inline constexpr uint32_t EXTENSION_CODE = 0x5f455854;  // -> object

}  // namespace binder
