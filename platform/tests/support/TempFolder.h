#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

namespace test {

// A new folder, named to this process and its children by an environment variable and removed with the object.
class TempFolder {
public:
    explicit TempFolder(const char* variable) {
        std::string pattern = std::filesystem::temp_directory_path() / "test-XXXXXX";
        mPath = mkdtemp(pattern.data());
        setenv(variable, mPath.c_str(), 1);
    }
    ~TempFolder() { std::filesystem::remove_all(mPath); }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return mPath; }

private:
    std::filesystem::path mPath;
};

}  // namespace test
