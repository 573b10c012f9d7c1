#include "output.h"

#include <algorithm>
#include <iostream>
#include <stdexcept>

#include "text.h"

namespace kest_host {
namespace {

std::string ValueOf(const Fields& fields, const std::string& name) {
  for (const auto& field : fields) {
    if (field.first == name) return field.second;
  }
  return {};
}

std::vector<std::string> ColumnsOf(const std::vector<Fields>& records) {
  std::vector<std::string> columns;
  const auto add = [&columns](const std::string& name) {
    if (std::find(columns.begin(), columns.end(), name) == columns.end()) columns.push_back(name);
  };
  for (const char* first : {"SKU", "Name", "Price"}) {
    const auto has = [first](const Fields& record) {
      return std::any_of(record.begin(), record.end(), [first](const auto& field) { return field.first == first; });
    };
    if (std::any_of(records.begin(), records.end(), has)) add(first);
  }
  for (const Fields& record : records) {
    for (const auto& field : record) add(field.first);
  }
  return columns;
}

}  // namespace

void PrintRows(std::vector<std::vector<std::string>> rows) {
  std::vector<std::size_t> widths;
  for (auto& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i) {
      row[i] = ForTerminal(row[i]);
      widths[i] = std::max(widths[i], Columns(row[i]));
    }
  }
  for (const auto& row : rows) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
      line += row[i];
      if (i + 1 < row.size()) line.append(widths[i] - Columns(row[i]) + 2, ' ');
    }
    std::cout << line << '\n';
  }
}

void PrintRecords(const std::vector<Fields>& records) {
  const std::vector<std::string> names = ColumnsOf(records);
  std::vector<std::vector<std::string>> rows = {names};
  for (const Fields& record : records) {
    rows.emplace_back();
    for (const std::string& name : names) rows.back().push_back(ValueOf(record, name));
  }
  PrintRows(std::move(rows));
}

void PrintLines(const Fields& fields) {
  std::vector<std::vector<std::string>> rows;
  for (const auto& field : fields) rows.push_back({field.first, field.second});
  PrintRows(std::move(rows));
}

Json ToJson(const Fields& fields) {
  Json object = Json::object();
  for (const auto& field : fields) {
    const std::string name = ToUtf8(field.first);
    if (!object.contains(name)) object[name] = ToUtf8(field.second);
  }
  return object;
}

Json ToJson(const std::vector<Fields>& records) {
  Json array = Json::array();
  for (const Fields& record : records) array.push_back(ToJson(record));
  return array;
}

void PrintJson(const Json& document) {
  std::cout << document.dump(2) << '\n';
}

void FinishOutput() {
  if (!std::cout.flush()) throw std::runtime_error("the output could not be written");
}

}  // namespace kest_host
