#pragma once

#include "component/Module.h"

#include <cstdint>
#include <vector>

namespace hal {

// The modules of one component, in the order of their addition. A module that is added twice is served twice; one that
// is added after a pass, or during it, is not served by that pass. All: looper.
class ModuleManager {
public:
    void addModule(const mindroid::sp<Module>& module);
    void setInstanceId(int32_t instanceId);
    void initModules();

private:
    template <typename Action>
    void forEachModule(Action action);

    int32_t mInstanceId = 0;
    std::vector<mindroid::sp<Module>> mModules;
};

}  // namespace hal
