#include "component/Module.h"

namespace hal {

Module::Module() = default;

void Module::handleMessage(const mindroid::sp<mindroid::Message>& /*message*/) {}

void Module::onInit() {}

void Module::setInstanceId(int32_t instanceId) {
    mInstanceId = instanceId;
}

}  // namespace hal
