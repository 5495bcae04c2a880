#pragma once

#include <utility>

namespace binder {

// A descriptor of this library. A forked child has none of them: it would make a dead process look alive.
class UniqueFd {
public:
    UniqueFd() = default;
    explicit UniqueFd(int fd);
    UniqueFd(UniqueFd&& other) noexcept : mFd(std::exchange(other.mFd, -1)) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept {
        std::swap(mFd, other.mFd);
        return *this;
    }
    ~UniqueFd();

    [[nodiscard]] int get() const { return mFd; }
    [[nodiscard]] bool isValid() const { return mFd >= 0; }

private:
    int mFd = -1;
};

}  // namespace binder
