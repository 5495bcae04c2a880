#pragma once

#include <stubs/Table.h>

#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace stubs_test {

// Values that differ from each other and from the defaults.
class Samples {
public:
    template <class T>
    T next() {
        T value{};
        fill(value);
        return value;
    }

private:
    template <class T>
    void fill(T& value) {
        if constexpr (subsys_stubs::Record<T>) {
            subsys_stubs::forEachField(value, [this](const auto&, auto& member) { this->fill(member); });
        } else if constexpr (std::is_same_v<T, bool>) {
            value = true;
        } else if constexpr (!subsys_stubs::isInterfacePointer<T>) {
            value = static_cast<T>(++mLast);
        }
    }
    void fill(int64_t& value) { value = (int64_t{++mLast} << 40) + 1; }
    void fill(std::string& value) { value = "text " + std::to_string(++mLast); }
    template <class T>
    void fill(std::vector<T>& values) {
        values.resize(3);
        for (T& value : values) fill(value);
    }

    int mLast = 0;
};

}  // namespace stubs_test
