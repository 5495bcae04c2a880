#include "compliance/Library.h"

#include <dlfcn.h>

#include <algorithm>
#include <filesystem>
#include <vector>

namespace compliance {

namespace {

namespace fs = std::filesystem;

Verdict holds(const char* expected, const std::string& fault) {
    return fault.empty() ? ok() : failed(expected, fault);
}

// By the file's own search path, then by that of this program.
void* openNeeded(const ElfFile& elf, const std::string& name) {
    for (const auto& folder : elf.folders()) {
        if (void* library = dlopen((fs::path(folder) / name).c_str(), RTLD_LAZY)) return library;
    }
    return dlopen(name.c_str(), RTLD_LAZY);
}

struct Needs {
    std::vector<void*> libraries;
    std::string missing;
};

void addTo(std::string& list, const std::string& name) {
    list += (list.empty() ? "" : ", ") + name;
}

Needs openAllNeeded(const ElfFile& elf) {
    Needs needs;
    for (const auto& name : elf.needed()) {
        void* library = openNeeded(elf, name);
        library != nullptr ? needs.libraries.push_back(library) : addTo(needs.missing, name);
    }
    return needs;
}

bool isSupplied(const std::string& symbol, const std::vector<void*>& libraries) {
    if (dlsym(RTLD_DEFAULT, symbol.c_str()) != nullptr) return true;
    return std::any_of(libraries.begin(), libraries.end(),
                       [&](void* library) { return dlsym(library, symbol.c_str()) != nullptr; });
}

Verdict findUndefined(const ElfFile& elf, const std::vector<void*>& libraries) {
    std::string undefined;
    for (const auto& symbol : elf.symbols()) {
        if (symbol.isDefined || symbol.isWeak || symbol.name.empty()) continue;
        if (!isSupplied(symbol.name, libraries)) addTo(undefined, symbol.name);
    }
    return undefined.empty() ? ok()
                             : failed("what it needs or this process supplies each symbol", "nobody has " + undefined);
}

}  // namespace

bool checkFile(Checks& checks, const char* page, ElfFile& elf) {
    return checks.prepare("file: a library of this machine", page, [&] {
        return holds("an ELF library of the class and machine of this program", elf.machineFault());
    }) && checks.prepare("file: complete segments", page, [&] {
        return holds("all bytes of its segments", elf.segmentsFault());
    }) && checks.prepare("file: dynamic symbols", page, [&] { return holds("a table of symbols", elf.readDynamic()); });
}

bool checkNeeds(Checks& checks, const char* page, const ElfFile& elf) {
    Needs needs;
    const bool areThere = checks.prepare("file: the libraries that it needs", page, [&] {
        needs = openAllNeeded(elf);
        return needs.missing.empty() ? ok() : failed("each is found", "not found: " + needs.missing);
    });
    const bool areSupplied =
        checks.prepare("file: undefined symbols", page, [&] { return findUndefined(elf, needs.libraries); });
    return areThere && areSupplied;
}

bool checkOpens(Checks& checks, const char* page, const std::string& file, int flags, void*& handle) {
    return checks.prepare("file: opens", page, [&] {
        handle = dlopen(fs::absolute(file).c_str(), flags);
        return handle != nullptr ? ok() : failed("dlopen succeeds", dlerror());
    });
}

}  // namespace compliance
