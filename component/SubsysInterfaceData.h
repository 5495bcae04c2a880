#pragma once

#include <mindroid/Object.h>

namespace hal {

// One plain record that travels as an object. The record is the first field, for those who read it in another library.
template <typename T>
class SubsysInterfaceData : public mindroid::Object {
public:
    explicit SubsysInterfaceData(const T& data) : mData(data) {}

    T mData;
};

}  // namespace hal
