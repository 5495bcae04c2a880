#include "component/ComponentManager.h"

#include "component/ComponentHandler.h"

#include <mindroid/Log.h>

#include <algorithm>
#include <functional>
#include <iterator>

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

ComponentManager::~ComponentManager() = default;

void ComponentManager::add(const sp<Component>& component) {
    // A null pointer is listed like any other value; the passes and lookups go round it.
    if (std::find(mComponents.begin(), mComponents.end(), component) != mComponents.end()) return;
    mComponents.push_back(component);
}

void ComponentManager::init(int32_t instanceId) {
    mHandler = new ComponentHandler();
    mVoteBox = new mindroid::VoteBox();
    mVoteBox->setCallback(new mindroid::VoteCallback([this](const sp<Object>& result) { notifyReady(result); }));
    initComponents(instanceId);
    mVoteBox->startVote();
}

void ComponentManager::notifyReady(const sp<Object>& result) {
    if (mReadyNotified.exchange(true)) return;
    Log::d(TAG, "all components are ready");
    mRegistrants->notify(result);
}

void ComponentManager::initComponents(int32_t instanceId) {
    std::vector<sp<Component>> components;
    std::copy_if(mComponents.begin(), mComponents.end(), std::back_inserter(components),
                 std::mem_fn(&sp<Component>::get));
    for (const auto& component : components) component->setInstanceId(instanceId);
    for (const auto& component : components) initComponent(*component);
    // Deliberate: the constant 0, not the instance id. Component libraries get the same call for every instance.
    for (const auto& component : components) component->postInit(0);
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
