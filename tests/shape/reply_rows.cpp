#include "shape/reply_rows.h"

#include <algorithm>

namespace kest::testing {
namespace {

constexpr char atServer[] = "10.0.0.1:8080 /GetProductList";
constexpr char throughProxy[] = "10.1.1.1:3128 http://shop.example:8080/GetProductList";

std::string BodyOf(const std::string& http) {
  return http.substr(http.find("\r\n\r\n") + 4);
}

std::string Replaced(std::string text, const std::string& mark, const std::string& by) {
  for (std::size_t at = 0; (at = text.find(mark, at)) != std::string::npos; at += by.size()) {
    text.replace(at, mark.size(), by);
  }
  return text;
}

std::string Filled(std::string text, const std::string& body) {
  const std::size_t length = body.size();
  text = Replaced(text, "{reply}", "HTTP/1.0 200 OK\r\nContent-Length: {length}\r\n\r\n{body}");
  text = Replaced(text, "{length}", std::to_string(length));
  text = Replaced(text, "{less}", std::to_string(length - 1));
  text = Replaced(text, "{more}", std::to_string(length + 1));
  text = Replaced(text, "{wrapped}", std::to_string((std::uint64_t{1} << 32) + length));
  return Replaced(text, "{body}", body);
}

// Takes a mark out of the text and answers where it stood, or `otherwise`.
std::size_t TakeMark(std::string& text, const std::string& mark, std::size_t otherwise) {
  const std::size_t at = text.find(mark);
  if (at == std::string::npos) return otherwise;
  text.erase(at, mark.size());
  return at;
}

Stream Cut(const std::string& text) {
  const std::string mark = "{next}";
  Stream stream;
  std::size_t begin = 0;
  for (std::size_t end; (end = text.find(mark, begin)) != std::string::npos; begin = end + mark.size()) {
    stream.push_back(text.substr(begin, end - begin));
  }
  stream.push_back(text.substr(begin));
  return stream;
}

void AddStream(ReplyRow& row, std::string text) {
  constexpr std::size_t none = std::string::npos;
  // In their order, so that each place is that of a byte when the marks are gone.
  const std::size_t location = TakeMark(text, "{location}", none);
  if (location != none) row.locationAt = location;
  const std::size_t closed = TakeMark(text, "{closed}", none);
  const std::size_t reset = TakeMark(text, "{reset}", none);
  const Stream stream = Cut(text);
  std::size_t bytes = 0;
  for (const std::string& answer : stream) bytes += answer.size();
  row.closedFrom.push_back(std::min(closed, bytes));
  row.resetFrom.push_back(std::min(reset, bytes));
  row.streams.push_back(stream);
}

}  // namespace

Fields HonestFields(const SealedServer& server) {
  return {{"KEST-Auth-Client-RAC", server.clientRac}, {"KEST-Auth-Server-RAC", "s"}};
}

std::vector<Stream> HonestStreams(SealedServer& server, int products) {
  Fields handshake = HonestFields(server), request = handshake;
  handshake.emplace_back("KEST-Auth-CID", "7");
  for (int sku = 1; sku <= products; ++sku) request.emplace_back("KEST-Product", "SKU:" + std::to_string(sku));
  return {{server.Reply(handshake)}, {server.Reply(request)}};
}

ReplyRow MakeRow(SealedServer& server, const RowText& text, bool isHandshake) {
  const std::vector<Stream> honest = HonestStreams(server);
  const std::string usual = text.isProxied ? throughProxy : atServer;
  ReplyRow row;
  row.name = text.name + std::string(isHandshake ? "InHandshake" : "InRequest");
  row.isHandshake = isHandshake;
  row.isProxied = text.isProxied;
  row.seen = text.seen;
  row.followed = text.followed;
  if (!isHandshake) {
    row.streams.push_back(honest[0]);
    row.attempts.push_back(usual);
    row.firstStream = 1;
  }
  const std::string body = BodyOf(honest[isHandshake ? 0 : 1][0]);
  for (const std::string& stream : text.streams) AddStream(row, Filled(stream, body));
  row.streamCount = text.streams.size();
  const std::vector<std::string> attempts = text.attempts.empty() ? std::vector<std::string>{usual} : text.attempts;
  row.attempts.insert(row.attempts.end(), attempts.begin(), attempts.end());
  if (isHandshake) row.streams.push_back(honest[1]);
  if (isHandshake && row.seen != failed) row.attempts.push_back(usual);
  return row;
}

Outcome ReplyRow::AfterCut(std::size_t stream, std::size_t cut, bool isReset) const {
  if (cut >= (isReset ? resetFrom : closedFrom)[stream]) return {seen, attempts, {}};
  // Every answer that came whole before was acted on; the one that is cut was asked for.
  std::size_t asked = 1, left = cut;
  for (std::size_t i = 0; i < firstStream + stream; ++i) asked += streams[i].size();
  for (const std::string& answer : streams[firstStream + stream]) {
    if (left < answer.size() || &answer == &streams[firstStream + stream].back()) break;
    left -= answer.size();
    ++asked;
  }
  Outcome outcome{failed, attempts, {}};
  outcome.attempts.resize(std::min(asked, attempts.size()));
  if (isReset || !followed || stream != 0 || cut <= locationAt) return outcome;
  const auto target = followed(streams[firstStream][0].substr(locationAt, cut - locationAt));
  if (!target) return outcome;
  outcome = {seen, attempts, {}};
  outcome.attempts[firstStream + 1] = *target;
  return outcome;
}

std::vector<ReplyRow> AllRows(SealedServer& server) {
  std::vector<ReplyRow> rows;
  for (const auto* table : {&HeadRows(), &LengthRows(), &AttemptRows()}) {
    for (const RowText& text : *table) {
      rows.push_back(MakeRow(server, text, true));
      rows.push_back(MakeRow(server, text, false));
    }
  }
  for (ReplyRow& row : SealedRows(server)) rows.push_back(std::move(row));
  return rows;
}

}  // namespace kest::testing
