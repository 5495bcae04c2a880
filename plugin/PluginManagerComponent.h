#pragma once

#include "component/Component.h"
#include "component/ComponentManager.h"
#include "plugin/PluginManager.h"

#include <mindroid/sp.h>

#include <cstdint>

namespace hal {

// Brings the plugin manager into being when the library is loaded, before any other component starts.
class PluginManagerComponent : public Component {
public:
    static constexpr const char* TAG = "PluginManagerComponent-Subsys";
    static constexpr int32_t TYPE = -1;

    PluginManagerComponent();
    ~PluginManagerComponent() override;

    // Lives as long as the process. Thread: any.
    [[nodiscard]] PluginManager* getPluginManager() const { return mPluginManager; }

private:
    // Never deleted, see PluginManager.
    PluginManager* mPluginManager;
};

// A static object of this type registers the one instance of the component T when its library is loaded.
template <typename T>
class loadComponent {
public:
    loadComponent() { ComponentManager::getInstance()->add(getComponent()); }

    // Made at the first call, whoever makes it. Thread: any.
    [[nodiscard]] static mindroid::sp<T> getComponent() {
        static const mindroid::sp<T> sComponent = new T();
        return sComponent;
    }
};

// The plugin manager of the process. Thread: any.
[[nodiscard]] PluginManager* getPluginManager();

}  // namespace hal
