#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace subsysctl {

// Columns as wide as their widest text, for a person.
class Table {
public:
    explicit Table(std::vector<std::string> titles) { add(std::move(titles)); }
    void add(std::vector<std::string> row);
    [[nodiscard]] bool isEmpty() const { return mRows.size() == 1; }
    // Where the columns don't fit into `width`, each row becomes a block of lines of a title and a value.
    void print(std::ostream& out, size_t width) const;

private:
    void printColumns(std::ostream& out) const;
    void printBlock(std::ostream& out, const std::vector<std::string>& row, size_t width) const;

    std::vector<std::vector<std::string>> mRows;
    std::vector<size_t> mWidths;
};

}  // namespace subsysctl
