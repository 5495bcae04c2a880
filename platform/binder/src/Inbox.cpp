#include "Inbox.h"

#include "LocalBinder.h"
#include "Log.h"
#include "Session.h"
#include "ThreadPool.h"

#include <sys/socket.h>

#include <new>
#include <utility>

namespace binder {
namespace {

// Reported once for what arrived, so that several threads may be at it one after the other.
constexpr uint32_t INCOMING = EPOLLIN | EPOLLRDHUP | EPOLLET;
// Reported at once: the peer reads nothing here but acks, so there is always room to write.
constexpr uint32_t AT_ONCE = INCOMING | EPOLLOUT;
// Objects that a thread serves before it looks at other connections.
constexpr int MAX_TURNS = 32;
constexpr const char* NO_MEMORY = "lost a oneway call, for which there is no memory";

uint64_t costOf(size_t parcelSize) {
    return sizeof(FrameHeader) + parcelSize + ONEWAY_OVERHEAD;
}

}  // namespace

// What a thread does after it let go of the channel.
struct Inbox::Work {
    const std::shared_ptr<Session>& session;
    std::vector<ndk::SpAIBinder> dropped;
    ndk::SpAIBinder target;                     // whose oneway calls are this thread's to run
    OnewayCall call{nullptr, 0, AParcel(), 0};  // the first of them
    const char* breach = nullptr;
    bool isClosed = false;
    bool isMore = false;  // than this thread may take with it

    explicit Work(const std::shared_ptr<Session>& peer) : session(peer) {}

    bool refuse(const char* reason) {
        breach = reason;
        return false;
    }
    void run() {
        dropped.clear();
        if (target.get() != nullptr) target.get()->local()->runOneways(call);
    }
};

bool Inbox::start() {
    const std::shared_ptr<Inbox> self(mSession.shared_from_this(), this);
    return ThreadPool::instance().poller().add(self, INCOMING, mKey);
}

void Inbox::remove() {
    ThreadPool::instance().poller().remove(mKey);
}

void Inbox::end() {
    ::shutdown(mFd.get(), SHUT_RDWR);
}

void Inbox::onRun(size_t size) {
    const uint64_t cost = costOf(size);
    const Ack run = mRun.fetch_add(cost, std::memory_order_relaxed) + cost;
    if (run / ACK_INTERVAL == (run - cost) / ACK_INTERVAL) return;
    // One that the peer has no room for is made up for by the next.
    (void)sendSome(mFd, Bytes(reinterpret_cast<const uint8_t*>(&run), sizeof(run)), MSG_DONTWAIT);
}

void Inbox::onReady(uint32_t events) {
    const auto session = mSession.shared_from_this();
    FrameBuffer::Scratch scratch;
    {
        const device::MutexLock lock(mLock);
        mBuffer.wake((events & (EPOLLRDHUP | EPOLLHUP | EPOLLERR)) != 0);
    }
    for (int turn = 0; turn < MAX_TURNS; ++turn) {
        Work work(session);
        next(scratch, work);
        if (work.breach != nullptr) session->end(work.breach);
        work.run();
        if (work.isClosed || work.breach != nullptr) return session->bury();
        if (!work.isMore) return;
    }
    const device::MutexLock lock(mLock);
    handOn(true);
}

void Inbox::onNoMemory() {
    mSession.end(NO_MEMORY);
}

void Inbox::next(FrameBuffer::Scratch& scratch, Work& work) {
    const device::MutexLock lock(mLock);
    try {
        takeAll(scratch, work);
        mBuffer.keep();
    } catch (const std::bad_alloc&) {
        mBuffer.lose();
        work.breach = NO_MEMORY;
    }
}

void Inbox::takeAll(FrameBuffer::Scratch& scratch, Work& work) {
    while (!mSession.hasFailed()) {
        switch (mBuffer.fill(scratch, MSG_DONTWAIT)) {
            case FrameBuffer::Result::Frame:
                if (!take(work)) return;
                break;
            case FrameBuffer::Result::Again:
                return handOn(false);
            case FrameBuffer::Result::Malformed:
                work.breach = "sent a frame that makes no sense";
                return;
            case FrameBuffer::Result::Closed:
                work.isClosed = true;
                return;
        }
    }
    work.isClosed = true;
}

// Lets another thread go on with what is left in the buffer, or no longer.
void Inbox::handOn(bool isMore) {
    if (!isMore && !mIsHandedOn) return;
    mIsHandedOn = isMore;
    if (ThreadPool::instance().poller().arm(mKey, isMore ? AT_ONCE : INCOMING)) return;
    warnLost(mSession.peer().pid);
    mSession.end();
}

// False when this thread has to let go of the channel first.
bool Inbox::take(Work& work) {
    switch (mBuffer.header().kind) {
        case FrameKind::Oneway:
            return takeOneway(work);
        case FrameKind::Release:
            return takeRelease(work);
        default:
            return work.refuse("sent a call on its channel");
    }
}

bool Inbox::takeOneway(Work& work) {
    ndk::SpAIBinder target = mSession.objects().exported(mBuffer.header().target);
    if (target.get() == nullptr) return work.refuse("called an object it does not have");
    const bool isFirst = work.target.get() == nullptr;
    if (!isFirst && work.target != target) {
        work.isMore = true;
        handOn(true);
        return false;
    }
    OnewayCall behind{nullptr, 0, AParcel(), 0};
    OnewayCall& call = isFirst ? work.call : behind;
    call.session = work.session;
    call.code = mBuffer.header().code;
    mBuffer.take(call.in);
    if (!mSession.objects().receive(call.in, work.session)) return work.refuse("sent an object it cannot mean");
    mTaken += costOf(call.in.transportSize());
    call.place = mTaken;
    if (mTaken - mRun.load(std::memory_order_relaxed) > MAX_ONEWAY_WAITING)
        return work.refuse("sends too many oneway calls");
    if (target.get()->local()->enterOneway(call)) work.target = std::move(target);
    return true;
}

bool Inbox::takeRelease(Work& work) {
    const FrameHeader header = mBuffer.header();
    AParcel nothing;
    mBuffer.take(nothing);
    ndk::SpAIBinder dropped;
    if (!mSession.objects().release(header.target, header.code, dropped))
        return work.refuse("gives back references it does not have");
    if (dropped.get() != nullptr) work.dropped.push_back(std::move(dropped));
    return true;
}

}  // namespace binder
