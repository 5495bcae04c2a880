#include "tools/Table.h"

#include "tools/Text.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace subsysctl {

void Table::add(std::vector<std::string> row) {
    mWidths.resize(std::max(mWidths.size(), row.size()));
    for (size_t i = 0; i < row.size(); ++i) mWidths[i] = std::max(mWidths[i], row[i].size());
    mRows.push_back(std::move(row));
}

void Table::print(std::ostream& out, size_t width) const {
    const size_t needed = std::accumulate(mWidths.begin(), mWidths.end(), 2 * (mWidths.size() - 1));
    if (needed <= width) return printColumns(out);
    for (size_t i = 1; i < mRows.size(); ++i) printBlock(out, mRows[i], width);
}

void Table::printColumns(std::ostream& out) const {
    for (const auto& row : mRows) {
        for (size_t i = 0; i + 1 < row.size(); ++i) out << row[i] << std::string(mWidths[i] + 2 - row[i].size(), ' ');
        out << row.back() << "\n";
    }
}

void Table::printBlock(std::ostream& out, const std::vector<std::string>& row, size_t width) const {
    const auto& titles = mRows.front();
    const auto longer = [](const auto& a, const auto& b) { return a.size() < b.size(); };
    const size_t indent = std::max_element(titles.begin(), titles.end(), longer)->size() + 2;
    for (size_t i = 0; i < row.size(); ++i) {
        std::string left = titles[i];
        for (const std::string& line : wrap(row[i], width - indent)) {
            left.resize(indent, ' ');
            out << std::exchange(left, "") << line << "\n";
        }
    }
    out << "\n";
}

}  // namespace subsysctl
