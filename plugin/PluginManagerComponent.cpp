#include "plugin/PluginManagerComponent.h"

#include <mindroid/Log.h>

namespace hal {

namespace {

const loadComponent<PluginManagerComponent> sPluginManagerComponent;

}  // namespace

PluginManagerComponent::PluginManagerComponent() : Component(0, TYPE) {
    mindroid::Log::d(TAG, "create PluginManagerComponent");
    mPluginManager = new PluginManager();
}

PluginManagerComponent::~PluginManagerComponent() = default;

PluginManager* getPluginManager() {
    return loadComponent<PluginManagerComponent>::getComponent()->getPluginManager();
}

}  // namespace hal
