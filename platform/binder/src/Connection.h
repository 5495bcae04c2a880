#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "Frame.h"
#include "Parcel.h"
#include "Poller.h"
#include "UniqueFd.h"

namespace binder {

class Session;

// A socket and what is half read from or half written to it. One thread at a time owns the reading side: a binder
// thread that serves it, the poller that watches it, or a caller that waits for a reply. The writing side belongs to
// the same owner, but on a control connection to whoever holds the session's send lock.
class Connection final : public Pollable {
public:
    enum class Role { Control, Call, Serve };
    enum class ReadResult { Frame, Again, Closed, Malformed };
    enum class WriteResult { Done, Queued, Full, Closed };

    Connection(UniqueFd fd, Role role, std::shared_ptr<Session> session)
        : mFd(std::move(fd)), mRole(role), mSession(std::move(session)) {}
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    [[nodiscard]] int fd() const override { return mFd.get(); }
    [[nodiscard]] Role role() const { return mRole; }
    [[nodiscard]] const std::shared_ptr<Session>& session() const { return mSession; }

    // The next frame, its data and offsets put into `parcel` and `offsets`. Waits for its beginning unless
    // `flags` is MSG_DONTWAIT, but for its rest only when it is a reply.
    [[nodiscard]] ReadResult read(FrameHeader& header, AParcel& parcel, std::vector<uint32_t>& offsets, int flags);
    [[nodiscard]] bool isMidFrame() const { return mBegin != mEnd; }
    // Gives the read buffer back while the connection is quiet.
    void shrink();

    using Bytes = std::basic_string_view<uint8_t>;
    // Waits until all is written; false when the connection is lost.
    [[nodiscard]] bool writeAll(Bytes bytes);
    // Never waits: the rest is queued for flush(), unless more than `limit` bytes were queued then.
    [[nodiscard]] WriteResult write(Bytes bytes, size_t limit);
    [[nodiscard]] WriteResult flush();

    // Ends it for both sides; its owner notices when it reads. Thread: any.
    void shutdown();

    void onReady(uint32_t interest) override;

    // Of the peer's own objects in the last reply: they stay referenced until the peer has read it.
    std::vector<ndk::SpAIBinder> replied;

private:
    [[nodiscard]] ReadResult takeFrame(FrameHeader& header, AParcel& parcel, std::vector<uint32_t>& offsets);
    void makeRoom();
    void dropBuffer();

    const UniqueFd mFd;
    const Role mRole;
    const std::shared_ptr<Session> mSession;

    std::unique_ptr<uint8_t[]> mIn;
    size_t mInCapacity = 0;
    size_t mBegin = 0;
    size_t mEnd = 0;

    std::vector<uint8_t> mOut;
    size_t mOutBegin = 0;
};

}  // namespace binder
