#include "products.h"

#include "card.h"
#include "exit_codes.h"
#include "failure.h"
#include "output.h"
#include "words.h"

namespace kest_host {
namespace {

// What a product list held when it came.
struct Listing {
  std::vector<Fields> products;
  Fields reply;
  std::int32_t error = KEST_ERROR_NONE;
  bool isRefused = false;  // the error is the server's own
};

// A product list is not refused by its result: the reply's own field says so.
std::int32_t ErrorOf(const Fields& reply) {
  const std::string* text = Find(reply, "KEST-Error");
  return text == nullptr ? KEST_ERROR_NONE : ReadErrorCode(*text);
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
    HideCard(listing.products.back(), {});
  }
  listing.reply = FieldsOf(library, KEST_FIELDS(list.get()));
  listing.error = ErrorOf(listing.reply);
  listing.isRefused = listing.error != KEST_ERROR_NONE;
  HideCard(listing.reply, {});
  return listing;
}

int Explain(const Listing& listing, const ServerOptions& options) {
  if (listing.error == KEST_ERROR_NONE) return exitDone;
  return listing.isRefused ? ExplainRefusal(listing.error) : ExplainFailure(listing.error, options);
}

}  // namespace

int RunProducts(const ProductsOptions& options) {
  Library library(options.server.library);
  Configure(library, options.server);
  const Listing listing = Fetch(library, options.versionId);
  const int code = Explain(listing, options.server);
  if (options.json) {
    PrintJson({{"products", ToJson(listing.products)},
               {"reply", ToJson(listing.reply)},
               {"error", ErrorJson(listing.error, listing.isRefused)}});
  } else if (!listing.products.empty()) {
    PrintRecords(listing.products);
  } else if (code == exitDone) {
    Say("the server lists no products for this application");
  }
  FinishOutput();
  return code;
}

}  // namespace kest_host
