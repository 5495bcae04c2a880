#pragma once

// What a peer may send, and what one peer and all peers together may cost this process.

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace binder {

// A call or a reply, with the offsets of its objects: 1 MiB less two pages; half of that for a oneway call.
inline constexpr size_t MAX_CALL = (1U << 20) - 2 * 4096;
inline constexpr size_t MAX_ONEWAY = MAX_CALL / 2;
inline constexpr size_t MAX_OBJECTS = 4096;

// Oneway calls of one process that have not run yet: one of the largest size, or many small ones. Each counts with what
// its entry in a queue takes. The receiver reports every ACK_INTERVAL bytes what has run.
inline constexpr size_t ONEWAY_OVERHEAD = 128;
inline constexpr size_t ACK_INTERVAL = size_t{32} * 1024;
inline constexpr size_t MAX_ONEWAY_WAITING = MAX_ONEWAY + ONEWAY_OVERHEAD + ACK_INTERVAL;
// Oneway calls of a message loop that leave together: so many bytes, or what came within this time.
inline constexpr size_t MAX_DEFERRED = size_t{32} * 1024;
inline constexpr std::chrono::milliseconds DEFERRAL{1};
// Reference counts that wait for a process that does not read.
inline constexpr size_t MAX_UNREAD = MAX_ONEWAY_WAITING + (1U << 20);

// Of one process: connections that have not said what for, sessions (it needs one), connections that it calls on.
inline constexpr int MAX_GREETINGS = 128;
inline constexpr int MAX_SESSIONS = 4;
inline constexpr int MAX_SERVED = 128;
// Connections that this process opens to call a peer: one for each thread that waits for a reply.
inline constexpr size_t MAX_CALLS = 64;

// Bytes of frames that have not arrived whole, of one process and of all.
inline constexpr size_t MAX_HALF_SENT = 2U << 20;
inline constexpr size_t MAX_ALL_HALF_SENT = 32U << 20;
// A larger call waits until the one before it is written, so that an honest process half sends one at a time.
inline constexpr size_t LARGE_CALL = size_t{64} * 1024;

// A connection says what it is for within this time.
inline constexpr std::chrono::seconds GREETING_TIME{5};
// A process that looks a name up waits for each answer of its server no longer than this.
inline constexpr std::chrono::seconds HELLO_TIME{2};
// What the system refused is tried again after this time.
inline constexpr std::chrono::milliseconds RETRY_TIME{100};
// Calls wait this long for a binder thread before the log says so.
inline constexpr std::chrono::seconds STALL_TIME{1};
// The log has a line about the same trouble once in this time at most.
inline constexpr std::chrono::seconds QUIET_TIME{1};
// So long after a change in the folder of names, a process looks whether its own names are there.
inline constexpr std::chrono::milliseconds CHANGE_TIME{500};
// After a connection broke, the end of its peer's process shows within this time.
inline constexpr std::chrono::milliseconds DEATH_TIME{1000};

}  // namespace binder
