#include <mindroid/HandlerThread.h>

#include <mindroid/Log.h>

#include <pthread.h>

#include <chrono>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

namespace mindroid {

namespace {

constexpr char TAG[] = "HandlerThread";

// The most that the system keeps of a thread's name.
constexpr size_t MAX_NAME_LENGTH = 15;

// A thread that the system refuses is tried again, for a second in all.
constexpr int MAX_TRIES = 10;
constexpr std::chrono::milliseconds RETRY_TIME{100};

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
    std::string refusal;
    for (int tries = 0; tries < MAX_TRIES; ++tries) {
        try {
            mThread = std::thread(run, mName, mLooper);
            return true;
        } catch (const std::system_error& error) {
            refusal = error.what();
            std::this_thread::sleep_for(RETRY_TIME);
        }
    }
    Log::e(TAG, "thread %s can't be started: %s", mName.c_str(), refusal.c_str());
    mLooper->quit();
    return false;
}

}  // namespace mindroid
