#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace test {

// A folder that is this process's device for as long as it lives.
class DeviceFolder {
public:
    DeviceFolder() {
        std::string pattern = std::filesystem::temp_directory_path() / "device-XXXXXX";
        mPath = mkdtemp(pattern.data());
        setenv("SUBSYS_DEVICE_ROOT", mPath.c_str(), 1);
        std::filesystem::create_directory(mPath / "simulator");
    }
    explicit DeviceFolder(const std::string& scenario) : DeviceFolder() {
        std::ofstream(scenarioFile(), std::ios::binary) << scenario;
    }
    ~DeviceFolder() { std::filesystem::remove_all(mPath); }
    DeviceFolder(const DeviceFolder&) = delete;
    DeviceFolder& operator=(const DeviceFolder&) = delete;

    [[nodiscard]] std::filesystem::path scenarioFile() const { return mPath / "simulator" / "scenario"; }

private:
    std::filesystem::path mPath;
};

// The scenario that the device comes with, its examples of one subject no longer commented out.
inline std::string shippedScenario(const std::string& subject) {
    std::string text, line;
    for (std::ifstream file(SHIPPED_SCENARIO); std::getline(file, line);) {
        text += (line.starts_with('#' + subject + ' ') ? line.substr(1) : line) + '\n';
    }
    return text;
}

}  // namespace test
