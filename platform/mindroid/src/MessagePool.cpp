#include "MessagePool.h"

#include <mutex>
#include <new>
#include <utility>

#include <mindroid/Message.h>

#if defined(__SANITIZE_ADDRESS__)
#define MINDROID_NO_MESSAGE_POOL 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define MINDROID_NO_MESSAGE_POOL 1
#endif
#endif

namespace mindroid::messagepool {

#ifdef MINDROID_NO_MESSAGE_POOL

// Without the pool AddressSanitizer sees each use of a message that is gone.
void* allocate(size_t size) {
    return ::operator new(size);
}

void release(void* memory) {
    ::operator delete(memory);
}

#else

namespace {

constexpr size_t kMagazineSize = 64;
constexpr size_t kMaxMagazines = 1024;
constexpr std::align_val_t kCacheLine{64};

struct Block {
    Block* next;
    // In the first block of a magazine that is in the depot.
    Block* nextMagazine;
};
static_assert(sizeof(Block) <= sizeof(Message));

// A stack of free blocks.
struct Magazine {
    Block* head = nullptr;
    size_t count = 0;

    void push(void* memory) {
        head = new (memory) Block{head, nullptr};
        ++count;
    }

    void* pop() {
        --count;
        return std::exchange(head, head->next);
    }

    void free() {
        while (count > 0) ::operator delete(pop(), kCacheLine);
    }
};

// Where threads exchange full magazines.
class Depot {
public:
    // Keeps the magazine unless the depot is full.
    [[nodiscard]] bool put(Magazine magazine) {
        const std::lock_guard lock(mLock);
        if (mCount == kMaxMagazines) return false;
        magazine.head->nextMagazine = std::exchange(mHead, magazine.head);
        ++mCount;
        return true;
    }

    // A full magazine, or an empty one.
    [[nodiscard]] Magazine take() {
        const std::lock_guard lock(mLock);
        if (mCount == 0) return {};
        --mCount;
        return {std::exchange(mHead, mHead->nextMagazine), kMagazineSize};
    }

private:
    std::mutex mLock;
    Block* mHead = nullptr;
    size_t mCount = 0;
};

// Trivial, so that it is there before and after everything else of the thread and the process.
struct Cache {
    Magazine current;
    Magazine spare;
    enum { NEW, OPEN, CLOSED } state = NEW;
};

constinit Depot sDepot;
constinit thread_local Cache sCache;

void store(Magazine magazine) {
    if (magazine.count == kMagazineSize && sDepot.put(magazine)) return;
    magazine.free();
}

// Hands the thread's blocks back at its end; what the thread frees after that goes to the heap.
struct Closer {
    Closer() { sCache.state = Cache::OPEN; }
    ~Closer() {
        sCache.state = Cache::CLOSED;
        store(std::exchange(sCache.current, {}));
        store(std::exchange(sCache.spare, {}));
    }
};

// Whether the thread has a cache: not once it ends.
bool open() {
    if (sCache.state == Cache::NEW) static thread_local Closer sCloser;
    return sCache.state == Cache::OPEN;
}

void* refill(size_t size) {
    if (open()) {
        sCache.current = sCache.spare.count > 0 ? std::exchange(sCache.spare, {}) : sDepot.take();
        if (sCache.current.count > 0) return sCache.current.pop();
    }
    return ::operator new(size, kCacheLine);
}

// Makes room in the current magazine, which is full.
void rotate() {
    if (sCache.spare.count > 0) store(sCache.spare);
    sCache.spare = std::exchange(sCache.current, {});
}

}  // namespace

void* allocate(size_t size) {
    return sCache.current.count > 0 ? sCache.current.pop() : refill(size);
}

void release(void* memory) {
    if (!open()) return ::operator delete(memory, kCacheLine);
    if (sCache.current.count == kMagazineSize) rotate();
    sCache.current.push(memory);
}

#endif

}  // namespace mindroid::messagepool
