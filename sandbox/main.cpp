// kest-sandbox: the commerce server that applications are developed and tested against.
#include <CLI/CLI.hpp>
#include <charconv>
#include <cmath>
#include <exception>
#include <iostream>
#include <string>
#include <system_error>

#include "commands.h"

namespace {

enum ExitCode { exitDone = 0, exitFailed = 1, exitUsage = 2 };

// Options are read as these; CLI11 knows no durations.
struct Numbers {
  unsigned sessionSeconds = 300;
  double clientSeconds = 30;
};

void DescribeInit(CLI::App& app, sandbox::InitOptions& options) {
  app.add_option("DIR", options.folder, "Folder to make or to fill")->required();
  app.add_option("--bits", options.bits, "Length of the server key in bits: 1024 or 2048")
      ->check(CLI::IsMember({1024u, 2048u}))
      ->capture_default_str();
}

// What is wrong with the text of a seed; empty for a number below 2^64. Left alone, a sign, a leading zero and what is too
// large would be taken, each for another number.
std::string NotASeed(const std::string& text) {
  std::uint64_t seed = 0;
  const char* end = text.data() + text.size();
  const auto [next, error] = std::from_chars(text.data(), end, seed);
  const bool isSeed = error == std::errc() && next == end && (text[0] != '0' || text.size() == 1);
  return isSeed ? "" : "the seed is a decimal number below 2^64, not " + text;
}

void DescribeServe(CLI::App& app, sandbox::ServeOptions& options, Numbers& numbers) {
  const auto count = [](std::size_t least, std::size_t most) { return CLI::Range(least, most); };
  app.add_option("DIR", options.folder, "Folder that init made")->required();
  app.add_option("--listen", options.listen, "Numeric address and port; port 0 takes a free one")
      ->capture_default_str();
  app.add_option("--admin", options.admin,
                 "Loopback address and port on which tests ask for faults and look at requests");
  app.add_option("--faults", options.faults, "File of faults to begin with");
  app.add_option("--seed", options.seed, "Draw the same challenges and connection ids in every run")->check(NotASeed);
  app.add_option("--clock", options.clock, "Date sales and requests with this time, such as 2026-01-05T10:00:00Z");
  app.add_option("--session-seconds", numbers.sessionSeconds, "Seconds from a handshake until its session expires")
      ->check(count(1, 86400))
      ->capture_default_str();
  app.add_option("--max-sessions", options.sessions.most, "Sessions held at the same time")
      ->check(count(1, 1000000))
      ->capture_default_str();
  app.add_option("--client-seconds", numbers.clientSeconds,
                 "Seconds that a client has to send a request, and again to take the reply")
      ->check(CLI::Range(0.01, 3600.0))
      ->capture_default_str();
  app.add_option("--max-connections", options.http.maxConnections, "Connections served at the same time")
      ->check(count(1, 10000))
      ->capture_default_str();
  app.add_option("--max-head", options.http.maxHead, "Bytes of request line and header fields")
      ->check(count(256, 1 << 24))
      ->capture_default_str();
  app.add_option("--max-body", options.http.maxBody, "Bytes of a request's body")
      ->check(count(1, 1 << 30))
      ->capture_default_str();
  app.add_flag("--verbose", options.verbose, "Log the steps of a request too");
}

int Run(int argc, char** argv) {
  sandbox::InitOptions initOptions;
  sandbox::ServeOptions serveOptions;
  Numbers numbers;
  CLI::App app("A commerce server to develop and test against", "kest-sandbox");
  app.require_subcommand(1);
  CLI::App* init = app.add_subcommand("init", "Make a key pair and a sample catalogue in a folder");
  CLI::App* serve = app.add_subcommand("serve", "Serve such a folder until SIGTERM or SIGINT");
  DescribeInit(*init, initOptions);
  DescribeServe(*serve, serveOptions, numbers);
  try {
    app.parse(argc, argv);
    // Which is neither below the range nor above it.
    if (std::isnan(numbers.clientSeconds)) throw CLI::ValidationError("--client-seconds", "must be a number");
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? exitDone : exitUsage;
  }

  if (init->parsed()) {
    sandbox::Init(initOptions);
  } else {
    serveOptions.sessions.lifetime = std::chrono::seconds(numbers.sessionSeconds);
    serveOptions.http.clientTime = std::chrono::milliseconds(static_cast<long>(numbers.clientSeconds * 1000));
    sandbox::Serve(serveOptions);
  }
  return exitDone;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const sandbox::UsageError& error) {
    std::cerr << "kest-sandbox: " << error.what() << "\n";
    return exitUsage;
  } catch (const std::exception& error) {
    std::cerr << "kest-sandbox: " << error.what() << "\n";
    return exitFailed;
  }
}
