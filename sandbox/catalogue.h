// The products that the server sells, read from catalogue.json once at start. Everything that could not be carried to a
// client is refused there. Texts stay the UTF-8 bytes of the file. Constant once made: any thread may read it.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "fields.h"

namespace sandbox {

struct Product {
  FieldList fields;    // in the order of the file; "SKU", "Name" and "Price" are among them
  std::string record;  // the value of a "KEST-Product" field: name:value pairs joined by "^"
};

struct Application {
  std::string guid;
  std::optional<std::string> version;  // nothing: for every version that has no entry of its own
  std::vector<Product> products;
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

  const std::vector<Application>& Applications() const { return applications; }

 private:
  std::vector<Application> applications;
};

}  // namespace sandbox
