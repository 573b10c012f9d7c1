// The replies: what a server answers to one message of a call, good or bad, and what comes of it, written beforehand.
#pragma once

#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "shape/shape_world.h"

namespace kest::testing {

// What an honest server's replies give.
constexpr char good[] = "done [SKU=1]";
constexpr char failed[] = "102";

// A row as it is written in a table. Its streams may hold: {body}, an honest sealed body; {length}, its length, {less}
// and {more}, one less and one more, {wrapped}, that and 2^32; {reply}, a whole honest reply; {next} between the
// answers to two requests on one connection. {closed} and {reset} stand where the rest of the stream makes no
// difference when the connection is then closed or reset; without them that is the stream's end.
struct RowText {
  const char* name;
  std::vector<std::string> streams;
  const char* seen;
  // Where the message goes; empty: once to the server that is configured.
  std::vector<std::string> attempts = {};
  // Where a redirect leads whose "Location" was cut by the end of the stream behind `location`; nothing: nowhere.
  // Its value begins at {location} in the first stream.
  std::function<std::optional<std::string>(const std::string& location)> followed = nullptr;
  bool isProxied = false;  // a proxy is configured
};

// A row for one message of the call.
struct ReplyRow {
  std::string name;
  Call call = Call::list;
  bool isHandshake = false;
  bool isProxied = false;
  std::vector<Stream> streams;  // of all messages
  std::size_t firstStream = 0;  // of the message that the row is about
  std::size_t streamCount = 1;  // of that message
  std::string seen;
  std::vector<std::string> attempts;               // of all messages
  std::vector<std::size_t> closedFrom, resetFrom;  // of each of its streams, in bytes
  std::size_t locationAt = 0;
  std::function<std::optional<std::string>(const std::string& location)> followed;

  // What is seen and attempted when the `stream`-th of its streams ends behind `cut` bytes.
  Outcome AfterCut(std::size_t stream, std::size_t cut, bool isReset) const;

  friend std::ostream& operator<<(std::ostream& out, const ReplyRow& row) { return out << row.name; }
};

// Fields of the sealing that make a reply honest.
Fields HonestFields(const SealedServer& server);
// The honest replies of a call: the handshake's stream, and that of the request with products SKU 1 to `products`.
std::vector<Stream> HonestStreams(SealedServer& server, int products = 1);
// The row's text for one of the two messages.
ReplyRow MakeRow(SealedServer& server, const RowText& text, bool isHandshake);

const std::vector<RowText>& HeadRows();
const std::vector<RowText>& LengthRows();
const std::vector<RowText>& AttemptRows();
std::vector<ReplyRow> SealedRows(SealedServer& server);

// All of them, the first three for both messages.
std::vector<ReplyRow> AllRows(SealedServer& server);

}  // namespace kest::testing
