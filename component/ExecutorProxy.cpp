#include "component/ExecutorProxy.h"

#include <mindroid/Looper.h>
#include <mindroid/Message.h>

namespace hal {

ExecutorProxy::ExecutorProxy(const mindroid::sp<mindroid::HandlerThread>& thread)
    : mThread(thread), mHandler(new mindroid::Handler(thread->getLooper())) {}

ExecutorProxy::~ExecutorProxy() = default;

void ExecutorProxy::execute(const mindroid::sp<mindroid::Runnable>& task) {
    mHandler->obtainMessage(task)->sendToTarget();
}

void ExecutorProxy::cancel(const mindroid::sp<mindroid::Runnable>& task) {
    mHandler->removeCallbacks(task);
}

}  // namespace hal
