#pragma once

#include "bench/support/IccBurst.h"
#include "bench/support/Shape.h"

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsys.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace bench {

namespace interface = aidl::vendor::nuvex::hardware::subsys_interface::subsys;

// A running subsysd on a device folder of its own, with the ICC plugin and the IMS ORTC component of this folder, and
// names that no other daemon sees. It ends with this object.
class Daemon {
public:
    Daemon();
    ~Daemon();
    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;

    [[nodiscard]] pid_t pid() const { return mPid; }

private:
    std::string mFolder;
    pid_t mPid = 0;
};

// A request that no other thread of the plugin or component has a part in.
inline void getSwtpStatus(interface::ISubsys& service, int32_t) {
    service.getSwtpStatus(1);
}
// The service of the daemon that was started last.
std::shared_ptr<interface::ISubsys> connect();

// A client of the daemon in this process. What counts as an arrival is chosen by the kind; which request is sent, the
// caller says.
class SystemShape final : public Shape {
public:
    using Request = std::function<void(interface::ISubsys&, int32_t count)>;
    enum class Counted { RESPONSES, ICC_EVENTS, RTP_DATA };

    // Arrivals are noted in `shared` where it is given, so that two clients can count together.
    SystemShape(Counted counted, Request request, Arrivals* shared = nullptr);
    void call(int32_t count) override { mRequest(*mService, count); }

private:
    std::shared_ptr<interface::ISubsys> mService;
    Request mRequest;
    std::vector<std::shared_ptr<void>> mCallbacks;
};

}  // namespace bench
