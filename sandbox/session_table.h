// The sessions that handshakes have opened and that wait for their one request. The table owns the session keys: a key
// leaves it when its request comes, and is wiped when it expires. Ids of ended sessions are remembered for a while (as
// many as sessions may be held), so that a late client is told what happened. One thread at a time may use a table.
#pragma once

#include <cstdint>
#include <list>
#include <optional>
#include <string>
#include <unordered_map>

#include "environment.h"
#include "sealed_message.h"
#include "wipe.h"

namespace sandbox {

/// Holds what a handshake has settled; wipes key and challenges when destroyed.
struct Session {
  std::uint64_t number;  // counts the sessions from 1; names one in the log, where its id would tell too much
  SessionKey key;
  std::string clientChallenge;
  std::string serverChallenge;
  std::string path;  // of the handshake; the request has the same

  Session(std::uint64_t sessionNumber, const SessionKey& sessionKey, std::string_view client, std::string_view server,
          std::string_view handshakePath)
      : number(sessionNumber), key(sessionKey), clientChallenge(client), serverChallenge(server), path(handshakePath) {}
  Session(Session&&) = default;
  Session& operator=(Session&&) = default;
  ~Session() {
    Wipe(clientChallenge);
    Wipe(serverChallenge);
  }
};

class SessionTable {
 public:
  /// Makes an empty table whose sessions live that long and which holds at most `most` of them.
  SessionTable(std::chrono::seconds lifeOfEach, std::size_t most, std::function<Time()> clock);

  /// Holds the session under the id until it is taken or expires. Throws Refused when the table is full.
  void Add(const std::string& id, Session session);

  /// Takes the session out for its one request. Throws Refused when the id is unknown, used or expired.
  Session Take(const std::string& id);

  /// Returns the number of sessions held; expired ones are dropped first.
  std::size_t Held();

 private:
  struct Entry {
    std::optional<Session> session;  // nothing once the session has ended
    Time expires;
    std::list<std::string>::iterator place;
    bool used;
  };

  void DropExpired();
  void End(Entry& entry);

  const std::chrono::seconds lifetime;
  const std::size_t limit;
  const std::function<Time()> now;
  std::unordered_map<std::string, Entry> entries;
  std::list<std::string> open;   // ids in the order of their expiry
  std::list<std::string> ended;  // ids in the order in which they ended
};

}  // namespace sandbox
