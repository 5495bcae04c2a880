#include "component/ComponentManager.h"

#include <mindroid/Log.h>

#include <algorithm>

using mindroid::Log;
using mindroid::Object;
using mindroid::sp;

namespace hal {

namespace {

template <typename Matches>
sp<Component> findFirst(const std::vector<sp<Component>>& components, Matches matches) {
    const auto found = std::find_if(components.begin(), components.end(),
                                    [&](const auto& component) { return component && matches(*component); });
    return found == components.end() ? nullptr : *found;
}

}  // namespace

ComponentManager* ComponentManager::sInstance = nullptr;

ComponentManager* ComponentManager::getInstance() {
    if (sInstance == nullptr) sInstance = new ComponentManager();
    return sInstance;
}

ComponentManager::ComponentManager() : mRegistrants(new mindroid::RegistrantList()) {}

void ComponentManager::add(const sp<Component>& component) {
    // A null pointer is listed like any other value; the passes and lookups go round it.
    if (std::find(mComponents.begin(), mComponents.end(), component) != mComponents.end()) return;
    mComponents.push_back(component);
}

void ComponentManager::init(int32_t instanceId) {
    mHandler = new ComponentHandler();
    mVoteBox = new mindroid::VoteBox();
    mVoteBox->setCallback(new mindroid::VoteCallback([this](const sp<Object>& result) {
        Log::d(TAG, "all components are ready");
        mRegistrants->notify(result);
    }));
    initComponents(instanceId);
    mVoteBox->startVote();
}

void ComponentManager::initComponents(int32_t instanceId) {
    forEachComponent([=](Component& component) { component.setInstanceId(instanceId); });
    forEachComponent([=, this](Component& component) {
        component.setInstanceId(instanceId);  // of one that another's init has added; no effect on the rest
        initComponent(component);
    });
    // The constant 0, not the instance id: on purpose.
    forEachComponent([](Component& component) { component.postInit(0); });
}

// By index: a component may add others while it starts.
void ComponentManager::forEachComponent(const std::function<void(Component&)>& action) {
    for (size_t i = 0; i < mComponents.size(); ++i) {
        if (const sp<Component> component = mComponents[i]) action(*component);
    }
}

void ComponentManager::initComponent(Component& component) {
    component.init(component.getInstanceId());
    component.loadModules();
    if (component.getVoteMode() != Component::VOTE_MODE_TICKET || !component.getTicket() || !mVoteBox) return;
    Log::d(TAG, "initComponents add tick for type %d", component.getType());
    mVoteBox->AddTicket(component.getTicket());
}

void ComponentManager::registeComponentReady(const sp<mindroid::Handler>& handler,
                                             const sp<mindroid::MessageCallback>& callback) {
    if (!mRegistrants) return;
    mRegistrants->add(new mindroid::Registrant(handler, callback, nullptr));
}

sp<Component> ComponentManager::find(int32_t typeId) const {
    return findFirst(mComponents, [&](const Component& component) { return component.getType() == typeId; });
}

sp<Component> ComponentManager::find(int32_t typeId, int32_t instanceId) const {
    return findFirst(mComponents, [&](const Component& component) {
        return component.getType() == typeId && component.getInstanceId() == instanceId;
    });
}

}  // namespace hal
