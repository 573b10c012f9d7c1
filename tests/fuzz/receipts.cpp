// Receipts from a registry that anybody may have written: FindReceipt finds what a plain walk finds, says of it what
// the values say, and gives every handle back. The input's first line is the GUID that is looked for, "-" for none; the
// others are "key PATH", "value PATH|NAME|DATA" with "%XX" for any byte, "refuse ERROR CALL" and "grow PATH|NAME|DATA",
// which makes a value longer between the question for its size and its reading. Paths lie below the receipts.
#include "store/receipts.h"

#include <cstdio>
#include <cstdlib>
#include <map>
#include <optional>

#include "fuzz/target.h"
#include "store/receipt_paths.h"
#include "support/allocation_system.h"
#include "support/memory_registry.h"

namespace kest::testing {
namespace {

const std::string top = std::string("HKCU\\") + receiptsPath;

using Value = MemoryRegistry::Value;

std::string Below(const std::string& path) {
  return path.empty() ? top : top + "\\" + path;
}

std::string CutPart(std::string& line) {
  const std::size_t end = line.find('|');
  const std::string part = line.substr(0, end);
  line.erase(0, end == std::string::npos ? end : end + 1);
  return part;
}

std::string Unescaped(const std::string& text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 2 < text.size()) {
      bytes += static_cast<char>(std::strtoul(text.substr(i + 1, 2).c_str(), nullptr, 16));
      i += 2;
    } else {
      bytes += text[i];
    }
  }
  return bytes;
}

// What the input makes of the registry.
struct World {
  explicit World(MemoryRegistry& filled) : registry(filled) {
    registry.before = [this](const std::string& call) { GrowBefore(call); };
  }

  void Read(const std::string& line) {
    std::string rest = line.substr(std::min(line.find(' '), line.size()));
    rest.erase(0, 1);
    if (line.compare(0, 4, "key ") == 0) registry.Put(Below(rest));
    if (line.compare(0, 6, "value ") == 0) {
      const std::string path = CutPart(rest), name = CutPart(rest);
      registry.Put(Below(path), name, Unescaped(rest));
    }
    if (line.compare(0, 7, "refuse ") == 0) {
      const std::size_t space = std::min(rest.find(' '), rest.size());
      const std::int32_t error = std::atoi(rest.substr(0, space).c_str());
      // For ever longer than was said: a reader asks again, and so does the test.
      if (error == os::errorMoreData) return;
      registry.refusals[rest.substr(std::min(space + 1, rest.size()))] = error;
      isHindered = true;
    }
    if (line.compare(0, 5, "grow ") == 0) {
      const std::string path = CutPart(rest), name = CutPart(rest);
      growths["read " + Below(path) + " : " + name] = {Below(path), name, Unescaped(rest)};
      isHindered = true;
    }
  }

  // A key may be refused or a value changed, so that the plain walk sees something else.
  bool isHindered = false;

 private:
  struct Growth {
    std::string path, name, data;
  };

  // Once for each: a writer that never rests would keep every reader waiting.
  void GrowBefore(const std::string& call) {
    const auto found = growths.find(call);
    if (found == growths.end()) return;
    const Growth growth = found->second;
    growths.erase(found);
    registry.Put(growth.path, growth.name, growth.data);
  }

  MemoryRegistry& registry;
  std::map<std::string, Growth> growths;
};

bool IsSameName(const std::string& a, const char* b) {
  return Kest(a).EqualsIgnoringCase(b) && a.find('\0') == std::string::npos;
}

// Nothing when the key has no such value.
std::optional<std::string> DataOf(const std::vector<Value>& values, const char* name) {
  for (const Value& value : values) {
    if (IsSameName(value.name, name)) return value.data;
  }
  return std::nullopt;
}

std::string TextOf(const std::vector<Value>& values, const char* name) {
  return DataOf(values, name).value_or("").c_str();
}

float FloatOf(const std::string& text) {
  float value = 0;
  return std::sscanf(text.c_str(), "%f", &value) == 1 ? value : 0;
}

std::string CardOf(const std::vector<Value>& values) {
  const std::optional<std::string> data = DataOf(values, "CardType");
  if (!data || data->size() > 4) return "4294967295";
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < data->size(); ++i)
    number |= std::uint32_t{static_cast<unsigned char>((*data)[i])} << (8 * i);
  return std::to_string(number);
}

Pairs FieldsOf(const std::string& date, const std::vector<Value>& values) {
  const std::string tax = TextOf(values, "Tax"), amount = TextOf(values, "Amount");
  // Through memory, where no processor keeps more digits than the type has.
  volatile float price = FloatOf(amount) - FloatOf(tax);
  char text[64];
  std::snprintf(text, sizeof text, "%.2f", static_cast<double>(price));
  return {{"KEST-Receipt-Date", date},
          {"KEST-Receipt-Price", text},
          {"KEST-Receipt-Tax", tax},
          {"KEST-Receipt-Total", amount},
          {"KEST-Receipt-Merchant", TextOf(values, "Merchant")},
          {"KEST-Receipt-Card", CardOf(values)},
          {"KEST-Receipt-TxN", TextOf(values, "TXN")}};
}

// A walk over the days and their receipts. A key without a name ends it.
std::optional<Pairs> Expected(MemoryRegistry& registry, const std::optional<std::string>& guid) {
  for (const std::string& date : registry.Subkeys(top)) {
    if (date.empty()) return std::nullopt;
    for (const std::string& sequence : registry.Subkeys(top + "\\" + date)) {
      if (sequence.empty()) break;
      const std::vector<Value> values = registry.Values(top + "\\" + date + "\\" + sequence);
      const std::string found = TextOf(values, "Guid");
      if (guid ? !found.empty() && found == *guid : found.empty()) return FieldsOf(date, values);
    }
  }
  return std::nullopt;
}

bool HasAllFields(const Pairs& fields) {
  const Pairs named = FieldsOf("", {});
  if (fields.size() != named.size() + 1) return false;
  for (std::size_t i = 0; i < named.size(); ++i) {
    if (fields[i + 1].first != named[i].first) return false;
  }
  return true;
}

void HoldReceipt(const World& world, MemoryRegistry& registry, const std::optional<std::string>& guid) {
  const Pairs before = {{"own", "field"}};
  std::optional<Pairs> expected = Expected(registry, guid);
  if (expected) expected->insert(expected->begin(), before.begin(), before.end());
  FieldSet receipt;
  receipt.Add("own", "field");
  const bool isFound = FindReceipt(guid ? String(guid->c_str()) : String(), receipt);
  const Pairs fields = PairsOf(receipt.Fields());
  if (!isFound) HOLD(fields == before);
  if (isFound) HOLD(HasAllFields(fields));
  if (world.isHindered) return;
  HOLD(isFound == expected.has_value());
  if (isFound) HOLD(fields == *expected);
}

void Check(Input input) {
  AllocationSystem memory;
  MemoryRegistry registry(memory);
  World world(registry);
  const std::string first = std::string(input.Line().c_str());
  std::optional<std::string> guid;
  if (first != "-") guid = first;
  while (!input.IsEmpty()) {
    const std::string line = input.Line();
    // Names and paths are texts.
    if (line.find('\0') == std::string::npos) world.Read(line);
  }
  {
    const SystemInForce inForce(registry);
    HoldReceipt(world, registry, guid);
  }
  HOLD(registry.OpenHandles() == 0);
  HOLD(registry.WrongHandles() == 0);
  HOLD(memory.Outstanding() == 0);
}

}  // namespace
}  // namespace kest::testing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t length) {
  kest::testing::Check(kest::testing::Input(bytes, length));
  return 0;
}
