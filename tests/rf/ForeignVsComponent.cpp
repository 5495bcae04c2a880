// A companion of the RF component as another vendor builds it: with classes of its own for what it delivers.
#include "component/ComponentManager.h"
#include "rf/VsComponent.h"

namespace {

using mindroid::Handler;
using mindroid::Message;
using mindroid::MessageCallback;
using mindroid::Object;
using mindroid::Registrant;
using mindroid::RegistrantList;
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

class ForeignVsComponent : public hal::VsComponent {
public:
    void registerClatStateInd(const sp<Handler>& handler, const sp<MessageCallback>& callback,
                              const sp<Object>& obj) override {
        mClat.add(new Registrant(handler, callback, obj));
    }
    void registerTxSharingInd(const sp<Handler>& handler, const sp<MessageCallback>& callback,
                              const sp<Object>& obj) override {
        mTxSharing.add(new Registrant(handler, callback, obj));
    }
    void registerIccEventInd(const sp<Handler>& handler, const sp<MessageCallback>& callback,
                             const sp<Object>& obj) override {
        mIccEvent.add(new Registrant(handler, callback, obj));
    }
    void getRfIccInfo(const sp<Message>& message) override {
        sendResponse(message, hal::SUBSYS_Errno::SUCCESS, sp<Object>(new RfIccInfo()));
        mClat.notify(new Clat());
        mTxSharing.notify(new TxSharing());
        mIccEvent.notify(new IccEvent());
    }

private:
    RegistrantList mClat;
    RegistrantList mTxSharing;
    RegistrantList mIccEvent;
};

[[maybe_unused]] const bool sAdded = [] {
    hal::ComponentManager::getInstance()->add(new ForeignVsComponent());
    return true;
}();

}  // namespace
