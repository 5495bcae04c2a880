#pragma once

#include "rf/VsComponent.h"
#include "simulator/ComponentPlayer.h"

#include <cstdint>

namespace simulator {

// The companion of the RF component, as the scenario wants it. Thread: any.
class SimVsComponent final : public hal::VsComponent {
public:
    using Target = const mindroid::sp<mindroid::Handler>&;
    using Callback = const mindroid::sp<mindroid::MessageCallback>&;
    using Extra = const mindroid::sp<mindroid::Object>&;

    SimVsComponent();

    // The scenario starts here. Thread: looper.
    void init(int32_t instanceId) override;

    void registerClatStateInd(Target handler, Callback callback, Extra obj) override {
        ComponentPlayer::listen(mClatRegistrants, handler, callback, obj);
    }
    void registerTxSharingInd(Target handler, Callback callback, Extra obj) override {
        ComponentPlayer::listen(mTxSharingRegistrants, handler, callback, obj);
    }
    void registerIccEventInd(Target handler, Callback callback, Extra obj) override {
        ComponentPlayer::listen(mIccEventRegistrants, handler, callback, obj);
    }
    void getRfIccInfo(const mindroid::sp<mindroid::Message>& message) override;

private:
    void becomeReady();
    void deliver(const ScenarioEvent& event);

    const mindroid::sp<mindroid::RegistrantList> mClatRegistrants = new mindroid::RegistrantList();
    const mindroid::sp<mindroid::RegistrantList> mTxSharingRegistrants = new mindroid::RegistrantList();
    const mindroid::sp<mindroid::RegistrantList> mIccEventRegistrants = new mindroid::RegistrantList();
    ComponentPlayer mPlayer;
};

}  // namespace simulator
