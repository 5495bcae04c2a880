#pragma once

#include "component/ComponentManager.h"
#include "component/RequestBridge.h"
#include "mindroid/testing/ManualClock.h"
#include "rf/RfSubsysComponent.h"
#include "service/SubsysService.h"
#include "tests/fuzz/support/Callbacks.h"
#include "tests/support/Await.h"
#include "tests/support/LooperThread.h"

#include <functional>

namespace fuzz {

// The service and its components on one looper, as a daemon starts them, with one client. The RF component is the
// library's, unless there is another. Time goes on in settle() alone.
class System {
public:
    explicit System(const std::function<void()>& addComponents)
        : mService(mLooper.run([&] {
              addComponents();
              if (!hal::getRfSubsysComponent()) hal::ComponentManager::getInstance()->add(new hal::RfSubsysComponent());
              hal::ComponentManager::getInstance()->init(0);
              return ndk::SharedRefBase::make<SubsysService>();
          })) {
        mLooper.run([&] { mService->init(); });
        (void)mService->setImsOrtcCallback(callback<IImsOrtcResponse>(), callback<IImsOrtcIndication>());
        connect();
        settle();
    }

    [[nodiscard]] SubsysService& service() const { return *mService; }
    // The client registers.
    void connect() { (void)mService->setCallback(callback<ISubsysResponse>(), callback<ISubsysIndication>()); }
    // Returns when all that was asked and reported before has run, in the plugin too.
    void settle() {
        mClock.advance(200);
        for (int hops = 0; hops < 3; ++hops) mLooper.drain();
        test::Event isAnswered;
        hal::getRfSubsysComponent()->getIccState(
            hal::obtainReplyMessage(mLooper.handler(), [&](const mindroid::Message&) { isAnswered.signal(); }));
        require(isAnswered.await());
        mLooper.drain();
    }

private:
    mindroid::ManualClock mClock;
    test::LooperThread mLooper;
    const std::shared_ptr<SubsysService> mService;
};

}  // namespace fuzz
