#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>

namespace test {

// A folder of service names for this test alone, for as long as it lives. Made before the clients.
class NamesFolder {
public:
    NamesFolder() : mPath(std::filesystem::temp_directory_path() / ("names-" + std::to_string(getpid()))) {
        setenv("SUBSYS_BINDER_DIR", mPath.c_str(), 1);
    }
    ~NamesFolder() { std::filesystem::remove_all(mPath); }
    NamesFolder(const NamesFolder&) = delete;
    NamesFolder& operator=(const NamesFolder&) = delete;

private:
    const std::filesystem::path mPath;
};

}  // namespace test
