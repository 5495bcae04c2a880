#include "TraceWriter.h"

#include <android/log.h>

#include <pthread.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <span>

namespace device::trace {

namespace {

using Word = std::atomic_ref<uint64_t>;

// What a thread holds of the file. Plain data, so that looking at it costs nothing.
struct ThisThread {
    uint32_t id;           // 0 before the first mark
    bool isOver;           // marks of later destructors are dropped
    Thread* entry;         // null where all are held
    uint64_t* entryOwner;  // its owner's word
    uint64_t* chunk;       // the owner's word of the chunk, null where it has none
    Slot* next;            // in the chunk
    Slot* end;
};
// Reached without a call; the little room that this model takes is there in a library that is loaded late, too.
[[gnu::tls_model("initial-exec")]] constinit thread_local ThisThread tThread{};

constinit std::atomic<TraceWriter*> sWriter = nullptr;

constexpr size_t NONE = SIZE_MAX;

// The next one that nobody holds, from where the last search ended.
size_t claim(std::span<uint64_t> owners, uint64_t& next) {
    constexpr int MAX_TRIES = 64;
    for (int i = 0; i < MAX_TRIES; ++i) {
        const size_t index = Word(next).fetch_add(1, std::memory_order_relaxed) % owners.size();
        uint64_t nobody = 0;
        if (Word(owners[index]).compare_exchange_strong(nobody, tThread.id, std::memory_order_acquire)) return index;
    }
    return NONE;
}

void release(uint64_t& owner) {
    Word(owner).store(0, std::memory_order_release);
}

// Gives back what the thread holds when it ends.
void leave(void*) {
    if (tThread.chunk != nullptr) release(*tThread.chunk);
    if (tThread.entry != nullptr) release(*tThread.entryOwner);
    tThread = {tThread.id, true, nullptr, nullptr, nullptr, nullptr, nullptr};
}

// Not a thread_local's destructor: the C library ends the process where there is no memory to remember it.
void leaveAtThreadEnd() {
    static const pthread_key_t sKey = [] {
        pthread_key_t key{};
        if (pthread_key_create(&key, leave) != 0) __android_log_assert(nullptr, "Recorder", "no thread key is left");
        return key;
    }();
    pthread_setspecific(sKey, &tThread);
}

uint64_t now() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<uint64_t>(time.tv_sec) * 1'000'000'000 + static_cast<uint64_t>(time.tv_nsec);
}

constexpr size_t wordsOf(size_t bytes) {
    return (bytes + sizeof(uint64_t) - 1) / sizeof(uint64_t);
}

size_t nameWords(const Slot& mark) {
    return wordsOf(mark.origin >> 40);
}

// Release, so that nobody who sees one of the words sees the time from before.
void copy(const Slot& mark, Slot& to) {
    Word(to.time).store(0, std::memory_order_relaxed);
    Word(to.origin).store(mark.origin, std::memory_order_release);
    Word(to.value).store(mark.value, std::memory_order_release);
    for (size_t i = 0; i < nameWords(mark); ++i) Word(to.name[i]).store(mark.name[i], std::memory_order_release);
    Word(to.time).store(mark.time, std::memory_order_release);
}

void count(uint64_t& counter) {
    Word(counter).fetch_add(1, std::memory_order_relaxed);
}

// What tells one open section from the others, and where its place may be: in the cookie's row, so that sections with
// cookies that were counted lie side by side, or in one of a few others, which are scattered.
struct Key {
    explicit Key(const Slot& mark) : word(0), cookie(mark.value) {
        for (size_t i = 0; i < nameWords(mark); ++i) word = mix(word ^ mark.name[i]);
        word = mix(word + cookie) | 2;  // neither 0 nor TAKEN_KEY
    }
    // The first of the row's places.
    [[nodiscard]] size_t row(uint64_t step) const {
        const uint64_t row = step == 0 ? cookie / ROW_PLACES : mix(mix(word + step)) >> 40;
        return row * ROW_PLACES % PLACES;
    }
    static uint64_t mix(uint64_t word) { return (word ^ word >> 31) * 0x9E3779B97F4A7C15; }

    uint64_t word;
    uint64_t cookie;
};

// The first of a key's places that `take` takes, or NONE.
template <typename Take>
size_t findPlace(const Key& key, const Take& take) {
    for (uint64_t step = 0; step < REACH; ++step) {
        const size_t row = key.row(step);
        for (size_t i = row; i < row + ROW_PLACES; ++i) {
            if (take(i)) return i;
        }
    }
    return NONE;
}

}  // namespace

void TraceWriter::enterThread() {
    tThread.id = static_cast<uint32_t>(gettid());
    const size_t index = claim(mFile.threadOwners, mFile.nextThread);
    leaveAtThreadEnd();
    if (index == NONE) return;
    tThread.entryOwner = &mFile.threadOwners[index];
    Thread& entry = mFile.threads[index];
    decltype(entry.name) name{};
    pthread_getname_np(pthread_self(), static_cast<char*>(static_cast<void*>(name.data())), sizeof(name));
    Word(entry.depth).store(0, std::memory_order_relaxed);
    for (size_t i = 0; i < name.size(); ++i) Word(entry.name[i]).store(name[i], std::memory_order_relaxed);
    Word(entry.id).store(tThread.id, std::memory_order_release);
    tThread.entry = &entry;
}

bool TraceWriter::takeChunk() {
    if (tThread.chunk != nullptr) release(*tThread.chunk);
    tThread.chunk = nullptr;
    const size_t index = claim(mFile.chunkOwners, mFile.nextChunk);
    if (index == NONE) return false;
    tThread.chunk = &mFile.chunkOwners[index];
    tThread.next = &mFile.ring[index * CHUNK_MARKS];
    tThread.end = tThread.next + CHUNK_MARKS;
    return true;
}

void TraceWriter::record(const Slot& mark) {
    if (tThread.next == tThread.end && (tThread.isOver || !takeChunk())) return count(mFile.lostMarks);
    copy(mark, *tThread.next++);
}

Slot TraceWriter::make(MarkKind kind, const char* name, int64_t value) {
    if (tThread.id == 0) [[unlikely]]
        enterThread();
    Slot mark;
    const size_t bytes = name == nullptr ? 0 : strnlen(name, NAME_BYTES);
    if (bytes > 0) {
        mark.name[wordsOf(bytes) - 1] = 0;
        memcpy(mark.name.data(), name, bytes);
    }
    mark.origin = origin(tThread.id, static_cast<uint8_t>(kind), bytes);
    mark.value = static_cast<uint64_t>(value);
    mark.time = now();
    return mark;
}

void TraceWriter::begin(const char* name) {
    const Slot mark = make(MarkKind::BEGIN, name, 0);
    record(mark);
    Thread* const entry = tThread.entry;
    if (entry == nullptr) return count(mFile.begunWithoutPlace);
    const uint64_t depth = Word(entry->depth).load(std::memory_order_relaxed);
    if (depth < THREAD_SECTIONS) {
        copy(mark, entry->sections[depth]);
    } else {
        count(mFile.begunWithoutPlace);
    }
    Word(entry->depth).store(depth + 1, std::memory_order_release);
}

void TraceWriter::end() {
    record(make(MarkKind::END, nullptr, 0));
    Thread* const entry = tThread.entry;
    if (entry == nullptr) return count(mFile.endedWithoutPlace);
    const uint64_t depth = Word(entry->depth).load(std::memory_order_relaxed);
    // It may end a section that began before there was a recorder.
    if (depth > 0) Word(entry->depth).store(depth - 1, std::memory_order_release);
    if (depth > THREAD_SECTIONS) count(mFile.endedWithoutPlace);
}

void TraceWriter::asyncBegin(const char* name, int32_t cookie) {
    const Slot mark = make(MarkKind::ASYNC_BEGIN, name, cookie);
    record(mark);
    if (!open(mark)) count(mFile.begunWithoutPlace);
}

void TraceWriter::asyncEnd(const char* name, int32_t cookie) {
    const Slot mark = make(MarkKind::ASYNC_END, name, cookie);
    record(mark);
    if (!close(mark)) count(mFile.endedWithoutPlace);
}

void TraceWriter::mark(MarkKind kind, const char* name, int64_t value) {
    record(make(kind, name, value));
}

bool TraceWriter::open(const Slot& mark) {
    const Key key(mark);
    const size_t place = findPlace(key, [this](size_t i) {
        const Word word(mFile.keys[i]);
        uint64_t nobody = 0;
        return word.load(std::memory_order_relaxed) == nobody &&
               word.compare_exchange_strong(nobody, TAKEN_KEY, std::memory_order_acquire);
    });
    if (place == NONE) return false;
    copy(mark, mFile.open[place]);
    Word(mFile.keys[place]).store(key.word, std::memory_order_release);
    return true;
}

bool TraceWriter::close(const Slot& mark) {
    const Key key(mark);
    const size_t place = findPlace(key, [&](size_t i) {
        const Word word(mFile.keys[i]);
        uint64_t mine = key.word;
        return word.load(std::memory_order_relaxed) == mine &&
               word.compare_exchange_strong(mine, 0, std::memory_order_release);
    });
    return place != NONE;
}

TraceWriter* writer() {
    return sWriter.load(std::memory_order_acquire);
}

void setWriter(TraceWriter* writer) {
    tThread = {};
    sWriter.store(writer, std::memory_order_release);
}

}  // namespace device::trace
