#pragma once

#include "component/Boxing.h"

#include <mindroid/Handler.h>
#include <mindroid/Message.h>
#include <mindroid/RegistrantList.h>
#include <mindroid/Runnable.h>
#include <mindroid/VoteBox.h>

#include <cstdint>
#include <memory>
#include <string>

namespace hal {

class ModuleManager;

// How a listener registers for an event of a component or of a proxy: each event runs the callback on the handler's
// looper, with a message whose obj carries the event's record. A mindroid::Registrant made of the three does that.
using Registration = void(const mindroid::sp<mindroid::Handler>& handler,
                          const mindroid::sp<mindroid::MessageCallback>& callback,
                          const mindroid::sp<mindroid::Object>& obj);

// A unit of device logic, served by a handler on the looper of the thread that constructs it. A request hands it a
// reply message; the component answers by filling that message and sending it back, at once or later, from any thread.
//
// A reply carries its error code in arg2 (0 is success) and its boxed value in obj; what and arg1 are never touched.
// The component is trusted to answer a message once, with the box that the request names: nothing is checked.
//
// Component libraries are built apart from this one: the order of fields and of virtual operations is shared with them.
class Component : public mindroid::Handler {
public:
    static constexpr const char* TAG = "Component";
    // A proxy reports its state; obj is an Integer, non-zero meaning up.
    static constexpr int32_t MSG_PROXY_STATE_CHANGED = 2000;

    static constexpr int32_t VOTE_MODE_TICKET = 1;

    // VOTE_MODE_TICKET gives the component a ticket in the readiness vote. The type is what lookups ask for.
    Component(int32_t voteMode, int32_t type);
    ~Component() override;

    // Any other message than MSG_PROXY_STATE_CHANGED is logged and dropped. Thread: looper.
    void handleMessage(const mindroid::sp<mindroid::Message>& message) override;
    // Start-up, in this order. A subclass that overrides init calls it. Thread: looper.
    virtual void init(int32_t instanceId);
    virtual void postInit(int32_t phase);

    // Deliberate: only the first call counts, for owners that give a component its id before start-up. Thread: looper.
    void setInstanceId(int32_t instanceId);
    // Initialises the component's modules. Thread: looper.
    void loadModules();
    // Tells the listeners the new state and feeds the ticket with it. Thread: looper.
    void handleProxyStateChanged(const mindroid::sp<mindroid::Message>& message);

    // Thread: any.
    [[nodiscard]] int32_t getType() const { return mType; }
    [[nodiscard]] int32_t getInstanceId() const { return mInstanceId; }
    [[nodiscard]] int32_t getVoteMode() const { return mVoteMode; }
    [[nodiscard]] const mindroid::sp<mindroid::Ticket>& getTicket() const { return mTicket; }

    // Answers with a value of one of the types in Boxing.h, whatever the error is. Thread: any.
    template <typename... Value>
    static void sendResponse(const mindroid::sp<mindroid::Message>& reply, int32_t error, const Value&... value) {
        reply->obj = box(value...);
        sendReply(reply, error);
    }
    // Answers without a value; obj is left as it was. Thread: any.
    void sendErrorResponse(const mindroid::sp<mindroid::Message>& reply, int32_t error);

protected:
    static void sendReply(const mindroid::sp<mindroid::Message>& reply, int32_t error);

    mindroid::sp<mindroid::Ticket> mTicket;
    int32_t mVoteMode;
    int32_t mType;
    bool mInstanceIdSet = false;
    std::unique_ptr<ModuleManager> mModuleManager;
    // Kept, empty, for the layout.
    std::string mReserved;
    int32_t mInstanceId = 0;
    // The listeners of proxy-state changes.
    mindroid::sp<mindroid::RegistrantList> mRegistrants;

    // Deliberate: it stays at the component that ran init last. For component libraries; nothing here follows it.
    static Component* mHandler;
};

}  // namespace hal
