#pragma once

#include "rf/IccPluginApi.h"

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/IccIndInfo.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/IccPerceptionInfo.h>
#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/IccStateInfo.h>

namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys {

// The plugin's records as clients see them. A count that the record can't hold is cut to what it can, with one error
// line. Thread: any.

// The event holds its modes as pairs of type and value; the answer to a query all types, then all values.
[[nodiscard]] IccStateInfo fromStateEvent(const IccStateInfoType& record);
[[nodiscard]] IccStateInfo fromStateAnswer(const IccStateInfoType& record);
[[nodiscard]] IccPerceptionInfo fromPerception(const IccPercStateType& record);
[[nodiscard]] IccIndInfo fromInformation(const IccIndInfoType& record);

}  // namespace aidl::vendor::nuvex::hardware::subsys_interface::subsys
