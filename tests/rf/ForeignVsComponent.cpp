// A companion of the RF component as another vendor builds it: with classes of its own for what it delivers.
#include "component/ComponentManager.h"
#include "tests/rf/FakeVsComponent.h"

namespace {

using mindroid::Message;
using mindroid::Object;
using mindroid::sp;

struct Clat : Object {
    uint8_t enable = 1;
    uint16_t freq = 2600;
    uint8_t cc = 3;
    uint8_t ant = 4;
};
struct TxSharing : Object {
    uint8_t enable = 1;
    uint16_t band[2] = {78, 41};
    uint16_t param1[2] = {5, 6};
    uint8_t param2[2] = {7, 8};
};
struct IccEvent : Object {
    uint32_t event = 9;
    uint16_t length = 3;
    uint8_t data[3] = {1, 2, 3};
};
struct RfIccInfo : Object {
    uint8_t version = 3;
    uint16_t blacklist = 0xAB;
    uint8_t brindle = 1;
};

class ForeignVsComponent : public test::FakeVsComponent {
public:
    void getRfIccInfo(const sp<Message>& message) override {
        sendResponse(message, hal::SUBSYS_Errno::SUCCESS, sp<Object>(new RfIccInfo()));
        clat.notify(new Clat());
        txSharing.notify(new TxSharing());
        iccEvent.notify(new IccEvent());
    }
};

[[maybe_unused]] const bool sAdded = [] {
    hal::ComponentManager::getInstance()->add(new ForeignVsComponent());
    return true;
}();

}  // namespace
