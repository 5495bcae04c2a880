#include "component/Backlog.h"

#include <mindroid/Log.h>

#include <utility>

using mindroid::Object;
using mindroid::sp;

namespace hal {

class Backlog::Place : public Object {
public:
    Place(sp<Backlog> backlog, size_t size) : mBacklog(std::move(backlog)), mSize(size) {}
    ~Place() override { mBacklog->mWaiting -= mSize; }

private:
    const sp<Backlog> mBacklog;
    const size_t mSize;
};

sp<Object> Backlog::enter(size_t size) {
    if (take(size)) return new Place(this, size);
    if (!mReported.exchange(true)) mindroid::Log::e(mTag, "%s", mLine);
    return nullptr;
}

bool Backlog::take(size_t size) {
    size_t waiting = mWaiting;
    do {
        if (waiting >= mLimit) return false;
    } while (!mWaiting.compare_exchange_weak(waiting, waiting + size));
    if (waiting == 0) mReported = false;
    return true;
}

}  // namespace hal
