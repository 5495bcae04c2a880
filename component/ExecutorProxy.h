#pragma once

#include <mindroid/Handler.h>
#include <mindroid/HandlerThread.h>
#include <mindroid/Runnable.h>

namespace hal {

// Runs tasks on a handler thread, one at a time, in the order they were posted.
class ExecutorProxy : public mindroid::Executor {
public:
    static constexpr const char* TAG = "ExecutorProxy";

    // The thread must have been started.
    explicit ExecutorProxy(const mindroid::sp<mindroid::HandlerThread>& thread);
    ~ExecutorProxy() override;

    // Runs the task once for each call, after what is queued already. Thread: any.
    void execute(const mindroid::sp<mindroid::Runnable>& task) override;
    // Drops every pending run of the task; a run under way goes on. Thread: any.
    void cancel(const mindroid::sp<mindroid::Runnable>& task) override;

private:
    mindroid::sp<mindroid::HandlerThread> mThread;
    mindroid::sp<mindroid::Handler> mHandler;
};

}  // namespace hal
