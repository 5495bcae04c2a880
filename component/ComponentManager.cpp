#include "component/ComponentManager.h"

#include <mindroid/Log.h>

#include <algorithm>
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
    const std::vector<sp<Component>> components = liveComponents();
    for (const sp<Component>& component : components) component->setInstanceId(instanceId);
    for (const sp<Component>& component : components) initComponent(*component);
    // The constant 0, not the instance id: on purpose.
    for (const sp<Component>& component : components) component->postInit(0);
}

void ComponentManager::initComponent(Component& component) {
    component.init(component.getInstanceId());
    component.loadModules();
    if (component.getVoteMode() != 1 || !component.getTicket() || !mVoteBox) return;
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

std::vector<sp<Component>> ComponentManager::liveComponents() const {
    std::vector<sp<Component>> components;
    std::copy_if(mComponents.begin(), mComponents.end(), std::back_inserter(components),
                 [](const auto& component) { return bool(component); });
    return components;
}

}  // namespace hal
