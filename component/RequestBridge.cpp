#include "component/RequestBridge.h"

#include "component/Backlog.h"

#include <algorithm>

using mindroid::Object;
using mindroid::sp;

namespace hal {

namespace {

constexpr size_t MAX_WAITING_BYTES = 64 << 20;
// About what a request takes besides its payload.
constexpr size_t MIN_REQUEST_BYTES = 1024;

}  // namespace

sp<Object> enterRequests(size_t payloadSize) {
    static const sp<Backlog>& sRequests =
        *new sp<Backlog>(new Backlog(MAX_WAITING_BYTES, "RequestBridge", "too many requests are unanswered, refused"));
    return sRequests->enter(std::max(payloadSize, MIN_REQUEST_BYTES));
}

}  // namespace hal
