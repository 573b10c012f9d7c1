#include "doctor.h"

#include <optional>

#include "card.h"
#include "exit_codes.h"
#include "library_file.h"
#include "output.h"
#include "reach.h"
#include "text.h"
#include "words.h"

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

void ExamineKey(Library& library, const ServerOptions& options, Findings& findings) {
  try {
    Configure(library, options);
    findings.keyIsGood = true;
  } catch (const std::runtime_error& error) {
    findings.keyIsGood = false;
    findings.faults.push_back(error.what());
  }
}

void ExamineExchange(Library& library, const DoctorOptions& options, Findings& findings) {
  // A server that nobody reaches needs no second attempt.
  if (options.server.server.empty() || !findings.keyIsGood.value_or(false) || !findings.serverAnswers.value_or(true)) {
    return;
  }
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

// Paths and the system's words are of any bytes.
std::string Shown(const std::string& text) {
  return HideCards(ToUtf8(text));
}

Json ToJson(const Findings& findings) {
  Json faults = Json::array();
  for (const std::string& fault : findings.faults) faults.push_back(Shown(fault));
  Json missing = Json::array();
  for (const HostFunction& function : findings.missing) {
    missing.push_back({{"ordinal", function.ordinal}, {"name", function.name}});
  }
  const bool isKnown = findings.file.bits != 0;
  const Json functions = {{"found", FoundFunctions(findings)}, {"of", std::size(hostFunctions)}, {"missing", missing}};
  const Json library = {
      {"path", Shown(findings.path)},
      {"loaded", findings.loaded},
      {"bits", isKnown ? Json(findings.file.bits) : Json(nullptr)},
      {"size", findings.file.readable ? Json(findings.file.size) : Json(nullptr)},
      {"fileVersion", findings.fileVersion.empty() ? Json(nullptr) : Json(Shown(findings.fileVersion))},
      {"functions", functions},
  };
  return {{"library", library},
          {"programBits", programBits},
          {"key", KeyWord(findings)},
          {"server", ServerWord(findings)},
          {"exchange", ExchangeWord(findings)},
          {"faults", faults}};
}

Fields LibraryLines(const Findings& findings) {
  const LibraryFile& file = findings.file;
  Fields lines = {
      {"Library", findings.path.empty() ? "not found" : Shown(findings.path)},
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
  return lines;
}

// What is known stands there before the next thing is tried, which may take long or never end.
void Show(Fields lines, const DoctorOptions& options) {
  constexpr std::size_t widestName = 12;  // that of "File version"
  if (options.json) return;
  for (auto& line : lines) line.first.resize(widestName, ' ');
  PrintLines(lines);
  FinishOutput();
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
  Show(LibraryLines(findings), options);
  std::optional<Library> library;
  if (findings.loaded && findings.missing.empty() && !options.server.keyFile.empty()) {
    library.emplace(options.server.library);
    ExamineKey(*library, options.server, findings);
  }
  Show({{"Key", KeyWord(findings)}}, options);
  ExamineServer(options.server, findings);
  Show({{"Server", ServerWord(findings)}}, options);
  if (library) ExamineExchange(*library, options, findings);
  Show({{"Exchange", ExchangeWord(findings)}}, options);
  if (options.json) PrintJson(ToJson(findings));
  for (const std::string& fault : findings.faults) Say(fault);
  FinishOutput();
  return ExitCodeOf(findings);
}

}  // namespace kest_host
