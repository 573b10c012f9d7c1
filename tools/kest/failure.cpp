#include "failure.h"

#include <iostream>
#include <stdexcept>

#include "error_table.h"
#include "exit_codes.h"

namespace kest_host {

int ExplainFailure(std::int32_t code, const ServerOptions& options) {
  if (code == KEST_ERROR_NONE) throw std::runtime_error("the library failed; there is probably not enough memory");
  if (code == KEST_ERROR_EXCHANGE) {
    std::cerr << "kest: no valid answer from " << options.server << " port " << options.port << " (error code " << code
              << "). Is the server running there, and is the key the server's own?\n";
    return exitExchangeFailed;
  }
  std::cerr << "kest: the server refused the request with its error code " << code;
  if (const KnownError* known = FindError(code)) {
    std::cerr << ". In the sandbox's table that is: " << known->meaning << "; " << known->advice
              << ". Another server may mean something else by it";
  }
  std::cerr << ".\n";
  return exitRefused;
}

Json ErrorJson(std::int32_t code) {
  if (code == KEST_ERROR_NONE) return nullptr;
  Json error = {{"code", code}, {"meaning", nullptr}, {"advice", nullptr}};
  if (const KnownError* known = FindError(code)) {
    error["meaning"] = known->meaning;
    error["advice"] = known->advice;
  }
  return error;
}

}  // namespace kest_host
