// kest products: fetches a product list and shows it.
#pragma once

#include <string>

#include "session.h"

namespace kest_host {

struct ProductsOptions {
  ServerOptions server;
  std::string versionId;
  bool json = false;
};

// Answers the exit code. Data goes to stdout, words go to stderr. Throws std::runtime_error with a sentence for the
// user.
int RunProducts(const ProductsOptions& options);

}  // namespace kest_host
