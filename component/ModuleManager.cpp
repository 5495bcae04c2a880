#include "component/ModuleManager.h"

namespace hal {

void ModuleManager::addModule(const mindroid::sp<Module>& module) {
    mModules.push_back(module);
}

void ModuleManager::setInstanceId(int32_t instanceId) {
    mInstanceId = instanceId;
    forEachModule([&](Module& module) { module.setInstanceId(instanceId); });
}

void ModuleManager::initModules() {
    forEachModule([](Module& module) { module.onInit(); });
}

template <typename Action>
void ModuleManager::forEachModule(Action action) {
    // A copy: a module may add another one while it is initialised. Null pointers are kept in the list and gone round.
    const std::vector<mindroid::sp<Module>> modules = mModules;
    for (const auto& module : modules) {
        if (module) action(*module);
    }
}

}  // namespace hal
