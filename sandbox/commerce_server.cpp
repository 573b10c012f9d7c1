#include "commerce_server.h"

#include <algorithm>

#include "base64.h"
#include "log_text.h"
#include "masking.h"
#include "refusal.h"
#include "server_limits.h"
#include "wipe.h"

namespace sandbox {
namespace {

constexpr const char* protocolVersion = "1.1";
constexpr std::size_t challengeLength = 48;
constexpr std::size_t connectionIdLength = 16;

std::string HexText(std::string_view bytes) {
  constexpr char digits[] = "0123456789abcdef";
  std::string text;
  for (unsigned char byte : bytes) {
    text.push_back(digits[byte >> 4]);
    text.push_back(digits[byte & 15]);
  }
  return text;
}

void CheckVersion(const FieldList& fields) {
  if (FieldOrEmpty(fields, "KEST-Protocol-Version") != protocolVersion) throw Refused(Refusal::ProtocolVersion);
}

// A client makes this list itself, so nothing of its host stands in it and the list can be held to the letter.
void CheckHandshakeFields(const FieldList& fields) {
  constexpr std::string_view owed[] = {"KEST-Auth-Client-Key", "KEST-Auth-Client-RAC", "KEST-Auth-Server-RAC",
                                       "KEST-Protocol-Version"};
  const bool inOrder = std::equal(fields.begin(), fields.end(), std::begin(owed), std::end(owed),
                                  [](const Field& field, std::string_view name) { return field.name == name; });
  if (!inOrder || !FieldOrEmpty(fields, "KEST-Auth-Server-RAC").empty()) throw Refused(Refusal::HandshakeFields);
  CheckVersion(fields);
  std::optional<std::string> challenge = DecodeBase64(FieldOrEmpty(fields, "KEST-Auth-Client-RAC"));
  if (!challenge) throw Refused(Refusal::ClientChallengeForm);
  const WipedAtEnd challengeWiped(*challenge);
  if (challenge->size() != challengeLength) throw Refused(Refusal::ClientChallengeForm);
}

void CheckHandshakePath(std::string_view path) {
  const bool isService = path.size() >= 2 && path.size() <= longestServicePath;
  if (!isService || path.find('?') != std::string_view::npos) throw Refused(Refusal::HandshakePath);
}

SessionKey ReadClientKey(const FieldList& fields) {
  std::optional<std::string> exported = DecodeBase64(FieldOrEmpty(fields, "KEST-Auth-Client-Key"));
  if (!exported) throw Refused(Refusal::ClientKey);
  const WipedAtEnd exportedWiped(*exported);
  return SessionKey(*exported);
}

// A braced list would copy its fields, and leave the first copy of the challenges behind.
void AddReplyFields(FieldList& fields, const Session& session) {
  fields.push_back({"KEST-Auth-Client-RAC", session.clientChallenge});
  fields.push_back({"KEST-Auth-Server-RAC", session.serverChallenge});
  fields.push_back({"KEST-Protocol-Version", protocolVersion});
}

void ChangeChallenge(FieldList& fields, std::string_view name) {
  for (Field& field : fields) {
    if (field.name == name) field.value.front() = field.value.front() == 'A' ? 'B' : 'A';
  }
}

void ChangeField(FieldList& fields, const Fault& fault) {
  const auto same = [&](const Field& field) { return EqualIgnoringCase(field.name, fault.name); };
  if (!fault.value) {
    fields.erase(std::remove_if(fields.begin(), fields.end(), same), fields.end());
    return;
  }
  const auto found = std::find_if(fields.begin(), fields.end(), same);
  if (found != fields.end()) {
    found->value = *fault.value;
  } else {
    fields.push_back({fault.name, *fault.value});
  }
}

void ApplyToFields(FieldList& fields, const Fault& fault) {
  if (fault.kind == FaultKind::WrongClientChallenge) ChangeChallenge(fields, "KEST-Auth-Client-RAC");
  if (fault.kind == FaultKind::ChangedServerChallenge) ChangeChallenge(fields, "KEST-Auth-Server-RAC");
  if (fault.kind == FaultKind::Field) ChangeField(fields, fault);
}

SealFault SealFaultOf(const Fault* fault) {
  if (!fault) return SealFault::None;
  if (fault->kind == FaultKind::WrongDigest) return SealFault::WrongDigest;
  if (fault->kind == FaultKind::DigestWithoutZero) return SealFault::DigestWithoutZero;
  if (fault->kind == FaultKind::BadPadding) return SealFault::BadPadding;
  if (fault->kind == FaultKind::BadBase64) return SealFault::BadBase64;
  return SealFault::None;
}

std::string Seal(FieldList& fields, const SessionKey& key, const Fault* fault, RequestRecord* record) {
  if (fault) ApplyToFields(fields, *fault);
  if (record) record->reply = ShownFields(fields);
  return SealReply(fields, key, SealFaultOf(fault));
}

std::string InSession(const Session& session) {
  return "session " + std::to_string(session.number);
}

}  // namespace

CommerceServer::CommerceServer(const KeyPair& serverKey, const Operations& services, SessionLimits limits,
                               Environment machine)
    : keyPair(serverKey),
      operations(services),
      environment(std::move(machine)),
      sessions(limits.lifetime, limits.most, environment.now) {}

SealedReply CommerceServer::Answer(const RequestHead& head, const std::string& body, const Fault* fault,
                                   RequestRecord* record) {
  return head.connectionId.empty() ? AnswerHandshake(head, body, fault, record)
                                   : AnswerRequest(head, body, fault, record);
}

SealedReply CommerceServer::AnswerHandshake(const RequestHead& head, const std::string& body, const Fault* fault,
                                            RequestRecord* record) {
  CheckHandshakePath(head.path);
  FieldList fields = OpenHandshake(body, keyPair);
  const WipedAtEnd fieldsWiped(fields);
  if (record) record->request = ShownFields(fields);
  CheckHandshakeFields(fields);
  std::string random = environment.randomBytes(challengeLength);
  const WipedAtEnd randomWiped(random);
  std::string challenge = EncodeBase64(random);
  const WipedAtEnd challengeWiped(challenge);
  Session session(sessionCount + 1, ReadClientKey(fields), FieldOrEmpty(fields, "KEST-Auth-Client-RAC"), challenge,
                  head.path);
  const std::string connectionId = HexText(environment.randomBytes(connectionIdLength));
  FieldList replyFields;
  const WipedAtEnd replyWiped(replyFields);
  replyFields.push_back({"KEST-Auth-CID", connectionId});
  AddReplyFields(replyFields, session);

  SealedReply reply;
  reply.body = Seal(replyFields, session.key, fault, record);
  const std::string_view service = std::string_view(head.path).substr(1);
  reply.summary = "handshake for " + LogText(service, Operations::Offers(service)) + ", opened " + InSession(session);
  sessions.Add(connectionId, std::move(session));
  sessionCount++;
  return reply;
}

SealedReply CommerceServer::AnswerRequest(const RequestHead& head, const std::string& body, const Fault* fault,
                                          RequestRecord* record) {
  const Session session = sessions.Take(head.connectionId);
  FieldList fields = OpenRequest(body, session.key);
  const WipedAtEnd fieldsWiped(fields);
  if (record) record->request = ShownFields(fields);
  CheckVersion(fields);
  if (FieldOrEmpty(fields, "KEST-Auth-Client-RAC") != session.clientChallenge) throw Refused(Refusal::ClientChallenge);
  if (FieldOrEmpty(fields, "KEST-Auth-Server-RAC") != session.serverChallenge) throw Refused(Refusal::ServerChallenge);
  if (head.path != session.path) throw Refused(Refusal::SessionPath);
  const std::string_view service = FieldOrEmpty(fields, "KEST-Service");
  if (std::string_view(head.path).substr(1) != service) throw Refused(Refusal::Service);

  const OperationResult result = operations.Run(service, fields);
  FieldList replyFields;
  const WipedAtEnd replyWiped(replyFields);
  AddReplyFields(replyFields, session);
  replyFields.insert(replyFields.end(), result.fields.begin(), result.fields.end());

  SealedReply reply;
  reply.body = Seal(replyFields, session.key, fault, record);
  reply.failed = result.error.code != noError.code;
  reply.serverFailed = result.serverFailed;
  reply.summary = InSession(session) + ", " + result.summary;
  if (reply.failed) reply.summary += " (KEST-Error " + std::to_string(result.error.code) + ")";
  return reply;
}

}  // namespace sandbox
