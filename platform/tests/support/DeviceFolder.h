#pragma once

#include "tests/support/TempFolder.h"

#include <sys/stat.h>

#include <fstream>
#include <string_view>

namespace test {

// A folder that is this process's device for as long as it lives. Paths are those of the device, from "/" on.
class DeviceFolder : public TempFolder {
public:
    DeviceFolder() : TempFolder("SUBSYS_DEVICE_ROOT") {}

    void write(std::string_view file, std::string_view content) const {
        std::ofstream(place(file), std::ios::binary) << content;
    }
    void copy(std::string_view file, const std::filesystem::path& source) const {
        std::filesystem::copy_file(source, place(file), std::filesystem::copy_options::overwrite_existing);
    }
    void makeDirectory(std::string_view file) const { std::filesystem::create_directories(place(file)); }
    void makeFifo(std::string_view file) const { mkfifo(place(file).c_str(), 0600); }
    void remove(std::string_view file) const { std::filesystem::remove_all(place(file)); }

    // Where the device's file is on this machine; its folder exists.
    [[nodiscard]] std::filesystem::path place(std::string_view file) const {
        std::filesystem::path placed = path() / std::filesystem::path(file).relative_path();
        std::filesystem::create_directories(placed.parent_path());
        return placed;
    }
};

}  // namespace test
