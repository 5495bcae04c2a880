// A library whose static initialiser starts a thread and waits for what it runs, for two seconds at most.

#include <mindroid/Handler.h>
#include <mindroid/HandlerThread.h>
#include <mindroid/Looper.h>

#include <chrono>
#include <future>

namespace {

bool runOnNewThread() {
    static std::promise<void> sRun;
    const mindroid::sp<mindroid::HandlerThread> thread = new mindroid::HandlerThread();
    thread->start();
    const mindroid::sp<mindroid::Handler> handler = new mindroid::Handler(thread->getLooper());
    handler->obtainMessage(new mindroid::Runnable([] { sRun.set_value(); }))->sendToTarget();
    if (sRun.get_future().wait_for(std::chrono::seconds(2)) == std::future_status::ready) return true;
    new mindroid::sp<mindroid::HandlerThread>(thread);  // never joined, which would wait as well
    return false;
}

}  // namespace

extern "C" bool hasRun;
bool hasRun = runOnNewThread();
