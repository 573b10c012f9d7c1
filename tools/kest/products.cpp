#include "products.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>
#include <vector>

#include "exit_codes.h"
#include "library.h"
#include "text.h"

namespace kest_host {
namespace {

using Fields = std::vector<std::pair<std::string, std::string>>;

// What a product list held when it came.
struct Listing {
  std::vector<Fields> products;
  Fields reply;
};

std::string ReadKey(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (!file) throw std::runtime_error("the key file " + path + " cannot be read; kest-sandbox writes it as public.key");
  if (text.empty()) throw std::runtime_error("the key file " + path + " is empty; kest-sandbox writes it as public.key");
  return text;
}

std::pair<std::string, std::uint16_t> SplitProxy(const std::string& proxy) {
  const std::size_t colon = std::min(proxy.rfind(':'), proxy.size());
  const std::string host = proxy.substr(0, colon);
  const std::string digits = colon < proxy.size() ? proxy.substr(colon + 1) : "0";
  const bool isNumber = !digits.empty() && digits.size() <= 5 && digits.find_first_not_of("0123456789") == std::string::npos;
  const int port = isNumber ? std::stoi(digits) : -1;
  const bool isHost = host.find_first_of("/:") == std::string::npos && host.empty() == proxy.empty();
  if (!isHost || port < 0 || port > 65535) {
    throw std::runtime_error("--proxy wants HOST or HOST:PORT, not \"" + proxy + "\"");
  }
  return {host, static_cast<std::uint16_t>(port)};
}

Fields FieldsOf(Library& library, KestFieldSet* set) {
  Fields fields;
  const std::int32_t count = library.KestGetFieldCount(set);
  for (std::int32_t i = 0; i < count; ++i) {
    fields.emplace_back(library.KestGetFieldName(set, i), library.KestGetFieldValue(set, i));
  }
  return fields;
}

void Configure(Library& library, const ProductsOptions& options) {
  const std::string key = ReadKey(options.keyFile);
  if (!library.KestSetServer(options.server.c_str(), options.port, key.c_str())) {
    throw std::runtime_error("the key in " + options.keyFile +
                             " is not accepted; it must be the base64 text of an RSA public key (DER)");
  }
  const auto [proxyHost, proxyPort] = SplitProxy(options.proxy);
  library.KestSetProxy(proxyHost.c_str(), proxyPort);
  library.KestSetApplicationGuid(options.guid.c_str());
}

std::string ValueOf(const Fields& fields, const std::string& name) {
  for (const auto& field : fields) {
    if (field.first == name) return field.second;
  }
  return {};
}

// SKU, Name and Price first, then the others in the order in which they first appear.
std::vector<std::string> ColumnsOf(const std::vector<Fields>& products) {
  std::vector<std::string> columns;
  const auto add = [&columns](const std::string& name) {
    if (std::find(columns.begin(), columns.end(), name) == columns.end()) columns.push_back(name);
  };
  for (const char* first : {"SKU", "Name", "Price"}) {
    const auto has = [first](const Fields& product) {
      return std::any_of(product.begin(), product.end(), [first](const auto& field) { return field.first == first; });
    };
    if (std::any_of(products.begin(), products.end(), has)) add(first);
  }
  for (const Fields& product : products) {
    for (const auto& field : product) add(field.first);
  }
  return columns;
}

void PrintTable(const std::vector<Fields>& products) {
  const std::vector<std::string> names = ColumnsOf(products);
  std::vector<std::vector<std::string>> rows(1);
  for (const std::string& name : names) rows[0].push_back(ForTerminal(name));
  for (const Fields& product : products) {
    rows.emplace_back();
    for (const std::string& name : names) rows.back().push_back(ForTerminal(ValueOf(product, name)));
  }
  std::vector<std::size_t> widths(names.size());
  for (const auto& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], Columns(row[i]));
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

nlohmann::ordered_json ToJson(const Fields& fields) {
  auto object = nlohmann::ordered_json::object();
  for (const auto& field : fields) {
    const std::string name = ToUtf8(field.first);
    // Of a repeated name the first field counts, as it does in the library.
    if (!object.contains(name)) object[name] = ToUtf8(field.second);
  }
  return object;
}

void PrintJson(const Listing& listing) {
  auto products = nlohmann::ordered_json::array();
  for (const Fields& product : listing.products) products.push_back(ToJson(product));
  const nlohmann::ordered_json document = {{"products", products}, {"reply", ToJson(listing.reply)}};
  std::cout << document.dump(2) << '\n';
}

// Owns the list for one scope.
class ListHolder {
 public:
  explicit ListHolder(Library& used) : library(used), list(used.KestCreateProductList()) {
    if (list == nullptr) throw std::runtime_error("there is not enough memory");
  }
  ~ListHolder() { library.KestDestroyProductList(list); }
  ListHolder(const ListHolder&) = delete;
  ListHolder& operator=(const ListHolder&) = delete;
  KestProductList* Get() const { return list; }

 private:
  Library& library;
  KestProductList* list;
};

Listing Collect(Library& library, KestProductList* list) {
  Listing listing;
  while (KestFieldSet* product = library.KestNextProduct(list)) listing.products.push_back(FieldsOf(library, product));
  listing.reply = FieldsOf(library, KEST_FIELDS(list));
  return listing;
}

int ExitCodeOf(Library& library, KestProductList* list) {
  const char* error = library.KestGetField(KEST_FIELDS(list), "KEST-Error");
  if (error == nullptr || std::string(error).find_first_not_of('0') == std::string::npos) return exitDone;
  std::cerr << "kest: the server refused the request with its error code " << ForTerminal(error) << '\n';
  return exitRefused;
}

}  // namespace

int RunProducts(const ProductsOptions& options) {
  Library library(options.library);
  Configure(library, options);
  ListHolder list(library);
  if (!library.KestGetProductList(list.Get(), options.versionId.c_str())) {
    std::cerr << "kest: no valid answer from " << options.server << " port " << options.port << " (error code "
              << library.KestGetErrorCode(KEST_FIELDS(list.Get()))
              << "). Is the server running there, and is the key the server's own?\n";
    return exitExchangeFailed;
  }
  const Listing listing = Collect(library, list.Get());
  const int code = ExitCodeOf(library, list.Get());
  if (options.json) {
    PrintJson(listing);
  } else if (!listing.products.empty()) {
    PrintTable(listing.products);
  } else if (code == exitDone) {
    std::cerr << "kest: the server lists no products for this application\n";
  }
  if (!std::cout.flush()) throw std::runtime_error("the output could not be written");
  return code;
}

}  // namespace kest_host
