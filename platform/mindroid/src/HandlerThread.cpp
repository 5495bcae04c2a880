#include <mindroid/HandlerThread.h>

#include <mindroid/Log.h>

#include <pthread.h>

#include <system_error>
#include <utility>

namespace mindroid {

namespace {

constexpr char TAG[] = "HandlerThread";

// The most that the system keeps of a thread's name.
constexpr size_t MAX_NAME_LENGTH = 15;

}  // namespace

HandlerThread::HandlerThread(std::string name) : mName(std::move(name), 0, MAX_NAME_LENGTH), mLooper(new Looper()) {}

HandlerThread::~HandlerThread() {
    mLooper->quit();
    if (mThread.get_id() == std::this_thread::get_id()) {
        mThread.detach();
    } else if (mThread.joinable()) {
        mThread.join();
    }
}

void HandlerThread::run(const std::string& name, const sp<Looper>& looper) {
    pthread_setname_np(pthread_self(), name.c_str());
    Looper::bind(looper);
    Looper::loop();
}

bool HandlerThread::start() {
    if (std::exchange(mStarted, true)) return false;
    try {
        mThread = std::thread(run, mName, mLooper);
        return true;
    } catch (const std::system_error& error) {
        Log::e(TAG, "thread %s can't be started: %s", mName.c_str(), error.what());
        mLooper->quit();
        return false;
    }
}

}  // namespace mindroid
