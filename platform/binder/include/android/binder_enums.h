#pragma once

#include <array>

namespace ndk {

namespace internal {
// Specialised for each enumeration as the std::array of its values.
template <typename Enum>
constexpr int enum_values = 0;
}  // namespace internal

// The values of an enumeration in the order of declaration: `for (auto e : ndk::enum_range<E>())`. Thread: any.
template <typename Enum>
class enum_range {
public:
    constexpr auto begin() const { return internal::enum_values<Enum>.begin(); }
    constexpr auto end() const { return internal::enum_values<Enum>.end(); }
};

}  // namespace ndk
