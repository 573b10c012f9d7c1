#include "session.h"

#include <algorithm>
#include <fstream>
#include <utility>

#include "fields.h"

namespace kest_host {
namespace {

std::string ReadKey(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string text;
  const bool isOpen = file.is_open();
  for (char character; file.get(character);) text += character;
  // A folder can be opened, but not read.
  if (!isOpen || file.bad()) throw std::runtime_error("the key file " + path + " cannot be read; kest-sandbox writes it as public.key");
  if (text.empty())
    throw std::runtime_error("the key file " + path + " is empty; kest-sandbox writes it as public.key");
  return text;
}

std::pair<std::string, std::uint16_t> SplitProxy(const std::string& proxy) {
  const std::size_t colon = std::min(proxy.rfind(':'), proxy.size());
  const std::string host = proxy.substr(0, colon);
  std::uint64_t port = 0;
  const bool isPort = colon == proxy.size() || ParseNumber(proxy.substr(colon + 1), 65535, port);
  const bool isHost = host.find_first_of("/:") == std::string::npos && host.empty() == proxy.empty();
  if (!isHost || !isPort) throw std::runtime_error("--proxy wants HOST or HOST:PORT, not \"" + proxy + "\"");
  return {host, static_cast<std::uint16_t>(port)};
}

}  // namespace

void Configure(Library& library, const ServerOptions& options) {
  const std::string key = ReadKey(options.keyFile);
  if (!library.KestSetServer(options.server.c_str(), options.port, key.c_str())) {
    throw std::runtime_error("the key in " + options.keyFile +
                             " is not accepted; it must be the base64 text of an RSA public key (DER)");
  }
  const auto [proxyHost, proxyPort] = SplitProxy(options.proxy);
  library.KestSetProxy(proxyHost.c_str(), proxyPort);
  library.KestSetApplicationGuid(options.guid.c_str());
}

}  // namespace kest_host
