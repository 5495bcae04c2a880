#include "compliance/ElfFile.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <system_error>

namespace compliance {

namespace {

namespace fs = std::filesystem;

std::string readFile(const std::string& file) {
    std::error_code error;
    if (!fs::is_regular_file(file, error)) return {};
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

std::string describe(const ElfW(Ehdr) & header) {
    return "class " + std::to_string(header.e_ident[EI_CLASS]) + ", data " + std::to_string(header.e_ident[EI_DATA]) +
           ", machine " + std::to_string(header.e_machine);
}

// What a library of this machine says: as this program does.
const ElfW(Ehdr) & ownHeader() {
    static const ElfW(Ehdr) sHeader = [] {
        ElfW(Ehdr) header{};
        std::ifstream("/proc/self/exe", std::ios::binary).read(reinterpret_cast<char*>(&header), sizeof(header));
        return header;
    }();
    return sHeader;
}

}  // namespace

ElfFile::ElfFile(const std::string& file) : mFolder(fs::absolute(file).parent_path()), mBytes(readFile(file)) {}

template <typename T>
std::optional<T> ElfFile::read(size_t offset) const {
    if (offset > mBytes.size() || mBytes.size() - offset < sizeof(T)) return std::nullopt;
    T value;
    std::memcpy(&value, mBytes.data() + offset, sizeof(T));
    return value;
}

template <typename T>
std::vector<T> ElfFile::readAll(const Section& section) const {
    std::vector<T> all;
    for (size_t at = 0; at + sizeof(T) <= section.sh_size; at += sizeof(T)) {
        const auto element = read<T>(section.sh_offset + at);
        if (!element) break;
        all.push_back(*element);
    }
    return all;
}

std::vector<ElfFile::Section> ElfFile::sections(const Header& header) const {
    Section table{};
    table.sh_offset = header.e_shoff;
    table.sh_size = sizeof(Section) * header.e_shnum;
    return header.e_shentsize == sizeof(Section) ? readAll<Section>(table) : std::vector<Section>{};
}

std::string ElfFile::text(const Section& strings, size_t offset) const {
    if (offset >= strings.sh_size || strings.sh_offset + offset >= mBytes.size()) return {};
    const size_t start = strings.sh_offset + offset;
    return mBytes.substr(start, mBytes.find('\0', start) - start);
}

std::string ElfFile::machineFault() const {
    if (mBytes.empty()) return "no file that can be read";
    if (mBytes.compare(0, SELFMAG, ELFMAG) != 0) return "no ELF file";
    const auto header = read<Header>(0);
    if (!header) return "an ELF file without a whole header";
    if (describe(*header) != describe(ownHeader())) return describe(*header);
    return header->e_type == ET_DYN ? "" : "an ELF file of type " + std::to_string(header->e_type);
}

std::string ElfFile::segmentsFault() const {
    const auto header = read<Header>(0);
    for (size_t i = 0; i < header->e_phnum; ++i) {
        const auto segment = read<Segment>(header->e_phoff + i * sizeof(Segment));
        if (!segment) return "no whole table of segments";
        const bool isLoaded = segment->p_type == PT_LOAD;
        if (isLoaded && (segment->p_offset > mBytes.size() || segment->p_filesz > mBytes.size() - segment->p_offset)) {
            return "segment " + std::to_string(i) + " ends behind the file's " + std::to_string(mBytes.size()) +
                   " bytes";
        }
    }
    return "";
}

std::string ElfFile::readDynamic() {
    const auto all = sections(*read<Header>(0));
    // A file has one of each; more would only cost memory.
    for (const auto type : {uint32_t{SHT_DYNSYM}, uint32_t{SHT_DYNAMIC}}) {
        const auto section =
            std::find_if(all.begin(), all.end(), [type](const auto& each) { return each.sh_type == type; });
        if (section == all.end() || section->sh_link >= all.size()) continue;
        const Section& names = all[section->sh_link];
        if (type == SHT_DYNSYM) {
            for (const auto& symbol : readAll<ElfW(Sym)>(*section)) addSymbol(symbol, names);
        } else {
            for (const auto& entry : readAll<ElfW(Dyn)>(*section)) addEntry(entry, names);
        }
    }
    return mSymbols.empty() ? "no table of dynamic symbols" : "";
}

void ElfFile::addSymbol(const ElfW(Sym) & symbol, const Section& names) {
    const auto binding = ELF64_ST_BIND(symbol.st_info);  // the same in 32 bits
    const auto type = ELF64_ST_TYPE(symbol.st_info);
    if (binding == STB_LOCAL) return;
    mSymbols.push_back({text(names, symbol.st_name), symbol.st_shndx != SHN_UNDEF, binding == STB_WEAK,
                        type == STT_FUNC || type == STT_GNU_IFUNC});
}

void ElfFile::addEntry(const ElfW(Dyn) & entry, const Section& names) {
    if (entry.d_tag == DT_NEEDED) mNeeded.push_back(text(names, entry.d_un.d_val));
    if (entry.d_tag != DT_RUNPATH && entry.d_tag != DT_RPATH) return;
    std::istringstream folders(text(names, entry.d_un.d_val));
    for (std::string folder; std::getline(folders, folder, ':');) {
        const size_t origin = folder.find("$ORIGIN");
        if (origin != std::string::npos) folder.replace(origin, std::strlen("$ORIGIN"), mFolder);
        mFolders.push_back(folder);
    }
}

}  // namespace compliance
