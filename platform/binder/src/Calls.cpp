#include "Calls.h"

#include "CallContext.h"
#include "Log.h"
#include "Session.h"

#include <new>
#include <utility>

namespace binder {

binder_status_t Calls::call(const std::shared_ptr<Session>& session, uint32_t target, uint32_t code, AParcel& parcel) {
    const Bytes frame = parcel.frame(FrameKind::Call, target, code);
    binder_status_t status = STATUS_OK;
    if (Stream* const waiting = CallContext::streamOf(*session)) {
        return waiting->send(frame) && waiting->await(session, parcel, status) ? status : session->onLost();
    }
    std::unique_ptr<Stream> stream;
    status = acquire(*session, stream);
    if (status != STATUS_OK) {
        session->objects().unpack(parcel);
        return status;
    }
    bool isAnswered = false;
    try {
        isAnswered = send(*stream, frame) && stream->await(session, parcel, status);
    } catch (...) {
        drop(std::move(stream));
        throw;
    }
    if (!isAnswered) {
        drop(std::move(stream));
        return session->onLost();
    }
    giveBack(std::move(stream));
    return status;
}

bool Calls::send(Stream& stream, Bytes frame) {
    if (frame.size() <= LARGE_CALL) return stream.send(frame);
    const device::MutexLock lock(mLargeLock);
    return stream.send(frame);
}

binder_status_t Calls::acquire(Session& session, std::unique_ptr<Stream>& stream) {
    device::MutexLock lock(mLock);
    // Nothing that follows may fail where a connection is already open.
    mUsed.reserve(MAX_CALLS);
    mIdle.reserve(MAX_CALLS);
    if (mIdle.empty() && mUsed.size() + mOpening < MAX_CALLS && !mEnded) {
        ++mOpening;
        lock.unlock();
        stream = open(session);
        lock.lock();
        --mOpening;
        // Others may have hoped for this one.
        if (stream == nullptr) mChanged.notify_all();
    }
    // Another thread gives its connection back.
    while (stream == nullptr && mIdle.empty() && mUsed.size() + mOpening != 0 && !mEnded) lock.wait(mChanged);
    if (mEnded) return STATUS_DEAD_OBJECT;
    if (stream == nullptr && mIdle.empty()) return STATUS_FAILED_TRANSACTION;
    if (stream == nullptr) {
        stream = std::move(mIdle.back());
        mIdle.pop_back();
    }
    mUsed.push_back(stream.get());
    return STATUS_OK;
}

std::unique_ptr<Stream> Calls::open(Session& session) try {
    auto [own, peers] = socketPair();
    const pid_t pid = session.peer().pid;
    if (own.isValid() && session.control().pass(peers)) return std::make_unique<Stream>(std::move(own), pid);
    warnLost(pid);
    return nullptr;
} catch (const std::bad_alloc&) {
    warn("a connection of process %d is lost: no memory", session.peer().pid);
    return nullptr;
}

void Calls::giveBack(std::unique_ptr<Stream> stream) {
    const device::MutexLock lock(mLock);
    std::erase(mUsed, stream.get());
    if (mEnded) return;
    mIdle.push_back(std::move(stream));
    mChanged.notify_one();
}

void Calls::drop(std::unique_ptr<Stream> stream) {
    const device::MutexLock lock(mLock);
    std::erase(mUsed, stream.get());
    mChanged.notify_all();
}

void Calls::end() {
    std::vector<std::unique_ptr<Stream>> idle;  // destroyed without the lock
    const device::MutexLock lock(mLock);
    mEnded = true;
    idle.swap(mIdle);
    for (const Stream* each : mUsed) shutdown(each->fd().get(), SHUT_RDWR);
    mChanged.notify_all();
}

}  // namespace binder
