#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

#include <boost/asio/ip/address.hpp>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>

#include "admin_routes.h"
#include "catalogue_file.h"
#include "commands.h"
#include "descriptors.h"
#include "files.h"
#include "http_server.h"
#include "key_pair.h"
#include "ledger.h"
#include "server_limits.h"
#include "wipe.h"

namespace sandbox {
namespace {

KeyPair LoadKeyPair(const std::filesystem::path& folder) {
  const std::filesystem::path file = folder / privateKeyFile;
  if (!std::filesystem::exists(file)) {
    throw std::runtime_error(folder.string() + " holds no " + privateKeyFile + ". Make a sandbox folder with \"" +
                             "kest-sandbox init " + folder.string() + "\".");
  }
  std::string text = ReadFile(file);
  const WipedAtEnd textWiped(text);
  try {
    return KeyPair::FromPrivateText(text);
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(file.string() + " cannot be used: " + error.what() +
                             ". Put the right key there, or remove the folder's files and make new ones with init.");
  }
}

// Clients are given public.key. One that does not fit the private key would make each of their calls fail without a
// word.
void CheckPublicKey(const std::filesystem::path& folder, const std::string& text) {
  const std::filesystem::path file = folder / publicKeyFile;
  if (!std::filesystem::exists(file)) return;
  const std::string found = ReadFile(file);
  if (found == text || found == text + "\n") return;
  throw std::runtime_error(file.string() + " does not belong to " + privateKeyFile +
                           ". Remove it; the ready line of serve tells the right key.");
}

struct ListenAddress {
  std::string host;
  std::uint16_t port = 0;
};

ListenAddress ParseAddress(const char* option, const std::string& text) {
  const std::size_t colon = text.rfind(':');
  std::string host = text.substr(0, colon == std::string::npos ? 0 : colon);
  const std::string port = colon == std::string::npos ? "" : text.substr(colon + 1);
  if (host.size() > 2 && host.front() == '[' && host.back() == ']') host = host.substr(1, host.size() - 2);
  const bool digits = !port.empty() && port.size() <= 5 && port.find_first_not_of("0123456789") == std::string::npos;
  boost::system::error_code error;
  boost::asio::ip::make_address(host, error);
  if (error || !digits || std::stoul(port) > 65535) {
    throw UsageError(std::string(option) + " needs a numeric address and a port, such as 127.0.0.1:0 or [::1]:8080");
  }
  return {host, static_cast<std::uint16_t>(std::stoul(port))};
}

WallClock ReadClock(const std::string& text) {
  if (text.empty()) return std::chrono::system_clock::now;
  const std::optional<WallTime> time = ReadTime(text);
  if (!time) throw UsageError("--clock needs a time in UTC, such as 2026-01-05T10:00:00Z");
  return [time = *time] { return time; };
}

Environment MakeEnvironment(const std::optional<std::uint64_t>& seed, spdlog::logger& log) {
  if (!seed) return Environment::OfMachine();
  log.warn("challenges and connection ids come from the seed {}: whoever knows it can guess them", *seed);
  return Environment::Seeded(*seed);
}

void LoadFaults(const std::string& file, FaultTable& faults) {
  if (file.empty()) return;
  const std::string text = ReadFile(file);
  try {
    faults.Append(ReadFaults(text));
  } catch (const FaultError& error) {
    throw std::runtime_error(file + ": " + error.what());
  }
}

void PrintReady(const HttpServer& server, const std::string& key, std::optional<std::uint16_t> adminPort) {
  const std::string host = server.Host();
  const std::string shown = host.find(':') == std::string::npos ? host : "[" + host + "]";
  nlohmann::ordered_json line;
  line["event"] = "ready";
  line["address"] = shown + ":" + std::to_string(server.Port());
  line["host"] = host;
  line["port"] = server.Port();
  line["key"] = key;
  if (adminPort) line["admin"] = *adminPort;
  std::cout << line.dump() << std::endl;
  if (!std::cout) throw std::runtime_error("cannot write the ready line to stdout");
}

std::shared_ptr<spdlog::logger> MakeLog(bool verbose) {
  auto log = std::make_shared<spdlog::logger>("sandbox", std::make_shared<spdlog::sinks::stderr_sink_mt>());
  log->set_pattern("%Y-%m-%dT%H:%M:%S.%e %l %v");
  log->set_level(verbose ? spdlog::level::debug : spdlog::level::info);
  return log;
}

// Running out of file descriptors later would look like a failure of whatever needs one next.
void FitDescriptors(HttpLimits& limits, spdlog::logger& log) {
  const std::size_t allowed = RaiseDescriptors(limits.maxConnections + sparedDescriptors);
  if (allowed <= sparedDescriptors) {
    throw std::runtime_error("the process may have " + std::to_string(allowed) + " file descriptors and needs " +
                             std::to_string(sparedDescriptors + 1) + ". Allow it more, as with \"ulimit -n\".");
  }
  if (allowed >= limits.maxConnections + sparedDescriptors) return;
  limits.maxConnections = allowed - sparedDescriptors;
  log.warn("the process may have {} file descriptors, so {} connections are served at the same time", allowed,
           limits.maxConnections);
}

}  // namespace

void Serve(const ServeOptions& options) {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);  // a file at its size limit is a sale that fails, not the server's end
  const std::filesystem::path folder = options.folder;
  const bool hasAdmin = !options.admin.empty();
  const ListenAddress listen = ParseAddress("--listen", options.listen);
  const ListenAddress admin = hasAdmin ? ParseAddress("--admin", options.admin) : ListenAddress();
  const WallClock clock = ReadClock(options.clock);
  FaultTable faults;
  LoadFaults(options.faults, faults);
  const KeyPair keyPair = LoadKeyPair(folder);
  const std::string publicText = keyPair.PublicText();
  CheckPublicKey(folder, publicText);
  CatalogueFile catalogue(folder / catalogueFile);
  Ledger ledger(folder / salesFile, clock);
  const Operations operations(catalogue.Current(), ledger);
  const std::shared_ptr<spdlog::logger> log = MakeLog(options.verbose);
  CommerceServer commerceServer(keyPair, operations, options.sessions, MakeEnvironment(options.seed, *log));

  RequestLog requests(RequestLog::mostBytes, clock);
  AdminRoutes routes({faults, requests, commerceServer, ledger});
  HttpLimits limits = options.http;
  FitDescriptors(limits, *log);
  HttpServer server(commerceServer, limits, log, &faults, hasAdmin ? &requests : nullptr);
  server.StopOnSignals();
  server.Listen(listen.host, listen.port);
  std::optional<std::uint16_t> adminPort;
  if (hasAdmin) adminPort = server.ListenAdmin(routes, admin.host, admin.port);
  server.Every(catalogueInterval, [&] { catalogue.Refresh(*log); });
  PrintReady(server, publicText, adminPort);
  server.Run();
}

}  // namespace sandbox
