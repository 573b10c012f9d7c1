#include "fields.h"

#include <algorithm>

namespace kest_host {
namespace {

char Lower(char character) {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

}  // namespace

Fields FieldsOf(Library& library, KestFieldSet* set) {
  Fields fields;
  const std::int32_t count = library.KestGetFieldCount(set);
  for (std::int32_t i = 0; i < count; ++i) {
    fields.emplace_back(library.KestGetFieldName(set, i), library.KestGetFieldValue(set, i));
  }
  return fields;
}

bool IsSameName(const std::string& a, const std::string& b) {
  const auto same = [](char one, char other) { return Lower(one) == Lower(other); };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), same);
}

const std::string* Find(const Fields& fields, const std::string& name) {
  for (const auto& field : fields) {
    if (IsSameName(field.first, name)) return &field.second;
  }
  return nullptr;
}

Fields ParseProduct(const std::string& text) {
  Fields product;
  for (std::size_t position = 0; position < text.size();) {
    const std::size_t colon = text.find(':', position);
    if (colon == std::string::npos) break;
    const std::size_t end = std::min(text.find('^', colon), text.size());
    product.emplace_back(text.substr(position, colon - position), text.substr(colon + 1, end - colon - 1));
    position = end + 1;
  }
  return product;
}

std::vector<Fields> TakeProducts(Fields& fields) {
  std::vector<Fields> products;
  Fields others;
  for (auto& field : fields) {
    if (IsSameName(field.first, "KEST-Product")) {
      products.push_back(ParseProduct(field.second));
    } else {
      others.push_back(std::move(field));
    }
  }
  fields = std::move(others);
  return products;
}

std::int32_t ReadErrorCode(const std::string& text) {
  std::uint32_t code = 0;
  for (const char character : text) code = code * 10 + static_cast<unsigned char>(character) - 48;
  return static_cast<std::int32_t>(code);
}

bool ParseNumber(const std::string& text, std::uint64_t greatest, std::uint64_t& number) {
  constexpr std::size_t mostDigits = 18;
  if (text.empty() || text.size() > mostDigits) return false;
  if (text.find_first_not_of("0123456789") != std::string::npos) return false;
  number = std::stoull(text);
  return number <= greatest;
}

}  // namespace kest_host
