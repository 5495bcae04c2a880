#pragma once

#include <mindroid/Object.h>

#include <functional>

namespace mindroid {

class Message;

// A task without arguments.
class Runnable : public Object {
public:
    explicit Runnable(std::function<void()> task);
    // An empty task does nothing.
    virtual void run();

private:
    std::function<void()> mTask;
};

// What a registrant runs with the message that a notification made.
class MessageCallback : public Object {
public:
    explicit MessageCallback(std::function<void(const sp<Message>&)> callback);
    virtual void handleMessage(const sp<Message>& message);

private:
    std::function<void(const sp<Message>&)> mCallback;
};

// What a vote runs when it completes; see VoteBox.
class VoteCallback : public Object {
public:
    explicit VoteCallback(std::function<void(const sp<Object>&)> callback);
    virtual void onVoteComplete(const sp<Object>& result);

private:
    std::function<void(const sp<Object>&)> mCallback;
};

// Runs tasks somewhere else. Both operations: any thread.
class Executor : public Object {
public:
    virtual void execute(const sp<Runnable>& task) = 0;
    // Drops every pending run of the task; a run under way goes on.
    virtual void cancel(const sp<Runnable>& task) = 0;
};

}  // namespace mindroid
