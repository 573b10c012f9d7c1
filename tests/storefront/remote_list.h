// Reads a list view of another process: its texts and places go through memory of that process.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace storefront_test {

using Row = std::vector<std::wstring>;

// The texts of every row, `columns` of each. Throws std::runtime_error when the process cannot be read.
std::vector<Row> ReadRows(HANDLE process, HWND list, int columns);

// The middle of a row's first text on the screen.
POINT PlaceOfRow(HANDLE process, HWND list, int row);

// The row that is chosen; -1 when none is.
int ChosenRow(HWND list);

}  // namespace storefront_test
