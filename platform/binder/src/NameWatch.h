#pragma once

#include "Poller.h"

#include <chrono>

namespace binder {

// Tells when somebody deletes or replaces files in the folder of names. Thread: the I/O thread, where nothing else is
// said.
class NameWatch final : public Pollable, public std::enable_shared_from_this<NameWatch> {
public:
    // False: to be called again, after a while.
    using OnChange = bool (*)();

    static NameWatch& instance();

    // `onChange` is called soon after each change. Again after the folder was replaced. False, with errno, when the
    // system refuses. Thread: any; one at a time.
    [[nodiscard]] bool start(const UniqueFd& folder, OnChange onChange);

    [[nodiscard]] int fd() const override { return mInotify.get(); }
    void onReady(uint32_t events) override;
    void onNoMemory() override {}

private:
    NameWatch();
    [[nodiscard]] int tick();

    const UniqueFd mInotify;
    PollKey mKey = 0;
    OnChange mOnChange = nullptr;
    bool mHasChanged = false;
    std::chrono::steady_clock::time_point mDue;
};

}  // namespace binder
