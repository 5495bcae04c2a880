#include "bench/support/Shape.h"

#include "bench/support/Stats.h"

#include <linux/futex.h>
#include <signal.h>
#include <sys/epoll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <functional>
#include <mutex>
#include <new>
#include <span>
#include <thread>
#include <vector>

namespace bench {
namespace {

void futexWait(std::atomic<uint32_t>& word, uint32_t seen) {
    syscall(SYS_futex, &word, FUTEX_WAIT, seen, nullptr, nullptr, 0);
}

void futexWake(std::atomic<uint32_t>& word) {
    syscall(SYS_futex, &word, FUTEX_WAKE, 1, nullptr, nullptr, 0);
}

[[noreturn]] void fail(const char* what) {
    std::perror(what);
    std::exit(1);
}

void check(int result, const char* what) {
    if (result < 0) {
        errno = -result;
        fail(what);
    }
}

// Hands turns from one thread to another, waking only who sleeps.
class Hop {
public:
    void post() {
        mPosted.fetch_add(1);
        if (mAsleep.load() != 0) futexWake(mPosted);
    }
    // The number of posts taken over so far, after waiting until there is one more than `taken`.
    uint32_t take(uint32_t taken) {
        uint32_t posted = mPosted.load();
        while (posted == taken) {
            mAsleep.store(1);
            if (mPosted.load() == taken) futexWait(mPosted, taken);
            mAsleep.store(0);
            posted = mPosted.load();
        }
        return posted;
    }

private:
    std::atomic<uint32_t> mPosted{0};
    std::atomic<uint32_t> mAsleep{0};
};

// Does it for each turn of the hop, for ever.
template <typename Action>
void forEach(Hop& hop, Action action) {
    for (uint32_t taken = 0;;) {
        const uint32_t posted = hop.take(taken);
        for (; taken != posted; ++taken) action();
    }
}

constexpr size_t BARE_MESSAGE = 96;

bool readAll(int fd, void* data, size_t size) {
    auto* at = static_cast<char*>(data);
    while (size > 0) {
        const ssize_t got = read(fd, at, size);
        if (got <= 0) return false;
        at += got;
        size -= static_cast<size_t>(got);
    }
    return true;
}

// Reads what comes on a socket, and waits for it there or on an epoll.
class Input {
public:
    Input(int fd, bool polls) : mFd(fd) {
        if (!polls) return;
        mEpoll = epoll_create1(EPOLL_CLOEXEC);
        epoll_event event{};
        event.events = EPOLLIN | EPOLLET;
        if (epoll_ctl(mEpoll, EPOLL_CTL_ADD, fd, &event) != 0) fail("epoll");
    }
    ~Input() {
        if (mEpoll >= 0) close(mEpoll);
    }
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

    bool read(std::span<char> message) {
        epoll_event event{};
        if (mEpoll >= 0) epoll_wait(mEpoll, &event, 1, -1);
        return readAll(mFd, message.data(), message.size());
    }

private:
    const int mFd;
    int mEpoll = -1;
};

void writeAll(int fd, const void* data, size_t size) {
    if (write(fd, data, size) != static_cast<ssize_t>(size)) _exit(0);
}

std::array<int, 2> socketPair() {
    std::array<int, 2> pair{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair.data()) != 0) fail("socketpair");
    return pair;
}

class BareShape final : public Shape {
public:
    explicit BareShape(BareOptions options)
        : mPolls(options.polls),
          mHops(options.hops),
          mAnswerSize(BARE_MESSAGE + options.payload),
          mRequests(socketPair()),
          mAnswers(socketPair()) {
        mServer = startProcess([this] { serve(); });
        close(mRequests[1]);
        close(mAnswers[1]);
        mReader = std::thread([this] {
            std::vector<char> message(mAnswerSize);
            Input answers(mAnswers[0], mPolls);
            while (answers.read(message)) arrivals.note();
        });
    }

    ~BareShape() override {
        stopProcess(mServer);
        mReader.join();
        close(mRequests[0]);
        close(mAnswers[0]);
    }

    void call(int32_t count) override {
        std::array<char, BARE_MESSAGE> message{};
        std::memcpy(message.data(), &count, sizeof count);
        writeAll(mRequests[0], message.data(), message.size());
        if (!readAll(mRequests[0], message.data(), message.size())) fail("bare server");
    }

private:
    void serve() {
        close(mRequests[0]);
        close(mAnswers[0]);
        std::deque<Hop> hops(mHops);
        for (size_t i = 0; i + 1 < mHops; ++i) {
            std::thread([&hops, i] { forEach(hops[i], [&] { hops[i + 1].post(); }); }).detach();
        }
        std::thread([&] {
            const std::vector<char> answer(mAnswerSize);
            forEach(hops.back(), [&] { writeAll(mAnswers[1], answer.data(), answer.size()); });
        }).detach();
        std::array<char, BARE_MESSAGE> message{};
        Input requests(mRequests[1], mPolls);
        while (requests.read(message)) {
            hops.front().post();
            writeAll(mRequests[1], message.data(), message.size());
        }
        _exit(0);
    }

    const bool mPolls;
    const size_t mHops;
    const size_t mAnswerSize;
    const std::array<int, 2> mRequests;
    const std::array<int, 2> mAnswers;
    pid_t mServer = 0;
    std::thread mReader;
};

constexpr const char* PATH = "/bench";
constexpr const char* INTERFACE = "bench.Peer";

sd_bus* openBus(int fd, bool server) {
    sd_bus* bus = nullptr;
    check(sd_bus_new(&bus), "sd_bus_new");
    check(sd_bus_set_fd(bus, fd, fd), "sd_bus_set_fd");
    if (server) {
        sd_id128_t id{};
        sd_id128_randomize(&id);
        check(sd_bus_set_server(bus, 1, id), "sd_bus_set_server");
    }
    check(sd_bus_set_anonymous(bus, 1), "sd_bus_set_anonymous");
    check(sd_bus_start(bus), "sd_bus_start");
    return bus;
}

void runBus(sd_bus* bus) {
    for (;;) {
        const int done = sd_bus_process(bus, nullptr);
        if (done < 0) return;
        if (done == 0 && sd_bus_wait(bus, UINT64_MAX) < 0) return;
    }
}

// When an event set out; handed from thread to thread.
class Stamps {
public:
    void post(int64_t stamp) {
        const std::lock_guard guard(mLock);
        mStamps.push_back(stamp);
        mPosted.notify_one();
    }
    int64_t take() {
        std::unique_lock lock(mLock);
        mPosted.wait(lock, [this] { return !mStamps.empty(); });
        const int64_t stamp = mStamps.front();
        mStamps.pop_front();
        return stamp;
    }

private:
    std::mutex mLock;
    std::condition_variable mPosted;
    std::deque<int64_t> mStamps;
};

class SdBusShape final : public Shape {
public:
    explicit SdBusShape(SdBusOptions options)
        : mRequests(socketPair()), mPayload(options.payload, 0x5a), mHops(options.hops) {
        for (size_t i = 0; i < options.peers; ++i) mAnswers.push_back(socketPair());
        mServer = startProcess([this] { serve(); });
        close(mRequests[1]);
        mBus = openBus(mRequests[0], false);
        for (const auto& pair : mAnswers) {
            close(pair[1]);
            mReaders.emplace_back([this, fd = pair[0]] { readSignals(fd); });
        }
        call(1);
        arrivals.await(static_cast<uint32_t>(options.peers));
    }

    ~SdBusShape() override {
        stopProcess(mServer);
        for (std::thread& reader : mReaders) reader.join();
        sd_bus_unref(mBus);
    }

    void call(int32_t count) override {
        sd_bus_message* request = nullptr;
        sd_bus_message* reply = nullptr;
        check(sd_bus_message_new_method_call(mBus, &request, nullptr, PATH, INTERFACE, "Request"), "method");
        check(sd_bus_message_append(request, "i", count), "append");
        check(sd_bus_message_append_array(request, 'y', mPayload.data(), mPayload.size()), "append");
        check(sd_bus_call(mBus, request, 0, nullptr, &reply), "sd_bus_call");
        sd_bus_message_unref(request);
        sd_bus_message_unref(reply);
    }

private:
    static int onSignal(sd_bus_message* message, void* self, sd_bus_error*) {
        int64_t origin = 0;
        const void* bytes = nullptr;
        size_t size = 0;
        if (sd_bus_message_is_signal(message, INTERFACE, "Answer") <= 0) return 0;
        if (sd_bus_message_read(message, "x", &origin) < 0) return 0;
        if (sd_bus_message_read_array(message, 'y', &bytes, &size) < 0) return 0;
        static_cast<SdBusShape*>(self)->arrivals.note(origin);
        return 1;
    }

    void readSignals(int fd) {
        sd_bus* bus = openBus(fd, false);
        sd_bus_add_filter(bus, nullptr, onSignal, this);
        runBus(bus);
        sd_bus_unref(bus);
    }

    static int onRequest(sd_bus_message* message, void* self, sd_bus_error*) {
        int32_t count = 0;
        const void* bytes = nullptr;
        size_t size = 0;
        if (sd_bus_message_is_method_call(message, INTERFACE, "Request") <= 0) return 0;
        if (sd_bus_message_read(message, "i", &count) < 0) return 0;
        if (sd_bus_message_read_array(message, 'y', &bytes, &size) < 0) return 0;
        for (int32_t i = 0; i < count; ++i) static_cast<SdBusShape*>(self)->mStamps.front().post(nowNanos());
        return sd_bus_reply_method_return(message, "");
    }

    void sendAnswers() {
        std::vector<sd_bus*> buses;
        for (const auto& pair : mAnswers) buses.push_back(openBus(pair[1], true));
        for (;;) {
            const int64_t stamp = mStamps.back().take();
            for (sd_bus* bus : buses) sendAnswer(bus, stamp);
        }
    }

    void sendAnswer(sd_bus* bus, int64_t stamp) {
        sd_bus_message* signal = nullptr;
        check(sd_bus_message_new_signal(bus, &signal, PATH, INTERFACE, "Answer"), "signal");
        check(sd_bus_message_append(signal, "x", stamp), "append");
        check(sd_bus_message_append_array(signal, 'y', mPayload.data(), mPayload.size()), "append");
        check(sd_bus_send(bus, signal, nullptr), "sd_bus_send");
        check(sd_bus_flush(bus), "sd_bus_flush");
        sd_bus_message_unref(signal);
    }

    void serve() {
        close(mRequests[0]);
        for (const auto& pair : mAnswers) close(pair[0]);
        for (size_t i = 0; i < mHops; ++i) mStamps.emplace_back();
        for (size_t i = 0; i + 1 < mHops; ++i) {
            std::thread([this, i] {
                for (;;) mStamps[i + 1].post(mStamps[i].take());
            }).detach();
        }
        std::thread([this] { sendAnswers(); }).detach();
        sd_bus* bus = openBus(mRequests[1], true);
        sd_bus_add_filter(bus, nullptr, onRequest, this);
        runBus(bus);
        _exit(0);
    }

    const std::array<int, 2> mRequests;
    const std::vector<uint8_t> mPayload;
    const size_t mHops;
    std::vector<std::array<int, 2>> mAnswers;
    std::deque<Stamps> mStamps;
    sd_bus* mBus = nullptr;
    pid_t mServer = 0;
    std::vector<std::thread> mReaders;
};

constexpr uint32_t TURN = 100;

void takeTurn(const Subject& subject, std::vector<double>& samples) {
    subject.shape.arrivals.reset();
    for (uint32_t i = 1; i <= TURN; ++i) {
        const int64_t start = nowNanos();
        subject.shape.call(1);
        subject.shape.arrivals.await(i * subject.answers);
        samples.push_back(static_cast<double>(subject.shape.arrivals.lastNanos() - start));
    }
}

}  // namespace

pid_t startProcess(const std::function<void()>& function) {
    const pid_t parent = getpid();
    const pid_t pid = fork();
    if (pid < 0) fail("fork");
    if (pid != 0) return pid;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() == parent) function();
    _exit(0);
}

void stopProcess(pid_t pid) {
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
}

void inProcess(const std::function<void()>& function) {
    std::fflush(stdout);
    const pid_t pid = startProcess([&] {
        function();
        std::fflush(stdout);
    });
    int status = 0;
    if (waitpid(pid, &status, 0) == pid && status == 0) return;
    std::fprintf(stderr, "a process of the benchmark failed\n");
    std::exit(1);
}

Arrivals& newSharedArrivals() {
    void* memory = mmap(nullptr, sizeof(Arrivals), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) fail("mmap");
    return *new (memory) Arrivals;
}

void Arrivals::note(int64_t originNanos) {
    mLastNanos.store(nowNanos(), std::memory_order_relaxed);
    int64_t none = 0;
    mFirstOriginNanos.compare_exchange_strong(none, originNanos, std::memory_order_relaxed);
    const uint32_t count = mCount.fetch_add(1) + 1;
    const uint32_t wanted = mWanted.load();
    if (wanted != 0 && count >= wanted) futexWake(mCount);
}

void Arrivals::reset() {
    mCount = 0;
    mFirstOriginNanos = 0;
}

void Arrivals::await(uint32_t count) {
    mWanted.store(count);
    for (uint32_t seen = mCount.load(); seen < count; seen = mCount.load()) futexWait(mCount, seen);
    mWanted.store(0);
}

std::unique_ptr<Shape> makeBareShape(BareOptions options) {
    return std::make_unique<BareShape>(options);
}

std::unique_ptr<Shape> makeSdBusShape(SdBusOptions options) {
    return std::make_unique<SdBusShape>(options);
}

std::vector<Latency> measureLatency(const std::vector<Subject>& subjects, uint32_t calls) {
    std::vector<std::vector<double>> samples(subjects.size());
    for (uint32_t done = 0; done < calls; done += TURN) {
        for (size_t i = 0; i < subjects.size(); ++i) takeTurn(subjects[i], samples[i]);
    }
    std::vector<Latency> latencies;
    latencies.reserve(samples.size());
    for (const auto& each : samples) latencies.push_back({median(each), quantile(each, 0.95)});
    return latencies;
}

double measurePipelined(Shape& shape, uint32_t calls, uint32_t window) {
    shape.arrivals.reset();
    const int64_t start = nowNanos();
    for (uint32_t i = 0; i < calls; ++i) {
        if (i >= window) shape.arrivals.await(i - window + 1);
        shape.call(1);
    }
    shape.arrivals.await(calls);
    return static_cast<double>(nowNanos() - start) / calls;
}

}  // namespace bench
