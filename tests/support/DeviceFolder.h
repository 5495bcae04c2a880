#pragma once

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace test {

// A folder that is this process's device for as long as it lives. Paths are those of the device, from "/" on.
class DeviceFolder {
public:
    DeviceFolder() {
        std::string pattern = std::filesystem::temp_directory_path() / "device-XXXXXX";
        mRoot = mkdtemp(pattern.data());
        setenv("SUBSYS_DEVICE_ROOT", mRoot.c_str(), 1);
    }
    ~DeviceFolder() { std::filesystem::remove_all(mRoot); }
    DeviceFolder(const DeviceFolder&) = delete;
    DeviceFolder& operator=(const DeviceFolder&) = delete;

    void write(std::string_view path, std::string_view content) const {
        std::ofstream(place(path), std::ios::binary) << content;
    }
    void copy(std::string_view path, const std::filesystem::path& source) const {
        std::filesystem::copy_file(source, place(path), std::filesystem::copy_options::overwrite_existing);
    }
    void makeDirectory(std::string_view path) const { std::filesystem::create_directories(place(path)); }
    void makeFifo(std::string_view path) const { mkfifo(place(path).c_str(), 0600); }
    void remove(std::string_view path) const { std::filesystem::remove_all(place(path)); }

    // Where the device's file is on this machine; its folder exists.
    [[nodiscard]] std::filesystem::path place(std::string_view path) const {
        const std::filesystem::path file = mRoot / std::filesystem::path(path).relative_path();
        std::filesystem::create_directories(file.parent_path());
        return file;
    }

private:
    std::filesystem::path mRoot;
};

}  // namespace test
