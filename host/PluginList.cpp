#include "host/PluginList.h"

#include <device/DevicePath.h>
#include <mindroid/Log.h>

#include <elf.h>
#include <tinyxml2.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

using mindroid::Log;
using tinyxml2::XMLElement;

namespace {

constexpr const char* TAG = "subsysd";

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

void checkItem(const XMLElement& item) {
    const char* name = item.Attribute("name");
    const char* path = item.Attribute("path");
    if (name == nullptr || path == nullptr)
        return Log::w(TAG, "plugin list: the item in line %d lacks a name or a path", item.GetLineNum());
    const std::string file = device::path(path);
    if (const char* fault = findUnloadable(file)) Log::w(TAG, "plugin %s: %s %s", name, file.c_str(), fault);
}

void checkItems(const std::string& list, const tinyxml2::XMLDocument& document) {
    const XMLElement* root = document.FirstChildElement("plugin_config");
    const XMLElement* item = root != nullptr ? root->FirstChildElement("item") : nullptr;
    if (item == nullptr) Log::w(TAG, "plugin list: %s has no item in a plugin_config", list.c_str());
    for (; item != nullptr; item = item->NextSiblingElement("item")) checkItem(*item);
}

}  // namespace

void checkPluginList() {
    const std::string list = device::path("/odm/etc/plugin_config.xml");
    if (const char* fault = findUnreadable(list)) return Log::w(TAG, "plugin list: %s %s", list.c_str(), fault);
    tinyxml2::XMLDocument document;
    if (document.LoadFile(list.c_str()) == tinyxml2::XML_SUCCESS) return checkItems(list, document);
    Log::w(TAG, "plugin list: %s is malformed: %s in line %d", list.c_str(), document.ErrorName(),
           document.ErrorLineNum());
}
