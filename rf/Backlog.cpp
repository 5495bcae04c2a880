#include "rf/Backlog.h"

#include "rf/IccProxy.h"

#include <mindroid/Log.h>

namespace hal {

bool Backlog::enter(size_t size) {
    size_t waiting = mWaiting;
    do {
        if (waiting >= mLimit) {
            if (!mReported.exchange(true)) mindroid::Log::e(IccProxy::TAG, "%s", mLine);
            return false;
        }
    } while (!mWaiting.compare_exchange_weak(waiting, waiting + size));
    if (waiting == 0) mReported = false;
    return true;
}

}  // namespace hal
