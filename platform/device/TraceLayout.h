#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

// The file of a recorder, which the recording process maps and others read while it writes. Numbers are those of the
// machine. A file of zeros is an empty one; the magic is written when the header is complete.
//
// The ring is cut into chunks. A thread takes a chunk, fills it mark by mark and takes the next one that no other
// thread holds; so each slot has one writer, and a thread that marks seldom keeps its last marks. An open section has a
// second copy of its begin: one of a thread on the thread's stack, an asynchronous one in the table, where its key is.
//
// Words are written in one piece each, so that a slot may be torn but a word never is. While a slot is written its time
// is 0. A reader copies the file twice: what is the same in both copies was not being written between them; so a slot
// of the first copy with a time, unchanged in the second, is whole.
namespace device::trace {

constexpr uint64_t MAGIC = 0x3145434152545353;  // "SSTRACE1"

constexpr size_t CHUNKS = 1'024;
constexpr size_t CHUNK_MARKS = 32;
// For asynchronous sections that are open.
constexpr size_t PLACES = 4'096;
// A section's place is in one of its REACH rows. The keys of a row share a cache line.
constexpr size_t ROW_PLACES = 8;
constexpr size_t REACH = 16;
constexpr size_t THREADS = 256;
constexpr size_t THREAD_SECTIONS = 8;
constexpr size_t NAME_BYTES = 72;
constexpr size_t PROGRAM_BYTES = 64;
constexpr size_t THREAD_NAME_BYTES = 16;

struct Slot {
    uint64_t time;                                             // CLOCK_MONOTONIC in ns; 0 while the slot is written
    uint64_t origin;                                           // see `origin()`
    uint64_t value;                                            // the cookie or the counter's value, sign-extended
    std::array<uint64_t, NAME_BYTES / sizeof(uint64_t)> name;  // only the bytes within its length are written
};

// Bits 0..31: the thread; 32..39: the kind; 40..47: the bytes of the name.
constexpr uint64_t origin(uint32_t thread, uint8_t kind, size_t nameBytes) {
    return thread | uint64_t{kind} << 32 | uint64_t{nameBytes} << 40;
}

// Kept when the thread has ended, until another one needs it.
struct Thread {
    uint64_t id;
    std::array<uint64_t, THREAD_NAME_BYTES / sizeof(uint64_t)> name;
    uint64_t depth;  // of its open sections, also of those that the array has no room for
    std::array<Slot, THREAD_SECTIONS> sections;
};

// A place's key: 0 where it is free, else TAKEN_KEY while it is written, then a hash of the section's name and cookie.
constexpr uint64_t TAKEN_KEY = 1;

struct alignas(64) File {
    uint64_t magic;
    uint64_t size;
    uint64_t pid;
    uint64_t startTime;      // CLOCK_MONOTONIC in ns
    uint64_t startWallTime;  // CLOCK_REALTIME in ns, of the same moment
    std::array<char, PROGRAM_BYTES> program;

    alignas(64) uint64_t nextChunk;
    uint64_t nextThread;
    uint64_t lostMarks;
    uint64_t begunWithoutPlace;  // sections
    uint64_t endedWithoutPlace;

    alignas(64) std::array<uint64_t, CHUNKS> chunkOwners;  // 0: nobody
    alignas(64) std::array<uint64_t, THREADS> threadOwners;
    alignas(64) std::array<Thread, THREADS> threads;
    alignas(64) std::array<uint64_t, PLACES> keys;
    alignas(64) std::array<Slot, PLACES> open;
    alignas(64) std::array<Slot, CHUNKS * CHUNK_MARKS> ring;
};

static_assert(std::is_trivial_v<File>);
static_assert(sizeof(Slot) == 96 && sizeof(Thread) == 800);
static_assert(offsetof(File, nextChunk) == 128 && offsetof(File, chunkOwners) == 192);
static_assert(sizeof(File) == 192 + CHUNKS * 8 + THREADS * 808 + PLACES * 104 + CHUNKS * CHUNK_MARKS * 96);

}  // namespace device::trace
