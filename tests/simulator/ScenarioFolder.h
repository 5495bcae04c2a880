#pragma once

#include "simulator/Scenario.h"
#include "tests/support/DeviceFolder.h"

#include <string>

namespace test {

// A device with a scenario.
class ScenarioFolder : public DeviceFolder {
public:
    explicit ScenarioFolder(const std::string& scenario) { write(simulator::SCENARIO_PATH, scenario); }
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
