#include "host/PluginList.h"

#include <device/DevicePath.h>

#include <elf.h>
#include <tinyxml2.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

using tinyxml2::XMLElement;

namespace {

// What is wrong with the file before anyone reads it, or null. Opening a FIFO would block.
const char* findUnreadable(const std::string& file) {
    std::error_code error;
    const auto status = std::filesystem::status(file, error);
    if (!std::filesystem::exists(status)) return "is missing";
    if (!std::filesystem::is_regular_file(status)) return "is not a regular file";
    return std::ifstream(file) ? nullptr : "can't be read";
}

// The beginning of an ELF file, the same for 32 and 64 bits.
struct ElfStart {
    unsigned char ident[EI_NIDENT];
    uint16_t type;
    uint16_t machine;
};

ElfStart readStart(const std::string& file) {
    ElfStart start{};
    std::ifstream(file, std::ios::binary).read(reinterpret_cast<char*>(&start), sizeof(start));
    return start;
}

// Compared with this program: magic, word size, byte order and processor.
bool isLibraryOfThisMachine(const std::string& file) {
    const ElfStart own = readStart("/proc/self/exe");
    const ElfStart library = readStart(file);
    return std::memcmp(own.ident, library.ident, EI_VERSION) == 0 && own.machine == library.machine &&
           library.type == ET_DYN;
}

// Why the library can't be loaded, as far as that can be told without loading it, or null.
const char* findUnloadable(const std::string& file) {
    if (const char* fault = findUnreadable(file)) return fault;
    return isLibraryOfThisMachine(file) ? nullptr : "is not a library for this machine";
}

using Faults = std::vector<std::string>;

void checkPlugin(const std::string& name, const std::string& file, Faults& faults) {
    if (const char* fault = findUnloadable(file)) faults.push_back("plugin " + name + ": " + file + " " + fault);
}

void checkItems(const std::string& list, const tinyxml2::XMLDocument& document, Faults& faults) {
    const XMLElement* root = document.FirstChildElement("plugin_config");
    const XMLElement* item = root != nullptr ? root->FirstChildElement("item") : nullptr;
    bool hasIccPlugin = false;
    const char* name = nullptr;
    const char* path = nullptr;
    for (; item != nullptr; item = item->NextSiblingElement("item")) {
        // As the service library reads it: an item takes what it lacks from those before.
        item->QueryStringAttribute("name", &name);
        item->QueryStringAttribute("path", &path);
        hasIccPlugin |= name != nullptr && name == std::string_view("libiccapis");
        if (name != nullptr && path != nullptr) {
            checkPlugin(name, device::path(path), faults);
        } else {
            const std::string line = std::to_string(item->GetLineNum());
            faults.push_back("plugin list: the item in line " + line + " lacks a name or a path");
        }
    }
    if (!hasIccPlugin) faults.push_back("plugin list: " + list + " has no item libiccapis in a plugin_config");
}

}  // namespace

std::vector<std::string> pluginListFaults() {
    const std::string list = device::path("/odm/etc/plugin_config.xml");
    if (const char* fault = findUnreadable(list)) return {"plugin list: " + list + " " + fault};
    tinyxml2::XMLDocument document;
    Faults faults;
    if (document.LoadFile(list.c_str()) == tinyxml2::XML_SUCCESS) {
        checkItems(list, document, faults);
    } else {
        faults.push_back("plugin list: " + list + " is malformed: " + document.ErrorName() + " in line " +
                         std::to_string(document.ErrorLineNum()));
    }
    return faults;
}
