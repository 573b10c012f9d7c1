#include "doctor.h"

#include <iostream>
#include <optional>

#include "exit_codes.h"
#include "library_file.h"
#include "output.h"
#include "reach.h"

namespace kest_host {
namespace {

struct HostFunction {
  const char* name;
  int ordinal;
};

constexpr HostFunction hostFunctions[] = {
#define KEST_HOST_NAME(name, ordinal) {#name, ordinal},
    KEST_HOST_FUNCTIONS(KEST_HOST_NAME)
#undef KEST_HOST_NAME
};

constexpr int programBits = static_cast<int>(sizeof(void*)) * 8;

struct Findings {
  std::string path;
  LibraryFile file;
  bool loaded = false;
  std::string fileVersion;
  std::vector<HostFunction> missing;
  std::optional<bool> keyIsGood;
  std::optional<bool> serverAnswers;
  std::optional<bool> exchangeWorks;
  std::vector<std::string> faults;
};

void ExamineLibrary(const std::string& path, Findings& findings) {
  findings.path = path;
  try {
    const Module module(path);
    findings.loaded = true;
    findings.path = module.Path();
    findings.fileVersion = module.FileVersion();
    for (const HostFunction& function : hostFunctions) {
      if (module.Find(function.name, function.ordinal) == nullptr) findings.missing.push_back(function);
    }
  } catch (const std::runtime_error& error) {
    findings.faults.push_back(error.what());
  }
  findings.file = InspectLibraryFile(findings.path);
  if (!findings.loaded && findings.file.bits != 0 && findings.file.bits != programBits) {
    findings.faults.push_back("the library is of " + std::to_string(findings.file.bits) + " bits and this program of " +
                              std::to_string(programBits) + ": only a program of as many bits can load it");
  }
  if (!findings.missing.empty()) {
    findings.faults.push_back("the library lacks " + std::to_string(findings.missing.size()) +
                              " functions; take one of the version that this program was made for");
  }
}

bool Exchange(Library& library, const std::string& versionId) {
  const auto list = Hold(library.KestCreateProductList(), library.KestDestroyProductList);
  return library.KestGetProductList(list.get(), versionId.c_str()) != 0;
}

// Needs a library that has all its functions.
void ExamineKey(const DoctorOptions& options, Findings& findings) {
  Library library(options.server.library);
  try {
    Configure(library, options.server);
    findings.keyIsGood = true;
  } catch (const std::runtime_error& error) {
    findings.keyIsGood = false;
    findings.faults.push_back(error.what());
  }
  // A server that nobody reaches needs no second attempt.
  if (options.server.server.empty() || !*findings.keyIsGood || !findings.serverAnswers.value_or(true)) return;
  findings.exchangeWorks = Exchange(library, options.versionId);
  if (*findings.exchangeWorks) return;
  findings.faults.push_back(
      findings.serverAnswers
          ? "the server takes connections, but the exchange failed: the key is not its own, or it is "
            "no commerce server"
          : "the exchange through the proxy failed: the proxy or the server is not there, or the key "
            "is not the server's own");
}

void ExamineServer(const ServerOptions& options, Findings& findings) {
  // Behind a proxy the server need not be reachable from here.
  if (options.server.empty() || !options.proxy.empty()) return;
  findings.serverAnswers = CanConnect(options.server, options.port);
  if (*findings.serverAnswers) return;
  findings.faults.push_back("nobody takes connections at " + options.server + " port " + std::to_string(options.port) +
                            ": is the server running there?");
}

const char* Word(const std::optional<bool>& finding, const char* good, const char* bad) {
  return !finding ? "not checked" : *finding ? good : bad;
}

const char* KeyWord(const Findings& findings) {
  return Word(findings.keyIsGood, "good", "unusable");
}
const char* ServerWord(const Findings& findings) {
  return Word(findings.serverAnswers, "reachable", "not reachable");
}
const char* ExchangeWord(const Findings& findings) {
  return Word(findings.exchangeWorks, "done", "failed");
}

std::size_t FoundFunctions(const Findings& findings) {
  return findings.loaded ? std::size(hostFunctions) - findings.missing.size() : 0;
}

Json ToJson(const Findings& findings) {
  Json missing = Json::array();
  for (const HostFunction& function : findings.missing) {
    missing.push_back({{"ordinal", function.ordinal}, {"name", function.name}});
  }
  const bool isKnown = findings.file.bits != 0;
  const Json functions = {{"found", FoundFunctions(findings)}, {"of", std::size(hostFunctions)}, {"missing", missing}};
  const Json library = {
      {"path", findings.path},
      {"loaded", findings.loaded},
      {"bits", isKnown ? Json(findings.file.bits) : Json(nullptr)},
      {"size", findings.file.readable ? Json(findings.file.size) : Json(nullptr)},
      {"fileVersion", findings.fileVersion.empty() ? Json(nullptr) : Json(findings.fileVersion)},
      {"functions", functions},
  };
  return {{"library", library},
          {"programBits", programBits},
          {"key", KeyWord(findings)},
          {"server", ServerWord(findings)},
          {"exchange", ExchangeWord(findings)},
          {"faults", findings.faults}};
}

void Print(const Findings& findings) {
  const LibraryFile& file = findings.file;
  Fields lines = {
      {"Library", findings.path.empty() ? "not found" : findings.path},
      {"Loaded", findings.loaded ? "yes" : "no"},
      {"Bits", file.bits == 0 ? "unknown" : std::to_string(file.bits) + "-bit"},
      {"Size", file.readable ? std::to_string(file.size) + " bytes" : "unknown"},
      {"File version", findings.fileVersion.empty() ? "none" : findings.fileVersion},
      {"Functions", std::to_string(FoundFunctions(findings)) + " of " + std::to_string(std::size(hostFunctions))},
  };
  for (const HostFunction& function : findings.missing) {
    lines.emplace_back("Missing", std::to_string(function.ordinal) + " " + function.name);
  }
  lines.emplace_back("Program", std::to_string(programBits) + "-bit");
  lines.emplace_back("Key", KeyWord(findings));
  lines.emplace_back("Server", ServerWord(findings));
  lines.emplace_back("Exchange", ExchangeWord(findings));
  PrintLines(lines);
}

int ExitCodeOf(const Findings& findings) {
  if (!findings.loaded || !findings.missing.empty() || !findings.keyIsGood.value_or(true)) return exitFailed;
  if (!findings.serverAnswers.value_or(true)) return exitExchangeFailed;
  if (findings.exchangeWorks.value_or(true)) return exitDone;
  // Who takes connections and gives no valid answer has another key; behind a proxy nobody can tell.
  return findings.serverAnswers ? exitFailed : exitExchangeFailed;
}

}  // namespace

int RunDoctor(const DoctorOptions& options) {
  Findings findings;
  ExamineLibrary(options.server.library, findings);
  ExamineServer(options.server, findings);
  const bool isUsable = findings.loaded && findings.missing.empty();
  if (isUsable && !options.server.keyFile.empty()) ExamineKey(options, findings);
  if (options.json) {
    PrintJson(ToJson(findings));
  } else {
    Print(findings);
  }
  for (const std::string& fault : findings.faults) std::cerr << "kest: " << fault << '\n';
  FinishOutput();
  return ExitCodeOf(findings);
}

}  // namespace kest_host
