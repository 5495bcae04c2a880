#include "component/ComponentHandler.h"

namespace hal {

void ComponentHandler::handleMessage(const mindroid::sp<mindroid::Message>& /*message*/) {}

}  // namespace hal
