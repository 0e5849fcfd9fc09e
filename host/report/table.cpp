#include "report/table.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace runhost {

std::string formatTable(const std::vector<TableRow>& rows) {
    std::vector<size_t> widths;
    for (const TableRow& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
    }
    std::string text;
    for (const TableRow& row : rows) {
        std::string line = "  ";
        for (size_t i = 0; i < row.size(); ++i) fmt::format_to(std::back_inserter(line), "  {:<{}}", row[i], widths[i]);
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + '\n';
    }
    return text;
}

}  // namespace runhost
