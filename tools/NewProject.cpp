#include "tools/NewProject.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace subsysctl {

namespace {

namespace fs = std::filesystem;

fs::path examples() {
    return fs::read_symlink("/proc/self/exe").parent_path().parent_path() / "share/subsys/examples";
}

std::string replaceAll(std::string text, const std::string& from, const std::string& to) {
    for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
        text.replace(at, from.size(), to);
    }
    return text;
}

// A copy with one name in the place of another, in the text and in the file's own name.
void copyRenamed(const fs::path& file, const fs::path& folder, const std::string& from, const std::string& to) {
    std::ifstream in(file);
    const std::string text{std::istreambuf_iterator<char>(in), {}};
    const fs::path copy = folder / replaceAll(file.filename(), from, to);
    std::ofstream out(copy);
    out << replaceAll(text, from, to);
    if (!in || !out.flush()) throw fs::filesystem_error("", in ? copy : file, {errno, std::generic_category()});
}

// The example of a kind calls itself my_KIND. Writes all of the project or nothing.
void writeProject(const std::string& kind, const std::string& name) {
    const fs::directory_iterator files(examples() / kind);
    if (!fs::create_directory(name)) {
        throw fs::filesystem_error("", name, std::make_error_code(std::errc::file_exists));
    }
    try {
        for (const auto& file : files) copyRenamed(file, name, "my_" + kind, name);
    } catch (const fs::filesystem_error&) {
        std::error_code ignored;
        fs::remove_all(name, ignored);
        throw;
    }
}

}  // namespace

std::string refuseProjectName(const std::string& name) {
    const auto isAllowed = [](unsigned char letter) { return std::isalnum(letter) || letter == '_' || letter == '-'; };
    const bool isName = !name.empty() && std::isalpha(static_cast<unsigned char>(name.front())) &&
                        std::all_of(name.begin(), name.end(), isAllowed);
    return isName ? "" : "a name is a letter, then letters, digits, '_' and '-': " + name;
}

ExitCode newProject(const std::string& kind, const std::string& name, Output& output) try {
    writeProject(kind, name);
    output.report(
        {{"wrote", name}, {"message", "wrote " + name}, {"hint", name + "/README.md says how to build and run it"}});
    return OK;
} catch (const fs::filesystem_error& error) {
    const std::string why = error.path1().string() + ": " + error.code().message();
    output.report(errorJson("notWritten", "new", "can't write the project: " + why));
    return ANSWERED_WITH_ERROR;
}

}  // namespace subsysctl
