#include "fault/host_objects.h"

#include <algorithm>
#include <set>

namespace kest::testing {

Fields FieldsOf(const FieldSet& set) {
  Fields fields;
  for (std::uint32_t i = 0; i < set.Fields().Count(); ++i) {
    fields.emplace_back(set.Fields().At(i).Name().Text(), set.Fields().At(i).Value().Text());
  }
  return fields;
}

Fields ReplyFields(bool products) {
  const SealedServer& server = World().server;
  Fields fields = {{"KEST-Auth-Client-RAC", server.clientRac}, {"KEST-Auth-Server-RAC", server.serverRac}};
  for (const auto& field : server.replyFields) {
    if (products || field.first != "KEST-Product") fields.push_back(field);
  }
  return fields;
}

std::string BeginningFault(const Fields& have, const Fields& whole, std::size_t least) {
  std::string text;
  for (const auto& field : have) text += " " + field.first + "=" + field.second;
  if (have.size() > whole.size()) return "more fields than there should be:" + text;
  if (!std::equal(have.begin(), have.end(), whole.begin())) return "other fields than there should be:" + text;
  return have.size() < least ? "fields are missing, there are only:" + text : "";
}

std::string EndingOfExchange(bool isDone, std::int32_t before, std::int32_t code) {
  if (code == before && isDone) return done;
  if (isDone) return "done, but the code is " + std::to_string(code);
  if (code == KEST_ERROR_EXCHANGE) return exchange;
  return code == before ? unchanged : "failed with code " + std::to_string(code);
}

std::string EndingOfExchangeAfter(const Failure& failure) {
  const std::string& call = failure.point.call;
  if (call == "send" || call == "recv") return failure.way == FaultSystem::cutShort ? done : exchange;
  static const std::set<std::string> needed = {"socket", "connect", "gethostbyname", "inet_addr"};
  return needed.count(call) != 0 ? exchange : done;
}

}  // namespace kest::testing
