#include "rf/VsRecords.h"

namespace hal {

VsClatState::~VsClatState() = default;
VsTxSharingState::~VsTxSharingState() = default;
VsIccEvent::~VsIccEvent() = default;
VsRfIccInfo::~VsRfIccInfo() = default;

}  // namespace hal
