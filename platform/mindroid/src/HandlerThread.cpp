#include <mindroid/HandlerThread.h>

#include <pthread.h>

#include <future>
#include <utility>

#include <mindroid/Looper.h>

namespace mindroid {

namespace {

// The most that the system keeps of a thread's name.
constexpr size_t kMaxNameLength = 15;

void run(const std::string& name, std::promise<sp<Looper>> looper) {
    pthread_setname_np(pthread_self(), name.c_str());
    Looper::prepare();
    looper.set_value(Looper::myLooper());
    Looper::loop();
}

}  // namespace

HandlerThread::HandlerThread(std::string name) : mName(std::move(name), 0, kMaxNameLength) {}

HandlerThread::~HandlerThread() {
    quit();
    if (mThread.get_id() == std::this_thread::get_id()) {
        mThread.detach();
    } else {
        join();
    }
}

bool HandlerThread::start() {
    if (getLooper() != nullptr) return false;
    std::promise<sp<Looper>> promise;
    std::future<sp<Looper>> looper = promise.get_future();
    mThread = std::thread(run, mName, std::move(promise));
    const std::lock_guard lock(mLock);
    mLooper = looper.get();
    return true;
}

sp<Looper> HandlerThread::getLooper() const {
    const std::lock_guard lock(mLock);
    return mLooper;
}

void HandlerThread::quit() {
    const sp<Looper> looper = getLooper();
    if (looper != nullptr) looper->quit();
}

void HandlerThread::join() {
    if (mThread.joinable()) mThread.join();
}

}  // namespace mindroid
