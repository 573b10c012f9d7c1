#include "session_table.h"

#include "refusal.h"

namespace sandbox {

SessionTable::SessionTable(std::chrono::seconds lifeOfEach, std::size_t most, std::function<Time()> clock)
    : lifetime(lifeOfEach), limit(most), now(std::move(clock)) {}

void SessionTable::Add(const std::string& id, Session session) {
  DropExpired();
  if (open.size() >= limit) throw Refused(Refusal::SessionsFull);
  open.push_back(id);
  entries.insert_or_assign(id, Entry{std::move(session), now() + lifetime, std::prev(open.end()), false});
}

Session SessionTable::Take(const std::string& id) {
  DropExpired();
  const auto found = entries.find(id);
  if (found == entries.end()) throw Refused(Refusal::ConnectionUnknown);
  Entry& entry = found->second;
  if (!entry.session) throw Refused(entry.used ? Refusal::ConnectionUsed : Refusal::ConnectionExpired);
  Session session = std::move(*entry.session);
  entry.used = true;
  End(entry);
  return session;
}

std::size_t SessionTable::Held() {
  DropExpired();
  return open.size();
}

void SessionTable::DropExpired() {
  const Time time = now();
  while (!open.empty()) {
    Entry& oldest = entries.at(open.front());
    if (oldest.expires > time) return;
    End(oldest);
  }
}

void SessionTable::End(Entry& entry) {
  entry.session.reset();
  ended.splice(ended.end(), open, entry.place);
  if (ended.size() > limit) {
    entries.erase(ended.front());
    ended.pop_front();
  }
}

}  // namespace sandbox
