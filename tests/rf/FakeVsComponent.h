#pragma once

#include "rf/VsComponent.h"
#include "tests/support/Await.h"

#include <mindroid/Message.h>
#include <mindroid/RegistrantList.h>
#include <mindroid/Runnable.h>

namespace test {

// A VsComponent that keeps what it is asked and answers when the test says so.
class FakeVsComponent : public hal::VsComponent {
public:
    using Handler = mindroid::sp<mindroid::Handler>;
    using Callback = mindroid::sp<mindroid::MessageCallback>;
    using Obj = mindroid::sp<mindroid::Object>;

    void registerClatStateInd(const Handler& handler, const Callback& callback, const Obj& obj) override {
        clat.add(new mindroid::Registrant(handler, callback, obj));
    }
    void registerTxSharingInd(const Handler& handler, const Callback& callback, const Obj& obj) override {
        txSharing.add(new mindroid::Registrant(handler, callback, obj));
    }
    void registerIccEventInd(const Handler& handler, const Callback& callback, const Obj& obj) override {
        iccEvent.add(new mindroid::Registrant(handler, callback, obj));
    }
    void getRfIccInfo(const mindroid::sp<mindroid::Message>& message) override { infoRequests.add(message); }

    mindroid::RegistrantList clat;
    mindroid::RegistrantList txSharing;
    mindroid::RegistrantList iccEvent;
    Recorder<mindroid::sp<mindroid::Message>> infoRequests;
};

}  // namespace test
