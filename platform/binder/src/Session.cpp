#include "Session.h"

#include "DeathRecipient.h"
#include "Deferral.h"
#include "IBinder.h"
#include "Log.h"
#include "Mark.h"
#include "RemoteBinder.h"
#include "ServedConnection.h"

#include <device/Mutex.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <utility>

namespace binder {
namespace {

struct Sessions {
    device::Mutex lock;
    std::vector<std::shared_ptr<Session>> all SUBSYS_GUARDED_BY(lock);
};

Sessions& sessions() {
    static auto* const instance = new Sessions;  // outlives the threads that still use it at exit
    return *instance;
}

Bytes bytesOf(const FrameHeader& header) {
    return {reinterpret_cast<const uint8_t*>(&header), sizeof(header)};
}

}  // namespace

Session::Session(const Peer& peer, UniqueFd control, UniqueFd in, UniqueFd out, Charge charge)
    : mPeer(peer),
      mCharge(std::move(charge)),
      mOut(std::make_shared<Outbox>(std::move(out), peer.pid)),
      mIn(*this, std::move(in), peer.pid),
      mControl(*this, std::move(control)) {}

std::shared_ptr<Session> Session::open(const Peer& peer, UniqueFd control, UniqueFd in, UniqueFd out) {
    auto charge = Charge::take(peer.pid, Cost::Session);
    if (!charge) {
        errno = EUSERS;
        return nullptr;
    }
    auto session =
        std::make_shared<Session>(peer, std::move(control), std::move(in), std::move(out), std::move(*charge));
    {
        const device::MutexLock lock(sessions().lock);
        sessions().all.push_back(session);
    }
    if (session->mControl.start() && session->mIn.start()) return session;
    const int reason = errno;
    session->end();
    errno = reason;
    return nullptr;
}

std::vector<std::shared_ptr<Session>> Session::all() {
    const device::MutexLock lock(sessions().lock);
    return sessions().all;
}

std::shared_ptr<Session> Session::find(const Key& process, pid_t pid) {
    Sessions& known = sessions();
    const device::MutexLock lock(known.lock);
    for (const auto& each : known.all) {
        if (each->mPeer.process == process && each->mPeer.pid == pid) return each;
    }
    return nullptr;
}

binder_status_t Session::call(uint32_t target, uint32_t code, AParcel& parcel) {
    if (parcel.transportSize() > MAX_CALL) return STATUS_FAILED_TRANSACTION;
    if (!isAlive()) return STATUS_DEAD_OBJECT;
    const binder_status_t packed = mObjects.pack(parcel, *this);
    if (packed != STATUS_OK) return packed;
    flush();
    const CallSection section("call to ", mPeer.pid, code, parcel.transportSize());
    return mCalls.call(shared_from_this(), target, code, parcel);
}

binder_status_t Session::post(uint32_t target, uint32_t code, AParcel& parcel) {
    if (parcel.transportSize() > MAX_ONEWAY) return STATUS_FAILED_TRANSACTION;
    if (!isAlive()) return STATUS_DEAD_OBJECT;
    binder_status_t status = mObjects.pack(parcel, *this);
    if (status != STATUS_OK) return status;
    status = mOut->post(parcel.frame(FrameKind::Oneway, target, code), mayDefer(mOut));
    if (status != STATUS_OK) mObjects.unpack(parcel);
    if (status == STATUS_DEAD_OBJECT) end();
    parcel.reset();
    return status;
}

void Session::flushAll() {
    for (const auto& each : all()) each->flush();
}

void Session::release(uint32_t target, uint64_t count) {
    constexpr uint64_t MOST = std::numeric_limits<uint32_t>::max();
    while (count != 0 && isAlive()) {
        const auto part = static_cast<uint32_t>(std::min(count, MOST));
        count -= part;
        if (!mOut->send(bytesOf({sizeof(FrameHeader), FrameKind::Release, 0, target, part}))) end();
    }
}

binder_status_t Session::onLost() {
    if (isAlive() && !mOut->isPeerGone(DEATH_TIME)) return STATUS_FAILED_TRANSACTION;
    end();
    return STATUS_DEAD_OBJECT;
}

bool Session::addServed(const std::shared_ptr<ServedConnection>& connection) {
    const device::MutexLock lock(mServedLock);
    if (!isAlive()) return false;
    mServed.push_back(connection);
    return true;
}

void Session::removeServed(const ServedConnection& connection) {
    const device::MutexLock lock(mServedLock);
    std::erase_if(mServed, [&](const auto& each) {
        const auto held = each.lock();
        return held == nullptr || held.get() == &connection;
    });
}

uint32_t Session::waitingCalls() {
    const device::MutexLock lock(mServedLock);
    const auto waits = [](const auto& each) {
        const auto connection = each.lock();
        return connection != nullptr && hasUnread(connection->fd());
    };
    const auto calls = std::count_if(mServed.begin(), mServed.end(), waits);
    return static_cast<uint32_t>(calls) + (hasUnread(mIn.fd()) ? 1 : 0);
}

void Session::end(const char* breach) {
    if (!mAlive.exchange(false)) return;
    mCharge.reset();
    if (breach != nullptr) {
        mFailed = true;
        warn("process %d %s: its connections are closed", mPeer.pid, breach);
    }
    {
        const auto self = shared_from_this();
        const device::MutexLock lock(sessions().lock);
        std::erase(sessions().all, self);
    }
    mControl.end();
    mOut->end();
    mIn.end();
    mCalls.end();
    std::vector<std::weak_ptr<ServedConnection>> served;
    {
        const device::MutexLock lock(mServedLock);
        served.swap(mServed);
    }
    for (const auto& each : served) {
        if (const auto connection = each.lock()) connection->end();
    }
}

void Session::bury() noexcept {  // NOLINT(bugprone-exception-escape): it ends the process, see the header
    if (mBuried.exchange(true)) return;
    end();
    mIn.remove();
    for (const ndk::SpAIBinder& proxy : mObjects.close()) sendObituaries(*proxy.get()->remote());
}

}  // namespace binder
