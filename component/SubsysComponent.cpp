#include "component/SubsysComponent.h"

using mindroid::Message;
using mindroid::sp;

namespace hal {

SubsysComponent::SubsysComponent(int32_t type) : Component(0, type), mVoteBox(new mindroid::VoteBox()) {}

SubsysComponent::~SubsysComponent() = default;

void SubsysComponent::handleMessage(const sp<Message>& message) {
    Component::handleMessage(message);
}

void SubsysComponent::sendResponse(const sp<Message>& reply, SUBSYS_Errno error) {
    sendReply(reply, static_cast<int32_t>(error));
}

}  // namespace hal
