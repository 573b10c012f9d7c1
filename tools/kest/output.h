// Data on stdout: tables for people, JSON for programs. Words go to stderr, and not through here.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "fields.h"

namespace kest_host {

using Json = nlohmann::ordered_json;

// Cells in columns that are two blanks apart, without control characters.
void PrintRows(std::vector<std::vector<std::string>> rows);

// A head and one row a record: SKU, Name and Price first, then the others in the order in which they first appear.
void PrintRecords(const std::vector<Fields>& records);

// One line a field, "Name  Value", the values below each other.
void PrintLines(const Fields& fields);

// An object with every field as text; of a repeated name the first field, as in the library.
Json ToJson(const Fields& fields);
Json ToJson(const std::vector<Fields>& records);

void PrintJson(const Json& document);

// Throws std::runtime_error when something that was printed could not be written.
void FinishOutput();

}  // namespace kest_host
