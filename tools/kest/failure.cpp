#include "failure.h"

#include <stdexcept>

#include "error_table.h"
#include "exit_codes.h"
#include "words.h"

namespace kest_host {
namespace {

// The library's own code means nothing when a server sends it.
const KnownError* FindServersError(std::int32_t code) {
  return code == KEST_ERROR_EXCHANGE ? nullptr : FindError(code);
}

}  // namespace

int ExplainFailure(std::int32_t code, const ServerOptions& options) {
  if (code == KEST_ERROR_NONE) throw std::runtime_error("the library failed; there is probably not enough memory");
  if (code == KEST_ERROR_EXCHANGE) {
    Say("no valid answer from " + options.server + " port " + std::to_string(options.port) + " (error code " +
        std::to_string(code) + "). Is the server running there, and is the key the server's own?");
    return exitExchangeFailed;
  }
  return ExplainRefusal(code);
}

int ExplainRefusal(std::int32_t code) {
  std::string words = "the server refused the request with its error code " + std::to_string(code);
  if (const KnownError* known = FindServersError(code)) {
    words += std::string(". In the sandbox's table that is: ") + known->meaning + "; " + known->advice +
             ". Another server may mean something else by it";
  }
  Say(words + ".");
  return exitRefused;
}

Json ErrorJson(std::int32_t code, bool isServers) {
  if (code == KEST_ERROR_NONE) return nullptr;
  Json error = {{"code", code}, {"meaning", nullptr}, {"advice", nullptr}};
  if (const KnownError* known = isServers ? FindServersError(code) : FindError(code)) {
    error["meaning"] = known->meaning;
    error["advice"] = known->advice;
  }
  return error;
}

}  // namespace kest_host
