// kest products: fetches a product list and shows it.
#pragma once

#include <cstdint>
#include <string>

namespace kest_host {

struct ProductsOptions {
  std::string library;  // path; empty: the one beside the program
  std::string server;
  std::uint16_t port = 80;
  std::string keyFile;
  std::string guid;
  std::string versionId;
  std::string proxy;  // HOST[:PORT]; empty: none
  bool json = false;
};

// Answers the exit code. Data goes to stdout, words go to stderr. Throws std::runtime_error with a sentence for the user.
int RunProducts(const ProductsOptions& options);

}  // namespace kest_host
