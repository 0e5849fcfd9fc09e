// Rows of cells as columns of text.
#pragma once

#include <string>
#include <vector>

namespace runhost {

using TableRow = std::vector<std::string>;

// Each column as wide as its widest cell, two blanks between columns, indented by four; the first row is the heading.
// Cells in columns beyond a row's last are empty.
std::string formatTable(const std::vector<TableRow>& rows);

}  // namespace runhost
