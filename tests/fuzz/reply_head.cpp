// The head of a reply: the same whatever the pieces in which it arrives, what a plain reading of the rules gives, and
// the same again when it is written. The input is what the server sends.
#include <optional>

#include "fuzz/target.h"
#include "support/scripted_sockets.h"
#include "transport/header_block.h"

namespace kest::testing {
namespace {

struct Head {
  bool hasStatus = false, hasHeaders = false;
  std::string version, reason;
  int status = 0;
  Pairs headers;
  std::string rest;  // behind the head

  bool operator==(const Head& other) const {
    return hasStatus == other.hasStatus && hasHeaders == other.hasHeaders && version == other.version &&
           reason == other.reason && status == other.status && headers == other.headers && rest == other.rest;
  }
};

std::string ReadRest(CharacterReader& reader) {
  std::string rest;
  char area[61];
  for (std::int32_t got; (got = reader.ReadBytes(area, sizeof area)) > 0;) {
    rest.append(area, static_cast<std::size_t>(got));
  }
  return rest;
}

Head ReadHead(CharacterReader& reader) {
  Head head;
  HttpReply reply;
  head.hasStatus = ReadStatusLine(reader, reply);
  if (!head.hasStatus) return head;
  head.version = Plain(reply.version);
  head.status = reply.status;
  head.reason = Plain(reply.reason);
  head.hasHeaders = ReadHeaderBlock(reader, reply.headers);
  head.headers = PairsOf(reply.headers);
  if (head.hasHeaders) head.rest = ReadRest(reader);
  return head;
}

Head Delivered(const std::string& stream, const std::vector<std::size_t>& pieces) {
  ScriptedSockets sockets;
  sockets.hosts["shop.example"] = {"10.0.0.1"};
  sockets.conversations.push_back({{stream}, nullptr, pieces});
  Head head;
  {
    const SystemInForce inForce(sockets);
    SocketConnection connection;
    HOLD(connection.Connect("shop.example", 80));
    ConnectionReader reader(connection);
    head = ReadHead(reader);
  }
  HOLD(sockets.OpenSockets() == 0);
  HOLD(sockets.Outstanding() == 0);
  return head;
}

// A plain reading: the stream is cut into lines first. A zero byte ends a line as the end of the stream does.
class PlainLines {
 public:
  explicit PlainLines(const std::string& text) : stream(text) {}

  bool HasMore() const { return at < stream.size() && stream[at] != '\0'; }
  bool ContinuesWithFold() const { return HasMore() && IsFold(stream[at]); }
  void SkipFold() {
    while (ContinuesWithFold()) ++at;
  }
  bool HasEnded() const { return hasEnded; }
  std::string Rest() const { return stream.substr(at); }
  // Nothing for a carriage return that does not end a line.
  std::optional<std::string> Next() {
    const std::size_t end = std::min(stream.find_first_of(std::string("\n\0", 2), at), stream.size());
    std::string line = stream.substr(at, end - at);
    hasEnded = end == stream.size() || stream[end] == '\0';
    at = std::min(end + 1, stream.size());
    while (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.find('\r') != std::string::npos) return std::nullopt;
    return line;
  }

 private:
  static bool IsFold(char c) { return c == ' ' || c == '\t'; }

  const std::string stream;
  std::size_t at = 0;
  bool hasEnded = false;
};

std::string Trimmed(const std::string& text) {
  const char* space = " \t\r\n\f";
  const std::size_t begin = text.find_first_not_of(space);
  return begin == std::string::npos ? "" : text.substr(begin, text.find_last_not_of(space) - begin + 1);
}

std::string CutToken(std::string& line) {
  const char* ends = " \t\f";
  line.erase(0, std::min(line.find_first_not_of(ends), line.size()));
  const std::string token = line.substr(0, line.find_first_of(ends));
  line.erase(0, token.size());
  return token;
}

bool ExpectHeaders(PlainLines& lines, Pairs& headers) {
  if (!lines.HasMore()) return false;
  for (;;) {
    const std::optional<std::string> first = lines.Next();
    if (!first) return false;
    if (first->empty()) return true;
    const std::size_t colon = std::min(first->find(':'), first->size());
    std::string value = first->substr(std::min(colon + 1, first->size()));
    while (!lines.HasEnded() && lines.ContinuesWithFold()) {
      lines.SkipFold();
      const std::optional<std::string> more = lines.Next();
      if (!more) return false;
      value += " " + *more;
    }
    headers.emplace_back(Trimmed(first->substr(0, colon)), Trimmed(value));
    if (lines.HasEnded()) return true;
  }
}

Head Expected(const std::string& stream) {
  Head head;
  PlainLines lines(stream);
  if (!lines.HasMore()) return head;
  std::optional<std::string> line = lines.Next();
  head.hasStatus = line.has_value();
  if (!head.hasStatus) return head;
  const std::string protocol = CutToken(*line);
  head.version = protocol.find('/') != std::string::npos ? protocol.substr(protocol.find('/') + 1) : "1.0";
  unsigned status = 0;
  for (const char digit : CutToken(*line)) status = status * 10 + static_cast<unsigned char>(digit) - 48;
  head.status = static_cast<int>(status & 0xFFFF);
  head.reason = Trimmed(*line);
  head.hasHeaders = ExpectHeaders(lines, head.headers);
  if (head.hasHeaders) head.rest = lines.Rest();
  return head;
}

// The head written anew says the same.
void HoldWritten(const Head& head) {
  HttpReply reply;
  reply.version = Kest(head.version);
  reply.status = static_cast<std::uint16_t>(head.status);
  reply.reason = Kest(head.reason);
  for (const auto& field : head.headers) reply.headers.Add(Kest(field.first), Kest(field.second));
  TextReader reader(reply.WriteHead());
  Head again = ReadHead(reader);
  again.rest = head.rest;
  HOLD(again == head);
}

void Check(const std::string& stream) {
  const Head expected = Expected(stream);
  TextReader reader(Kest(stream));
  const Head whole = ReadHead(reader);
  HOLD(whole == expected);
  HOLD(Delivered(stream, {}) == expected);
  HOLD(Delivered(stream, {1}) == expected);
  HOLD(Delivered(stream, {2, 7, 1, 3}) == expected);
  if (whole.hasHeaders) HoldWritten(whole);
}

}  // namespace
}  // namespace kest::testing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t length) {
  kest::testing::Check(kest::testing::Input(bytes, length).Rest());
  return 0;
}
