#include <nlohmann/json.hpp>
#include <set>

#include "fault.h"
#include "json_keys.h"
#include "operations.h"

namespace sandbox {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::uint64_t longestDelay = 600000;                        // milliseconds
constexpr std::uint64_t mostTimes = 1000000000;                       // and for bytes as well
constexpr std::string_view lineEnds = std::string_view("\r\n\0", 3);  // nothing that a line is made of

[[noreturn]] void Fail(const std::string& place, const std::string& what) {
  throw FaultError(place + ": " + what);
}

std::string Quoted(const std::string& text) {
  return Json(text).dump(-1, ' ', true, Json::error_handler_t::replace);
}

bool OneLine(const std::string& text) {
  return text.find_first_of(lineEnds) == std::string::npos;
}

// One object of JSON, read key by key. It remembers the keys that were asked for, so that all others can be refused.
class ObjectReader {
 public:
  ObjectReader(const Json& toRead, std::string itsPlace) : json(toRead), place(std::move(itsPlace)) {
    if (!json.is_object()) Fail(place, "must be an object");
  }

  const Json* Find(const char* key) {
    known.insert(key);
    const auto found = json.find(key);
    return found == json.end() ? nullptr : &*found;
  }

  const Json& Get(const char* key) {
    const Json* value = Find(key);
    if (!value) Fail(place, std::string("\"") + key + "\" is missing");
    return *value;
  }

  std::uint64_t Number(const char* key, std::uint64_t least, std::uint64_t most) {
    const Json& value = Get(key);
    const std::uint64_t number = value.is_number_unsigned() ? value.get<std::uint64_t>() : most + 1;
    if (number >= least && number <= most) return number;
    Fail(At(key), "must be a whole number of " + std::to_string(least) + " to " + std::to_string(most));
  }

  std::string Text(const char* key) {
    const Json& value = Get(key);
    if (!value.is_string()) Fail(At(key), "must be a text");
    std::string text = value.get<std::string>();
    if (!OneLine(text)) Fail(At(key), "must have no line ends and no zero bytes");
    return text;
  }

  std::optional<std::string> OptionalText(const char* key) {
    if (!Find(key)) return std::nullopt;
    return Text(key);
  }

  void RefuseOthers() const {
    for (const auto& [key, value] : json.items()) {
      if (known.count(key) == 0) Fail(place, "the key " + Quoted(key) + " has no meaning here");
    }
  }

  std::string At(const char* key) const { return place + "." + key; }

 private:
  const Json& json;
  const std::string place;
  std::set<std::string> known;
};

FaultKind ReadKind(ObjectReader& object) {
  const std::string name = object.Text("kind");
  for (std::size_t i = 0; i < faultKindCount; i++) {
    if (name == faultKinds[i].name) return faultKinds[i].kind;
  }
  Fail(object.At("kind"), "there is no fault " + Quoted(name));
}

FaultPlace ReadPlace(ObjectReader& object) {
  const std::string name = object.OptionalText("at").value_or("request");
  if (name == "request") return FaultPlace::Request;
  if (name == "handshake") return FaultPlace::Handshake;
  Fail(object.At("at"), "must be \"handshake\" or \"request\"");
}

std::string ReadService(ObjectReader& object) {
  const std::optional<std::string> name = object.OptionalText("service");
  if (!name || Operations::Offers(*name)) return name.value_or("");
  Fail(object.At("service"), "there is no service " + Quoted(*name) + "; the server offers " + Operations::Names());
}

void ReadStatus(ObjectReader& object, Fault& fault) {
  fault.status = static_cast<int>(object.Number("code", 100, 999));
  fault.location = object.OptionalText("location");
  fault.reason = object.OptionalText("reason").value_or("");
}

void ReadField(ObjectReader& object, Fault& fault) {
  fault.name = object.Text("name");
  if (fault.name.empty() || fault.name.find(':') != std::string::npos) {
    Fail(object.At("name"), "must be a name without \":\"");
  }
  if (!object.Get("value").is_null()) fault.value = object.Text("value");
}

// A bare CR is let pass: clients have to notice it. LF would begin a line that the list does not show.
void ReadLines(ObjectReader& object, Fault& fault) {
  const Json& lines = object.Get("lines");
  const std::string place = object.At("lines");
  if (!lines.is_array() || lines.empty()) Fail(place, "must be a list of texts");
  for (const Json& line : lines) {
    if (!line.is_string()) Fail(place, "must be a list of texts");
    fault.lines.push_back(line.get<std::string>());
    if (fault.lines.back().empty()) Fail(place, "an empty line would end the head");
    if (fault.lines.back().find('\n') != std::string::npos) Fail(place, "write two lines instead of a line end");
  }
}

void ReadParameters(ObjectReader& object, Fault& fault) {
  switch (fault.kind) {
    case FaultKind::Delay:
      fault.delay = std::chrono::milliseconds(object.Number("milliseconds", 0, longestDelay));
      break;
    case FaultKind::Close:
    case FaultKind::CutBody:
      fault.bytes = object.Number("bytes", 0, mostTimes);
      break;
    case FaultKind::ContentLength:
      fault.value = object.Text("value");
      break;
    case FaultKind::Status:
      ReadStatus(object, fault);
      break;
    case FaultKind::Field:
      ReadField(object, fault);
      break;
    case FaultKind::Headers:
      ReadLines(object, fault);
      break;
    default:
      break;
  }
}

// A client limits the redirects that it follows and the time-outs that it tolerates, but not these.
bool IsAnsweredWithoutEnd(const Fault& fault) {
  return fault.kind == FaultKind::Status && (fault.status == 305 || fault.status == 411);
}

std::optional<std::uint64_t> ReadTimes(ObjectReader& object, const Fault& fault) {
  const std::uint64_t most = IsAnsweredWithoutEnd(fault) ? mostEndlessAnswers : mostTimes;
  const Json* times = object.Find("times");
  if (!times) return 1;
  if (*times != "always") return object.Number("times", 1, most);
  if (IsAnsweredWithoutEnd(fault)) return most;
  return std::nullopt;
}

Fault ReadFault(const Json& json, const std::string& place) {
  ObjectReader object(json, place);
  Fault fault;
  fault.kind = ReadKind(object);
  fault.at = ReadPlace(object);
  fault.service = ReadService(object);
  ReadParameters(object, fault);
  fault.left = ReadTimes(object, fault);
  object.RefuseOthers();
  fault.asked = json.dump();
  return fault;
}

Json Parse(const std::string& text) {
  try {
    return Json::parse(text);
  } catch (const Json::exception& error) {
    // The library's words begin with its own number for the error.
    const std::string words = error.what();
    throw FaultError("this is not JSON: " + words.substr(words.find("] ") + 2));
  }
}

}  // namespace

FaultKind ReadFaultKind(const std::string& text) {
  CheckKeys(text);
  const Json json = Parse(text);
  ObjectReader object(json, "the whole");
  const FaultKind kind = ReadKind(object);
  object.RefuseOthers();
  return kind;
}

std::vector<Fault> ReadFaults(const std::string& text) {
  CheckKeys(text);
  const Json json = Parse(text);
  ObjectReader object(json, "the whole");
  const Json& list = object.Get("faults");
  object.RefuseOthers();
  if (!list.is_array()) Fail("faults", "must be a list");
  std::vector<Fault> faults;
  for (const Json& one : list) faults.push_back(ReadFault(one, "faults[" + std::to_string(faults.size()) + "]"));
  return faults;
}

}  // namespace sandbox
