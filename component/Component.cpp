#include "component/Component.h"

#include "component/ModuleManager.h"

#include <mindroid/Log.h>

using mindroid::Integer;
using mindroid::Log;
using mindroid::Message;
using mindroid::sp;

namespace hal {

Component* Component::mHandler = nullptr;

Component::Component(int32_t voteMode, int32_t type)
    : mTicket(voteMode == VOTE_MODE_TICKET ? new mindroid::Ticket() : nullptr),
      mVoteMode(voteMode),
      mType(type),
      mModuleManager(std::make_unique<ModuleManager>()),
      mRegistrants(new mindroid::RegistrantList()) {}

Component::~Component() {
    // Modules may use the rest of the component to their end.
    mModuleManager.reset();
}

void Component::init(int32_t instanceId) {
    mInstanceId = instanceId;
    mHandler = this;
}

void Component::postInit(int32_t /*phase*/) {}

void Component::setInstanceId(int32_t instanceId) {
    if (mInstanceIdSet) return;
    mInstanceId = instanceId;
    mInstanceIdSet = true;
    mModuleManager->setInstanceId(instanceId);
}

void Component::loadModules() {
    if (mModuleManager) mModuleManager->initModules();
}

void Component::handleMessage(const sp<Message>& message) {
    if (!message) {
        Log::e(TAG, "can't handle null msg");
        return;
    }
    Log::d(TAG, "handleMessage msg is %d, mType %d", message->what, mType);
    if (message->what != MSG_PROXY_STATE_CHANGED) {
        Log::w(TAG, "unknown msg id %d received", message->what);
        return;
    }
    handleProxyStateChanged(message);
}

void Component::handleProxyStateChanged(const sp<Message>& message) {
    if (!message || !message->obj) return;
    mRegistrants->notify(message->obj);
    if (!mTicket) return;
    const int32_t state = static_cast<const Integer*>(message->obj.get())->value();
    Log::d(TAG, "handleProxyStateChanged update tick for type %d state is %d", mType, state);
    mTicket->updateState(state != 0);
}

void Component::sendErrorResponse(const sp<Message>& reply, int32_t error) {
    sendReply(reply, error);
}

void Component::sendReply(const sp<Message>& reply, int32_t error) {
    reply->arg2 = error;
    reply->sendToTarget();
}

}  // namespace hal
