// The server's half of the commerce protocol without HTTP: a checked head and a body go in, a sealed reply comes out.
// It owns the sessions; keys and operations are lent to it and must outlive it. One thread at a time may use it.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "environment.h"
#include "fault.h"
#include "key_pair.h"
#include "operations.h"
#include "request_check.h"
#include "request_log.h"
#include "session_table.h"

namespace sandbox {

struct SessionLimits {
  std::chrono::seconds lifetime{300};
  std::size_t most = 10000;
};

struct SealedReply {
  std::string body;           // base64
  std::string summary;        // one line for the log, free of secrets
  bool failed = false;        // true when the reply tells the client of an error code
  bool serverFailed = false;  // true when that code tells of a failure of the server itself
};

class CommerceServer {
 public:
  CommerceServer(const KeyPair& serverKey, const Operations& services, SessionLimits limits, Environment machine);

  /// Answers a handshake (the head names no connection) or the request of a session. A session is used up as soon as a
  /// request names it, whatever comes of that request. A fault that lies in the seal or in what it covers is done, any
  /// other left to the caller. The fields of request and reply go into the record, as they may be shown. Both may be
  /// null. Throws Refused.
  SealedReply Answer(const RequestHead& head, const std::string& body, const Fault* fault = nullptr,
                     RequestRecord* record = nullptr);

  /// Returns the number of sessions that are open.
  std::size_t Sessions() { return sessions.Held(); }

 private:
  SealedReply AnswerHandshake(const RequestHead& head, const std::string& body, const Fault* fault,
                              RequestRecord* record);
  SealedReply AnswerRequest(const RequestHead& head, const std::string& body, const Fault* fault,
                            RequestRecord* record);

  const KeyPair& keyPair;
  const Operations& operations;
  const Environment environment;
  SessionTable sessions;
  std::uint64_t sessionCount = 0;
};

}  // namespace sandbox
