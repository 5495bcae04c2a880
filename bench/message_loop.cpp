// The message loop beside its floor and its peers. Each figure is the median of its rounds; a ratio is the median of
// the rounds' ratios.

#include "bench/support/Cpu.h"
#include "bench/support/Stats.h"

#include <mindroid/Handler.h>
#include <mindroid/HandlerThread.h>
#include <mindroid/Looper.h>
#include <mindroid/Message.h>
#include <utils/Looper.h>

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using mindroid::Handler;
using mindroid::HandlerThread;
using mindroid::Message;
using Clock = std::chrono::steady_clock;

constexpr int ROUNDS = 11;
constexpr int ROUND_TRIPS = 20'000;
constexpr int BACKLOG = 10'000;
constexpr int BURSTS = 20;

double nanosSince(Clock::time_point start) {
    return std::chrono::duration<double, std::nano>(Clock::now() - start).count();
}

// A flag that one thread sleeps on and another sets: one system call each.
class Gate {
public:
    void open() {
        mOpen.store(1, std::memory_order_release);
        syscall(SYS_futex, &mOpen, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
    }
    void pass() {
        while (mOpen.exchange(0, std::memory_order_acquire) == 0) {
            syscall(SYS_futex, &mOpen, FUTEX_WAIT_PRIVATE, 0, nullptr, nullptr, 0);
        }
    }

private:
    std::atomic<uint32_t> mOpen{0};
};

// ---- Ping-pong: nanoseconds for one hop. ----

double pingPongFutex() {
    Gate ping, pong;
    std::thread peer([&] {
        for (int i = 0; i < ROUND_TRIPS; ++i) {
            ping.pass();
            pong.open();
        }
    });
    const auto start = Clock::now();
    for (int i = 0; i < ROUND_TRIPS; ++i) {
        ping.open();
        pong.pass();
    }
    const double nanos = nanosSince(start);
    peer.join();
    return nanos / (2 * ROUND_TRIPS);
}

// Answers each message to its peer until `count` came.
class Player : public Handler {
public:
    Player(const mindroid::sp<mindroid::Looper>& looper, Gate& done) : Handler(looper), mDone(done) {}
    void setPeer(Handler* peer) { mPeer = peer; }
    void handleMessage(const mindroid::sp<Message>& message) override {
        if (message->what == 2 * ROUND_TRIPS) return mDone.open();
        mPeer->obtainMessage(message->what + 1)->sendToTarget();
    }

private:
    Gate& mDone;
    Handler* mPeer = nullptr;
};

double pingPongMindroid() {
    Gate done;
    const mindroid::sp<HandlerThread> threads[] = {new HandlerThread(), new HandlerThread()};
    for (const auto& thread : threads) thread->start();
    const mindroid::sp<Player> a = new Player(threads[0]->getLooper(), done);
    const mindroid::sp<Player> b = new Player(threads[1]->getLooper(), done);
    a->setPeer(b.get());
    b->setPeer(a.get());
    const auto start = Clock::now();
    a->obtainMessage(1)->sendToTarget();
    done.pass();
    return nanosSince(start) / (2 * ROUND_TRIPS);
}

class UtilsPlayer : public android::MessageHandler {
public:
    UtilsPlayer(android::sp<android::Looper> peerLooper, Gate& done) : mPeerLooper(peerLooper), mDone(done) {}
    void setPeer(const android::sp<UtilsPlayer>& peer) { mPeer = peer.get(); }
    void handleMessage(const android::Message& message) override {
        if (message.what == 2 * ROUND_TRIPS) return mDone.open();
        mPeerLooper->sendMessage(mPeer, android::Message(message.what + 1));
    }

private:
    const android::sp<android::Looper> mPeerLooper;
    UtilsPlayer* mPeer = nullptr;
    Gate& mDone;
};

double pingPongUtils() {
    Gate done;
    const android::sp<android::Looper> loopers[] = {new android::Looper(false), new android::Looper(false)};
    const android::sp<UtilsPlayer> a = new UtilsPlayer(loopers[1], done);
    const android::sp<UtilsPlayer> b = new UtilsPlayer(loopers[0], done);
    a->setPeer(b);
    b->setPeer(a);
    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;
    for (const auto& looper : loopers) {
        threads.emplace_back([&stop, looper] {
            while (!stop) looper->pollOnce(-1);
        });
    }
    const auto start = Clock::now();
    loopers[0]->sendMessage(a, android::Message(1));
    done.pass();
    const double nanos = nanosSince(start) / (2 * ROUND_TRIPS);
    stop = true;
    for (const auto& looper : loopers) looper->wake();
    for (std::thread& thread : threads) thread.join();
    return nanos;
}

// ---- A bounded burst: nanoseconds to post and to run one message, with BACKLOG of them waiting. ----

// One round: holds the reader, posts BACKLOG items, lets the reader run them. The wake-up of the reader counts for
// nothing.
template <typename Mailbox>
double burst(Mailbox& mailbox) {
    mailbox.hold();
    const auto start = Clock::now();
    for (int i = 0; i < BACKLOG; ++i) mailbox.post();
    const double postNanos = nanosSince(start);
    return (postNanos + mailbox.runNanos()) / BACKLOG;
}

// What runs the items of a burst, whoever delivers them.
class BurstReader {
public:
    enum { HOLD, WORK, END };

    void handle(int32_t what) {
        if (what == HOLD) {
            mHeld.open();
            mRelease.pass();
            mStart = Clock::now();
        } else if (what == END) {
            mRunNanos = nanosSince(mStart);
            mDone.open();
        }
    }
    void awaitHeld() { mHeld.pass(); }
    double run() {
        mRelease.open();
        mDone.pass();
        return mRunNanos;
    }

private:
    Gate mHeld, mRelease, mDone;
    Clock::time_point mStart;
    double mRunNanos = 0;
};

class LooperMailbox : public Handler {
public:
    explicit LooperMailbox(const mindroid::sp<mindroid::Looper>& looper) : Handler(looper) {}

    void hold() {
        obtainMessage(BurstReader::HOLD)->sendToTarget();
        mReader.awaitHeld();
    }
    void post() { obtainMessage(BurstReader::WORK)->sendToTarget(); }
    double runNanos() {
        obtainMessage(BurstReader::END)->sendToTarget();
        return mReader.run();
    }
    void handleMessage(const mindroid::sp<Message>& message) override { mReader.handle(message->what); }

private:
    BurstReader mReader;
};

double burstMindroid() {
    const mindroid::sp<HandlerThread> thread = new HandlerThread();
    thread->start();
    const mindroid::sp<LooperMailbox> mailbox = new LooperMailbox(thread->getLooper());
    double nanos = 0;
    for (int i = 0; i < BURSTS; ++i) nanos += burst(*mailbox);
    return nanos / BURSTS;
}

// The plainest mailbox: the poster appends under a mutex and wakes a reader that sleeps; the reader swaps the whole
// vector out.
class VectorMailbox {
public:
    void hold() {
        put({&mReader, BurstReader::HOLD, 0, 0});
        mReader.awaitHeld();
    }
    void post() { put({&mReader, BurstReader::WORK, 0, 0}); }
    double runNanos() {
        put({&mReader, BurstReader::END, 0, 0});
        return mReader.run();
    }

    // Runs items until one without a reader.
    void run() {
        std::vector<Item> items;
        for (;;) {
            take(items);
            for (const Item& item : items) {
                if (item.reader == nullptr) return;
                item.reader->handle(item.what);
            }
            items.clear();
        }
    }
    void stop() { put({nullptr, 0, 0, 0}); }

private:
    struct Item {
        BurstReader* reader;
        int32_t what, arg1, arg2;
    };

    void put(const Item& item) {
        bool wake;
        {
            const std::lock_guard lock(mLock);
            mItems.push_back(item);
            wake = std::exchange(mAsleep, false);
        }
        if (wake) mWakeUp.open();
    }
    void take(std::vector<Item>& items) {
        std::unique_lock lock(mLock);
        while (mItems.empty()) {
            mAsleep = true;
            lock.unlock();
            mWakeUp.pass();
            lock.lock();
        }
        items.swap(mItems);
    }

    BurstReader mReader;
    std::mutex mLock;
    std::vector<Item> mItems;
    bool mAsleep = false;
    Gate mWakeUp;
};

double burstVector() {
    VectorMailbox mailbox;
    std::thread reader([&] { mailbox.run(); });
    double nanos = 0;
    for (int i = 0; i < BURSTS; ++i) nanos += burst(mailbox);
    mailbox.stop();
    reader.join();
    return nanos / BURSTS;
}

// ---- The report. ----

struct Subject {
    const char* name;
    double (*run)();
    std::vector<double> nanos = {};
};

// The first subject is ours; the ratios are to the others.
void compare(const char* what, std::vector<Subject> subjects, const std::vector<const char*>& goals) {
    std::printf("%s\n", what);
    std::vector<bench::Ratio> ratios(goals.size());
    for (int round = 0; round <= ROUNDS; ++round) {
        for (Subject& subject : subjects) subject.nanos.push_back(subject.run());
        if (round == 0) continue;  // the first warms up
        for (size_t i = 0; i < goals.size(); ++i) ratios[i].add(subjects[0].nanos.back(), subjects[i + 1].nanos.back());
    }
    for (const Subject& subject : subjects)
        std::printf("  %-58s %9.1f ns\n", subject.name, bench::median(subject.nanos));
    for (size_t i = 0; i < goals.size(); ++i)
        ratios[i].print(std::string("ratio to ") + subjects[i + 1].name, goals[i]);
}

void report() {
    compare("one hop of a ping-pong between two threads",
            {{"mindroid", pingPongMindroid}, {"raw futex", pingPongFutex}, {"libutils Looper", pingPongUtils}},
            {"at most 1.08x", "at most 0.75x"});
    compare("one message of a burst, 10,000 waiting",
            {{"mindroid", burstMindroid}, {"vector under a mutex", burstVector}}, {"none, for comparison"});
}

}  // namespace

int main() {
    {
        const bench::OneCpu pinned;
        std::printf("== all threads on one CPU ==\n");
        report();
    }
    std::printf("== threads on any CPU (no goals: reported only) ==\n");
    report();
}
