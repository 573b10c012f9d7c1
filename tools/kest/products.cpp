#include "products.h"

#include <iostream>

#include "exit_codes.h"
#include "failure.h"
#include "output.h"

namespace kest_host {
namespace {

// What a product list held when it came.
struct Listing {
  std::vector<Fields> products;
  Fields reply;
  std::int32_t error = KEST_ERROR_NONE;
};

// A product list is not refused by its result: the reply's own field says so.
std::int32_t ErrorOf(const Fields& reply) {
  const std::string* text = Find(reply, "KEST-Error");
  if (text == nullptr || text->find_first_not_of('0') == std::string::npos) return KEST_ERROR_NONE;
  std::uint64_t code;
  return ParseNumber(*text, INT32_MAX, code) ? static_cast<std::int32_t>(code) : -1;
}

Listing Fetch(Library& library, const std::string& versionId) {
  const auto list = Hold(library.KestCreateProductList(), library.KestDestroyProductList);
  Listing listing;
  if (!library.KestGetProductList(list.get(), versionId.c_str())) {
    listing.error = library.KestGetErrorCode(KEST_FIELDS(list.get()));
    // Nothing but memory can be wanting when no code is left.
    if (listing.error == KEST_ERROR_NONE) throw std::runtime_error("there is not enough memory");
    return listing;
  }
  while (KestFieldSet* product = library.KestNextProduct(list.get())) {
    listing.products.push_back(FieldsOf(library, product));
  }
  listing.reply = FieldsOf(library, KEST_FIELDS(list.get()));
  listing.error = ErrorOf(listing.reply);
  return listing;
}

}  // namespace

int RunProducts(const ProductsOptions& options) {
  Library library(options.server.library);
  Configure(library, options.server);
  const Listing listing = Fetch(library, options.versionId);
  const int code = listing.error == KEST_ERROR_NONE ? exitDone : ExplainFailure(listing.error, options.server);
  if (options.json) {
    PrintJson({{"products", ToJson(listing.products)},
               {"reply", ToJson(listing.reply)},
               {"error", ErrorJson(listing.error)}});
  } else if (!listing.products.empty()) {
    PrintRecords(listing.products);
  } else if (code == exitDone) {
    std::cerr << "kest: the server lists no products for this application\n";
  }
  FinishOutput();
  return code;
}

}  // namespace kest_host
