// A component library as `subsysd --load` takes it: it registers its component from a static initialiser and logs what
// a test wants to know.
#include "component/ComponentManager.h"
#include "component/SubsysComponent.h"

#include <mindroid/Log.h>
#include <mindroid/Looper.h>

#include <unistd.h>

#include <cstdlib>

namespace {

class HostTestComponent final : public hal::SubsysComponent {
public:
    static constexpr const char* TAG = "HostTestComponent";
    static constexpr int32_t TYPE = 1000;

    HostTestComponent() : SubsysComponent(TYPE) {}

    void init(int32_t phase) override {
        mindroid::Log::i(TAG, "init %d", phase);
        while (std::getenv("HOST_TEST_HANGS") != nullptr) pause();
    }
};

const bool sRegistered = [] {
    const char* device = std::getenv("SUBSYS_DEVICE_ROOT");
    mindroid::Log::i(HostTestComponent::TAG, "loaded: looper %s, device %s",
                     mindroid::Looper::myLooper() ? "yes" : "no", device != nullptr ? device : "none");
    hal::ComponentManager::getInstance()->add(new HostTestComponent());
    return true;
}();

}  // namespace
