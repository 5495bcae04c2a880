#pragma once

#include "component/Component.h"

#include <mindroid/Handler.h>
#include <mindroid/RegistrantList.h>
#include <mindroid/Runnable.h>
#include <mindroid/VoteBox.h>

#include <atomic>
#include <cstdint>
#include <vector>

namespace hal {

class ComponentHandler;

// The process-wide registry of components. Everything is added while libraries load and during start-up, by one thread;
// from then on the list is only read, so lookups take no lock.
class ComponentManager {
public:
    static constexpr const char* TAG = "ComponentManager";

    // Made on first use, never destroyed.
    [[nodiscard]] static ComponentManager* getInstance();

    ComponentManager();
    ~ComponentManager();
    ComponentManager(const ComponentManager&) = delete;
    ComponentManager& operator=(const ComponentManager&) = delete;

    // A component that is listed already is not listed again. Before init; one that comes later is found by lookups but
    // not started. Thread: looper.
    void add(const mindroid::sp<Component>& component);
    // Starts all components and then the readiness vote. Once in a process. Thread: looper.
    void init(int32_t instanceId);
    // Takes every component through setInstanceId; then init and loadModules; then postInit. Thread: looper.
    void initComponents(int32_t instanceId);
    // The callback runs once, on the handler's looper, when all components are ready. A listener that comes later is
    // not told. Thread: any.
    void registeComponentReady(const mindroid::sp<mindroid::Handler>& handler,
                               const mindroid::sp<mindroid::MessageCallback>& callback);

    // The component registered first with the type (and the instance id), or null. Thread: any.
    [[nodiscard]] mindroid::sp<Component> find(int32_t typeId) const;
    [[nodiscard]] mindroid::sp<Component> find(int32_t typeId, int32_t instanceId) const;
    // All that were added, in that order; null ones too. Thread: any, after start-up.
    [[nodiscard]] const std::vector<mindroid::sp<Component>>& components() const { return mComponents; }

private:
    void initComponent(Component& component);
    void notifyReady(const mindroid::sp<mindroid::Object>& result);

    std::vector<mindroid::sp<Component>> mComponents;
    // The listeners of "all components are ready".
    mindroid::sp<mindroid::RegistrantList> mRegistrants;
    mindroid::sp<ComponentHandler> mHandler;
    mindroid::sp<mindroid::VoteBox> mVoteBox;
    std::atomic<bool> mReadyNotified = false;

    static ComponentManager* sInstance;
};

// The component registered first with the type (and the instance id), or null. The type is not checked: the id is
// trusted, and component libraries may be built without type information. Thread: any.
template <typename T>
[[nodiscard]] mindroid::sp<T> getComponent(int32_t typeId) {
    return static_cast<T*>(ComponentManager::getInstance()->find(typeId).get());
}
template <typename T>
[[nodiscard]] mindroid::sp<T> getComponent(int32_t typeId, int32_t instanceId) {
    return static_cast<T*>(ComponentManager::getInstance()->find(typeId, instanceId).get());
}

}  // namespace hal
