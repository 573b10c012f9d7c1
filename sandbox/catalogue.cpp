#include "catalogue.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>

#include "decimal.h"

namespace sandbox {
namespace {

// Keeps the keys of an object in the order of the file: products are shown to the client in it.
using Json = nlohmann::ordered_json;

constexpr const char* spaceAtAnEnd = "a space at the beginning or at the end would be lost";

[[noreturn]] void Fail(const std::string& place, const std::string& what) {
  throw CatalogueError(place + ": " + what);
}

bool IsControl(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
}

// Names the place of a key; a key that could disturb the message is shown as JSON writes it.
std::string PlaceOf(const std::string& place, const std::string& key) {
  const bool plain = !key.empty() && std::all_of(key.begin(), key.end(), [](char c) { return c > ' ' && c < 0x7f; });
  return place + "." + (plain ? key : Json(key).dump());
}

void CheckCarried(const std::string& text, const std::string& place) {
  if (text.find('^') != std::string::npos) Fail(place, "\"^\" separates fields and cannot be part of one");
  if (std::any_of(text.begin(), text.end(), IsControl)) {
    Fail(place, "line ends and other control characters cannot be carried");
  }
  if (!text.empty() && (text.front() == ' ' || text.back() == ' ')) {
    Fail(place, spaceAtAnEnd);
  }
}

void CheckName(const std::string& name, const std::string& place) {
  if (name.empty()) Fail(place, "a field needs a name");
  if (name.find(':') != std::string::npos) Fail(place, "\":\" ends a name and cannot be part of it");
  CheckCarried(name, place);
}

std::string ValueText(const Json& value, const std::string& place) {
  if (value.is_string()) return value.get<std::string>();
  if (value.is_number_integer()) return value.dump();
  Fail(place, value.is_number_float() ? "write a number with a fraction as text, such as \"19.95\""
                                      : "a value is a text or a whole number");
}

std::uint32_t ReadSku(const std::string& text, const std::string& place) {
  const std::optional<std::uint64_t> sku = text.size() <= 10 ? ReadDecimal(text) : std::nullopt;
  if (!sku || *sku > 0xffffffffu) Fail(place, "an SKU is a decimal number of 0 to 4294967295");
  return static_cast<std::uint32_t>(*sku);
}

Cents ReadPrice(const std::string& text, const std::string& place) {
  const std::optional<Cents> price = ReadAmount(text);
  if (!price) Fail(place, "a price is text with two decimals, such as \"19.95\"");
  return *price;
}

std::string RecordText(const FieldList& fields) {
  std::string record;
  for (const Field& field : fields) {
    if (!record.empty()) record.push_back('^');
    record.append(field.name).append(":").append(field.value);
  }
  return record;
}

Product ReadProduct(const Json& json, const std::string& place) {
  if (!json.is_object())
    Fail(place, "a product is an object such as {\"SKU\": 1, \"Name\": \"Pen\", \"Price\": \"1.00\"}");
  Product product;
  for (const auto& [name, value] : json.items()) {
    const std::string here = PlaceOf(place, name);
    CheckName(name, here);
    product.fields.push_back({name, ValueText(value, here)});
    CheckCarried(product.fields.back().value, here);
  }
  for (const char* name : {"SKU", "Name", "Price"}) {
    if (FieldOrEmpty(product.fields, name).empty()) Fail(place, std::string("\"") + name + "\" is missing or empty");
  }
  product.sku = ReadSku(*FindField(product.fields, "SKU"), place + ".SKU");
  product.price = ReadPrice(*FindField(product.fields, "Price"), place + ".Price");
  product.record = RecordText(product.fields);
  return product;
}

std::string ReadText(const Json& object, const char* key, const std::string& place) {
  const auto found = object.find(key);
  if (found == object.end() || !found->is_string() || found->get_ref<const std::string&>().empty()) {
    Fail(place, std::string("\"") + key + "\" must be a text that is not empty");
  }
  const std::string text = found->get<std::string>();
  if (std::any_of(text.begin(), text.end(), IsControl)) Fail(place + "." + key, "control characters cannot be carried");
  return text;
}

const Json& ReadArray(const Json& object, const char* key, const std::string& place) {
  const auto found = object.find(key);
  if (found == object.end() || !found->is_array()) Fail(place, std::string("\"") + key + "\" must be an array");
  return *found;
}

void CheckKeys(const Json& object, const std::set<std::string>& known, const std::string& place) {
  if (!object.is_object()) Fail(place, "an object is needed here");
  for (const auto& [key, value] : object.items()) {
    if (known.count(key) == 0) Fail(PlaceOf(place, key), "the server knows no key of this name");
  }
}

// A sale is made in the application's name when it has one, so the name has to be carried like a merchant.
std::string ReadMerchant(const Json& json, const std::string& place) {
  std::string merchant = "KESTAPI sandbox";
  for (const char* key : {"name", "merchant"}) {
    if (!json.contains(key)) continue;
    merchant = ReadText(json, key, place);
    if (merchant.front() == ' ' || merchant.back() == ' ') Fail(place + "." + key, spaceAtAnEnd);
  }
  return merchant;
}

int ReadTaxRate(const Json& json, const std::string& place) {
  if (!json.contains("taxPercent")) return 0;
  const std::optional<int> rate = ReadPercent(ReadText(json, "taxPercent", place));
  if (!rate) Fail(place + ".taxPercent", "a tax is text from 0 to 100 with at most two decimals, such as \"8.25\"");
  return *rate;
}

Application ReadApplication(const Json& json, const std::string& place) {
  CheckKeys(json, {"guid", "name", "version", "merchant", "taxPercent", "products"}, place);
  Application application;
  application.guid = ReadText(json, "guid", place);
  if (json.contains("version")) application.version = ReadText(json, "version", place);
  application.merchant = ReadMerchant(json, place);
  application.taxRate = ReadTaxRate(json, place);
  const Json& products = ReadArray(json, "products", place);
  for (std::size_t i = 0; i < products.size(); i++) {
    const std::string here = place + ".products[" + std::to_string(i) + "]";
    application.products.push_back(ReadProduct(products[i], here));
    const bool first = application.bySku.emplace(application.products.back().sku, i).second;
    if (!first) Fail(here + ".SKU", "another product has this SKU already");
  }
  return application;
}

Json ParseJson(std::string_view text) {
  try {
    return Json::parse(text);
  } catch (const Json::parse_error& error) {
    const std::string_view upTo = text.substr(0, error.byte);
    const auto line = 1 + std::count(upTo.begin(), upTo.end(), '\n');
    Fail("line " + std::to_string(line), "this is not JSON in UTF-8 (byte " + std::to_string(error.byte) + ")");
  }
}

}  // namespace

Catalogue Catalogue::FromText(std::string_view text) {
  const Json json = ParseJson(text);
  CheckKeys(json, {"applications"}, "catalogue");
  Catalogue catalogue;
  const Json& entries = ReadArray(json, "applications", "catalogue");
  for (std::size_t i = 0; i < entries.size(); i++) {
    const std::string place = "applications[" + std::to_string(i) + "]";
    Application application = ReadApplication(entries[i], place);
    const auto same = [&](const Application& other) {
      return EqualIgnoringCase(other.guid, application.guid) && other.version == application.version;
    };
    if (std::any_of(catalogue.applications.begin(), catalogue.applications.end(), same)) {
      Fail(place, "another entry has this guid and version already");
    }
    for (const Product& product : application.products) catalogue.firstWithSku.emplace(product.sku, i);
    catalogue.applications.push_back(std::move(application));
  }
  return catalogue;
}

bool Catalogue::HasGuid(std::string_view guid) const {
  return std::any_of(applications.begin(), applications.end(),
                     [&](const Application& entry) { return EqualIgnoringCase(entry.guid, guid); });
}

const Application* Catalogue::Find(std::string_view guid, std::string_view version) const {
  const Application* forEveryVersion = nullptr;
  for (const Application& entry : applications) {
    if (!EqualIgnoringCase(entry.guid, guid)) continue;
    if (!entry.version) forEveryVersion = &entry;
    if (entry.version && *entry.version == version) return &entry;
  }
  return forEveryVersion;
}

std::optional<Offer> Catalogue::FindSku(std::uint32_t sku, const Application* application) const {
  if (!application) {
    const auto first = firstWithSku.find(sku);
    if (first == firstWithSku.end()) return std::nullopt;
    application = &applications[first->second];
  }
  const auto found = application->bySku.find(sku);
  if (found == application->bySku.end()) return std::nullopt;
  return Offer{application, &application->products[found->second]};
}

}  // namespace sandbox
