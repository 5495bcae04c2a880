#include "service/ServiceState.h"

#include "component/ComponentManager.h"
#include "component/Interface.h"
#include "ims/ImsOrtcServiceIndication.h"
#include "ims/ImsOrtcServiceResponse.h"
#include "plugin/PluginManagerComponent.h"
#include "service/channel/SubsysServiceIndication.h"
#include "service/channel/SubsysServiceResponse.h"

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsys.h>
#include <device/Escape.h>
#include <mindroid/SystemClock.h>

#include <sstream>

namespace hal {

namespace {

void describeClients(std::ostream& out) {
    out << "rf.response: " << interface::SubsysServiceResponse::getInstance()->describeClient() << '\n'
        << "rf.indication: " << interface::SubsysServiceIndication::getInstance()->describeClient() << '\n';
    const auto responses = interface::ImsOrtcServiceResponse::getInstance()->describeClients();
    const auto indications = interface::ImsOrtcServiceIndication::getInstance()->describeClients();
    for (size_t slot = 0; slot < responses.size(); ++slot) {
        out << "ims." << slot << ".response: " << responses[slot] << '\n'
            << "ims." << slot << ".indication: " << indications[slot] << '\n';
    }
}

void describeComponents(std::ostream& out) {
    size_t index = 0;
    for (const auto& component : ComponentManager::getInstance()->components()) {
        if (!component) continue;
        out << "component." << index++ << ": type " << component->getType() << ", instance "
            << component->getInstanceId() << '\n';
    }
}

void describePlugins(std::ostream& out) {
    size_t index = 0;
    for (const Plugin* plugin : getPluginManager()->plugins()) {
        out << "plugin." << index++ << ": " << device::escaped(plugin->getName()) << ", "
            << device::escaped(plugin->getPath()) << ", " << (plugin->isOpen() ? "open" : "not open") << '\n';
    }
}

}  // namespace

std::string describeState(uint64_t startTime) {
    std::ostringstream out;
    out << "interface.version: " << interface::ISubsys::version << '\n'
        << "interface.hash: " << interface::ISubsys::hash << '\n'
        << "uptime: " << mindroid::SystemClock::uptimeMillis() - startTime << " ms\n";
    describeClients(out);
    describeComponents(out);
    describePlugins(out);
    return out.str();
}

}  // namespace hal
