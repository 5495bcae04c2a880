#include "Receiver.h"

#include <sys/epoll.h>
#include <sys/socket.h>

#include <algorithm>
#include <limits>

#include "CallContext.h"
#include "LocalBinder.h"
#include "RemoteBinder.h"
#include "Session.h"
#include "ThreadPool.h"

namespace binder {
namespace {

// Reads that time out before a quiet connection goes to the poller: about a second.
constexpr int kQuietReads = 50;

// Of the peer's objects in a reply: a proxy that dies first would give them back before the peer knows them.
std::vector<ndk::SpAIBinder> peersObjects(AParcel& parcel) {
    std::vector<ndk::SpAIBinder> objects;
    for (const auto& each : parcel.objects()) {
        if (each.binder.get()->remote() != nullptr) objects.push_back(each.binder);
    }
    return objects;
}

class Receiver {
public:
    Receiver(const std::shared_ptr<Connection>& connection, Serving& serving)
        : mConnection(connection), mSession(*connection->session()), mServing(serving) {}

    // Each returns false when the connection is no longer this thread's.
    bool handle(const FrameHeader& header, AParcel& in, const std::vector<uint32_t>& offsets) {
        if (mSession.hasFailed()) return close();  // what it sent behind its breach is not run
        if (!mSession.objects().receive(in, offsets, mConnection->session()))
            return refuse("sent an object it cannot mean");
        return mConnection->role() == Connection::Role::Control ? handleControl(header, in) : handleCall(header, in);
    }

    bool refuse(const char* reason) {
        mSession.fail(reason);
        return close();
    }

    bool close() {
        if (mConnection->role() == Connection::Role::Control) {
            mSession.end();
        } else {
            mSession.remove(mConnection);
        }
        return false;
    }

private:
    bool handleControl(const FrameHeader& header, AParcel& in) {
        switch (header.kind) {
            case FrameKind::Oneway:
                return handleOneway(header, in);
            case FrameKind::Release:
                return handleRelease(header);
            case FrameKind::OpenReverse:
                if (!mSession.isOpener()) return refuse("asked the wrong side for a connection");
                return runLent([&] { mSession.openReverse(); });
            default:
                return refuse("sent a call on its control connection");
        }
    }

    bool handleOneway(const FrameHeader& header, AParcel& in) {
        ndk::SpAIBinder target = mSession.objects().exported(header.target);
        if (target.get() == nullptr) return refuse("called an object it does not have");
        LocalBinder& object = *target.get()->local();
        const bool isMine = object.enterOneway(mConnection->session(), header.code, in);
        return runLent([&] {
            if (isMine) object.runOneways(mSession, header.code, in);
            in.reset();
            target.set(nullptr);
        });
    }

    bool handleRelease(const FrameHeader& header) {
        ndk::SpAIBinder dropped;
        if (!mSession.objects().release(header.target, header.code, dropped))
            return refuse("gives back references it does not have");
        return runLent([&] { dropped.set(nullptr); });
    }

    // For what may block: users' code, destructors included, and the way to another process. Another thread may read
    // the next frame meanwhile, so everything that the order of frames decides is done before.
    template <typename Action>
    bool runLent(Action action) {
        mServing.lend(mConnection);
        action();
        return mServing.reclaim() && !mSession.park(mConnection);
    }

    bool handleCall(const FrameHeader& header, const AParcel& in) {
        if (header.kind != FrameKind::Call) return refuse("sent something else than a call");
        const ndk::SpAIBinder target = mSession.objects().exported(header.target);
        if (target.get() == nullptr) return refuse("called an object it does not have");
        AParcel out;
        binder_status_t status = STATUS_OK;
        {
            CallContext context(mSession.peer().pid, mSession.peer().uid);
            status = target.get()->local()->dispatch(&mSession, header.code, in, out);
        }
        return reply(status, out);
    }

    bool reply(binder_status_t status, AParcel& out) {
        const bool fits = out.size() + out.objects().size() * sizeof(uint32_t) <= kMaxCall;
        if (status == STATUS_OK) status = fits ? mSession.objects().pack(out, mSession) : STATUS_FAILED_TRANSACTION;
        if (status != STATUS_OK) out.reset();
        mConnection->replied = peersObjects(out);
        // Once it is queued the connection is the poller's.
        return mConnection->write(out.frame(FrameKind::Reply, 0, static_cast<uint32_t>(status)),
                                  std::numeric_limits<size_t>::max()) != Connection::WriteResult::Queued;
    }

    const std::shared_ptr<Connection>& mConnection;
    Session& mSession;
    Serving& mServing;
};

}  // namespace

void serve(std::shared_ptr<Connection> connection, Serving& serving) {
    ThreadPool& pool = ThreadPool::instance();
    Receiver receiver(connection, serving);
    FrameHeader header{};
    std::vector<uint32_t> offsets;
    int quiet = 0;
    for (;;) {
        AParcel in;
        const bool linger = pool.mayLinger();
        switch (connection->read(header, in, offsets, linger ? 0 : MSG_DONTWAIT)) {
            case Connection::ReadResult::Frame:
                quiet = 0;
                if (!receiver.handle(header, in, offsets)) return;
                if (pool.isContended()) return pool.enqueue(std::move(connection));
                break;
            case Connection::ReadResult::Again:
                if (linger && !connection->isMidFrame() && ++quiet < kQuietReads) break;
                connection->shrink();
                return Poller::instance().arm(*connection, EPOLLIN);
            case Connection::ReadResult::Closed:
                receiver.close();
                return;
            case Connection::ReadResult::Malformed:
                receiver.refuse("sent a frame that makes no sense");
                return;
        }
    }
}

}  // namespace binder
