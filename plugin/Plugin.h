#pragma once

#include "plugin/PluginConfig.h"

#include <dlfcn.h>

#include <any>
#include <atomic>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>

namespace hal {

// A function that was found in a plugin.
template <typename Signature>
struct PluginSym {
    PluginSym(std::string symbolName, Signature* address) : name(std::move(symbolName)), function(address) {}

    const std::string name;
    Signature* const function;
};

// One plugin library: opened on request, its exported C functions called by name. Opened once and never closed on a
// device. Thread: one at a time; for the ICC plugin: proxy.
class Plugin {
public:
    // Does not open the library.
    explicit Plugin(const PluginPathInfo& info);
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    [[nodiscard]] const std::string& getName() const { return mName; }
    [[nodiscard]] const std::string& getPath() const { return mPath; }
    // Deliberate: always false, no operation sets it. Callers of PluginManager::isPluginLoaded know it so.
    [[nodiscard]] bool isLoaded() const { return mLoaded; }
    // Whether load has opened the library. Thread: any.
    [[nodiscard]] bool isOpen() const { return mPluginHandle != nullptr; }

    // Whether this process may read the device's file with this path.
    [[nodiscard]] static bool fileAccessible(const std::string& path);
    // Opens the library, with its symbols visible to libraries opened later. True when it is open, from before too.
    bool load();
    // Closes the library.
    // Deliberate: false when there was something to close. The stale handle is kept, and a later load takes it for
    // open, as callers of both expect.
    bool unload();

    // The function with this name, or null when the library is not open or does not export it. The caller vouches for
    // the signature; throws std::bad_any_cast when the name was looked up with another one before. The cache
    // remembers a function only as long as somebody holds what this returned.
    template <typename Signature>
    [[nodiscard]] std::shared_ptr<PluginSym<Signature>> getSym(std::string name);

    // Calls the function and returns its result, or R() when getSym finds none: a function that is missing can't be
    // told from one that returned 0.
    template <typename R, typename... Args>
    R call(std::string name, Args... args);

private:
    std::string mPath;
    std::string mName;
    std::atomic<void*> mPluginHandle = nullptr;
    bool mLoaded = false;
    // A std::weak_ptr<PluginSym<Signature>> for each name.
    std::unordered_map<std::string, std::any> mSyms;
};

template <typename Signature>
std::shared_ptr<PluginSym<Signature>> Plugin::getSym(std::string name) {
    using WeakSym = std::weak_ptr<PluginSym<Signature>>;
    if (mPluginHandle == nullptr) return nullptr;
    const auto entry = mSyms.find(name);
    WeakSym* const cached = entry == mSyms.end() ? nullptr : &std::any_cast<WeakSym&>(entry->second);
    if (cached != nullptr) {
        if (auto sym = cached->lock()) return sym;
    }
    auto* const function = reinterpret_cast<Signature*>(dlsym(mPluginHandle, name.c_str()));
    if (function == nullptr) return nullptr;
    auto sym = std::make_shared<PluginSym<Signature>>(std::move(name), function);
    if (cached != nullptr) {
        *cached = sym;
    } else {
        mSyms.emplace(sym->name, WeakSym(sym));
    }
    return sym;
}

template <typename R, typename... Args>
R Plugin::call(std::string name, Args... args) {
    const auto sym = getSym<R(Args...)>(std::move(name));
    return sym ? sym->function(std::move(args)...) : R();
}

}  // namespace hal
