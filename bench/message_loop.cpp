// The message loop beside its floor and its peers. Each figure is the median of alternating runs; a ratio compares
// medians of the same session.

#include <linux/futex.h>
#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utils/Looper.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <future>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include <mindroid/Handler.h>
#include <mindroid/HandlerThread.h>
#include <mindroid/Looper.h>
#include <mindroid/Message.h>

namespace {

using mindroid::Handler;
using mindroid::HandlerThread;
using mindroid::Message;
using Clock = std::chrono::steady_clock;

constexpr int kRuns = 11;
constexpr int kRoundTrips = 20'000;
constexpr int kMessages = 1'000'000;
constexpr int kBacklogTotal = 200'000;

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
        for (int i = 0; i < kRoundTrips; ++i) {
            ping.pass();
            pong.open();
        }
    });
    const auto start = Clock::now();
    for (int i = 0; i < kRoundTrips; ++i) {
        ping.open();
        pong.pass();
    }
    const double nanos = nanosSince(start);
    peer.join();
    return nanos / (2 * kRoundTrips);
}

// Answers each message to its peer until `count` came.
class Player : public Handler {
public:
    Player(const mindroid::sp<mindroid::Looper>& looper, Gate& done) : Handler(looper), mDone(done) {}
    void setPeer(Handler* peer) { mPeer = peer; }
    void handleMessage(const mindroid::sp<Message>& message) override {
        if (message->what == 2 * kRoundTrips) return mDone.open();
        mPeer->sendEmptyMessage(message->what + 1);
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
    a->sendEmptyMessage(1);
    done.pass();
    return nanosSince(start) / (2 * kRoundTrips);
}

class UtilsPlayer : public android::MessageHandler {
public:
    UtilsPlayer(android::sp<android::Looper> peerLooper, Gate& done) : mPeerLooper(peerLooper), mDone(done) {}
    void setPeer(const android::sp<UtilsPlayer>& peer) { mPeer = peer.get(); }
    void handleMessage(const android::Message& message) override {
        if (message.what == 2 * kRoundTrips) return mDone.open();
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
    const double nanos = nanosSince(start) / (2 * kRoundTrips);
    stop = true;
    for (const auto& looper : loopers) looper->wake();
    for (std::thread& thread : threads) thread.join();
    return nanos;
}

// ---- A stream of small messages: nanoseconds for one, from the first post until the last was handled. ----

class Counter : public Handler {
public:
    Counter(const mindroid::sp<mindroid::Looper>& looper, Gate& done) : Handler(looper), mDone(done) {}
    void handleMessage(const mindroid::sp<Message>& message) override {
        if (message->what == kMessages) mDone.open();
    }

private:
    Gate& mDone;
};

double streamMindroid() {
    Gate done;
    const mindroid::sp<HandlerThread> thread = new HandlerThread();
    thread->start();
    const mindroid::sp<Handler> counter = new Counter(thread->getLooper(), done);
    const auto start = Clock::now();
    for (int i = 1; i <= kMessages; ++i) counter->sendEmptyMessage(i);
    done.pass();
    return nanosSince(start) / kMessages;
}

class Receiver {
public:
    virtual ~Receiver() = default;
    virtual void handle(int32_t what) = 0;
};

class CountingReceiver : public Receiver {
public:
    explicit CountingReceiver(Gate& done) : mDone(done) {}
    void handle(int32_t what) override {
        if (what == kMessages) mDone.open();
    }

private:
    Gate& mDone;
};

// The plainest mailbox: the poster appends under a mutex and wakes a reader that sleeps; the reader swaps the whole
// vector out.
class VectorMailbox {
public:
    struct Item {
        Receiver* receiver;
        int32_t what, arg1, arg2;
    };

    void post(const Item& item) {
        bool wake;
        {
            const std::lock_guard lock(mLock);
            mItems.push_back(item);
            wake = std::exchange(mAsleep, false);
        }
        if (wake) mWakeUp.open();
    }

    // Runs items until one without a receiver.
    void run() {
        std::vector<Item> items;
        for (;;) {
            take(items);
            for (const Item& item : items) {
                if (item.receiver == nullptr) return;
                item.receiver->handle(item.what);
            }
            items.clear();
        }
    }

private:
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

    std::mutex mLock;
    std::vector<Item> mItems;
    bool mAsleep = false;
    Gate mWakeUp;
};

double streamVector() {
    Gate done;
    CountingReceiver receiver(done);
    VectorMailbox mailbox;
    std::thread reader([&] { mailbox.run(); });
    const auto start = Clock::now();
    for (int i = 1; i <= kMessages; ++i) mailbox.post({&receiver, i, 0, 0});
    done.pass();
    const double nanos = nanosSince(start) / kMessages;
    mailbox.post({nullptr, 0, 0, 0});
    reader.join();
    return nanos;
}

// ---- Bursts: nanoseconds to post and to run one message, with `backlog` of them waiting. ----

class BurstRunner : public Handler {
public:
    enum { HOLD, WORK, END };

    explicit BurstRunner(const mindroid::sp<mindroid::Looper>& looper) : Handler(looper) {}

    double burst(int backlog) {
        sendEmptyMessage(HOLD);
        mHeld.pass();
        const auto start = Clock::now();
        for (int i = 0; i < backlog; ++i) sendEmptyMessage(WORK);
        const double postNanos = nanosSince(start);
        sendEmptyMessage(END);
        mRelease.open();
        mDone.pass();
        return postNanos + mRunNanos;
    }

    void handleMessage(const mindroid::sp<Message>& message) override {
        if (message->what == HOLD) {
            mHeld.open();
            mRelease.pass();
            mStart = Clock::now();
        } else if (message->what == END) {
            mRunNanos = nanosSince(mStart);
            mDone.open();
        }
    }

private:
    Gate mHeld, mRelease, mDone;
    Clock::time_point mStart;
    double mRunNanos = 0;
};

double bursts(int backlog) {
    const mindroid::sp<HandlerThread> thread = new HandlerThread();
    thread->start();
    const mindroid::sp<BurstRunner> runner = new BurstRunner(thread->getLooper());
    double nanos = 0;
    for (int posted = 0; posted < kBacklogTotal; posted += backlog) nanos += runner->burst(backlog);
    return nanos / kBacklogTotal;
}

// ---- The report. ----

struct Subject {
    const char* name;
    std::function<double()> run;
    double median = 0;
};

void measure(std::vector<Subject>& subjects) {
    std::vector<std::vector<double>> samples(subjects.size());
    for (int run = 0; run <= kRuns; ++run) {
        for (size_t i = 0; i < subjects.size(); ++i) {
            const double nanos = subjects[i].run();
            if (run > 0) samples[i].push_back(nanos);  // the first warms up
        }
    }
    for (size_t i = 0; i < subjects.size(); ++i) {
        std::nth_element(samples[i].begin(), samples[i].begin() + kRuns / 2, samples[i].end());
        subjects[i].median = samples[i][kRuns / 2];
        std::printf("  %-34s %9.1f ns\n", subjects[i].name, subjects[i].median);
    }
}

void printRatio(const Subject& subject, const Subject& base, const char* goal) {
    std::printf("  ratio to %-25s %9.2fx   (goal %s)\n", base.name, subject.median / base.median, goal);
}

void report() {
    std::printf("one hop of a ping-pong between two threads\n");
    std::vector<Subject> hop = {
        {"mindroid", pingPongMindroid}, {"raw futex", pingPongFutex}, {"libutils Looper", pingPongUtils}};
    measure(hop);
    printRatio(hop[0], hop[1], "at most 1.10x");
    printRatio(hop[0], hop[2], "at most 0.75x");

    std::printf("one of a million small messages to another thread\n");
    std::vector<Subject> stream = {{"mindroid", streamMindroid}, {"vector under a mutex", streamVector}};
    measure(stream);
    printRatio(stream[0], stream[1], "at most 1.30x");

    std::printf("one message of a burst\n");
    std::vector<Subject> burst = {{"10,000 waiting", [] { return bursts(10'000); }},
                                  {"100 waiting", [] { return bursts(100); }}};
    measure(burst);
    printRatio(burst[0], burst[1], "about 1x");
}

// One CPU: waking a sleeping CPU would cost more than all that is measured.
bool pinToOneCpu(const cpu_set_t& allowed) {
    cpu_set_t one;
    CPU_ZERO(&one);
    int cpu = 0;
    while (!CPU_ISSET(cpu, &allowed)) ++cpu;
    CPU_SET(cpu, &one);
    return sched_setaffinity(0, sizeof one, &one) == 0;
}

}  // namespace

int main() {
    cpu_set_t allowed;
    if (sched_getaffinity(0, sizeof allowed, &allowed) != 0 || !pinToOneCpu(allowed)) {
        std::perror("message_loop: can't pin to one CPU");
        return 1;
    }
    std::printf("== all threads on one CPU ==\n");
    report();
    if (sched_setaffinity(0, sizeof allowed, &allowed) != 0) return 1;
    std::printf("== threads on any CPU (no goals: reported only) ==\n");
    report();
    return 0;
}
