#pragma once

#include <elf.h>
#include <link.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace compliance {

// What an ELF file says of itself, read without loading it. Nothing in the file is trusted.
class ElfFile {
public:
    struct Symbol {
        std::string name;
        bool isDefined;
        bool isWeak;
        bool isFunction;
    };

    // Not a regular file, or one that can't be read, has no bytes.
    explicit ElfFile(const std::string& file);

    // Each says what is wrong, or nothing. The next ones want those before to hold.
    [[nodiscard]] std::string machineFault() const;   // not a library of this machine
    [[nodiscard]] std::string segmentsFault() const;  // cut short
    // Reads what the loader looks for by name.
    [[nodiscard]] std::string readDynamic();

    [[nodiscard]] const std::vector<Symbol>& symbols() const { return mSymbols; }
    [[nodiscard]] const std::vector<std::string>& needed() const { return mNeeded; }
    // The folders to search for them, with $ORIGIN replaced.
    [[nodiscard]] const std::vector<std::string>& folders() const { return mFolders; }

private:
    using Header = ElfW(Ehdr);
    using Segment = ElfW(Phdr);
    using Section = ElfW(Shdr);

    template <typename T>
    [[nodiscard]] std::optional<T> read(size_t offset) const;
    // All elements of the type's size in the section.
    template <typename T>
    [[nodiscard]] std::vector<T> readAll(const Section& section) const;
    [[nodiscard]] std::vector<Section> sections(const Header& header) const;
    [[nodiscard]] std::string text(const Section& strings, size_t offset) const;
    void addSymbol(const ElfW(Sym) & symbol, const Section& names);
    void addEntry(const ElfW(Dyn) & entry, const Section& names);

    const std::string mFolder;
    std::string mBytes;
    std::vector<Symbol> mSymbols;
    std::vector<std::string> mNeeded;
    std::vector<std::string> mFolders;
};

}  // namespace compliance
