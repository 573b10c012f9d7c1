// The products that the server sells, read from the text of catalogue.json. Everything that could not be carried to a
// client is refused there. Texts stay the UTF-8 bytes of the file. Constant once made: any thread may read it.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "fields.h"
#include "money.h"

namespace sandbox {

struct Product {
  FieldList fields;    // in the order of the file; "SKU", "Name" and "Price" are among them
  std::string record;  // the value of a "KEST-Product" field: name:value pairs joined by "^"
  std::uint32_t sku;
  Cents price;  // of one, without tax
};

struct Application {
  std::string guid;
  std::optional<std::string> version;  // nothing: for every version that has no entry of its own
  std::string merchant;
  int taxRate = 0;  // hundredths of a percent
  std::vector<Product> products;
  std::unordered_map<std::uint32_t, std::size_t> bySku;  // indices of products
};

/// A product with the application whose merchant and tax it is sold under.
struct Offer {
  const Application* application;
  const Product* product;
};

/// Tells in words what is wrong with a catalogue, and at which place in the file.
class CatalogueError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class Catalogue {
 public:
  /// Reads a catalogue from the text of its file. Throws CatalogueError.
  static Catalogue FromText(std::string_view json);

  /// Tells whether some entry has this GUID (case of A to Z ignored).
  bool HasGuid(std::string_view guid) const;

  /// Finds the entry for that version of the application: the one that names the version, else the one that names none;
  /// null when there is neither. The GUID is compared as HasGuid does, the version byte for byte.
  const Application* Find(std::string_view guid, std::string_view version) const;

  /// Finds the product of that SKU in one application, or in the first of all that has it when the application is null.
  std::optional<Offer> FindSku(std::uint32_t sku, const Application* application) const;

  const std::vector<Application>& Applications() const { return applications; }

 private:
  std::vector<Application> applications;
  std::unordered_map<std::uint32_t, std::size_t> firstWithSku;  // indices of applications
};

}  // namespace sandbox
