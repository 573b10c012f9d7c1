#include "fault/fault_world.h"

#include <kestapi.h>

namespace kest::testing {
namespace {

FaultWorld* current = nullptr;

// "3 keys " when there are three of them, nothing when there are none.
std::string Some(std::int64_t count, const char* what) {
  return count != 0 ? std::to_string(count) + " " + what + " " : "";
}

}  // namespace

FaultWorld::FaultWorld() {
  current = this;
  BeginAnew();
}

FaultWorld::~FaultWorld() {
  faults.FailNever();
  // What the settings hold goes back before the systems go.
  KestSetServer("", 0, "");
  KestSetProxy("", 0);
  KestSetApplicationGuid(nullptr);
  current = nullptr;
}

FaultWorld& FaultWorld::Current() {
  return *current;
}

void FaultWorld::BeginAnew() {
  faults.FailNever();
  registry.Clear();
  machine.calls.clear();
  machine.randomLengths.clear();
  server.requests.clear();
  server.lookedUp.clear();
  server.addressCount = 1;
  // A reply comes in several pieces, of which each can be the last that comes.
  server.pieceSize = 400;
  server.answer = [](SealedServer& answering, const ServerRequest& request) {
    return answering.AnswerHonestly(request);
  };
  server.replyFields = {
      {"KEST-Error", "0"},        {"KEST-TxN", "T-7"},       {"KEST-TotalAmount", "21.95"},
      {"KEST-TaxAmount", "2.00"}, {"KEST-Merchant", "Shop"}, {"KEST-CCard-Number", "41**1111"},
      {"KEST-User-IDEx", "me"},   {"KEST-Host", "10.0.0.1"}, {"KEST-Product", "Name:Tool^Price:19.95"}};
  KestSetServer("shop.example", 8080, SealedServer::KeyText().c_str());
  KestSetProxy("", 0);
  KestSetApplicationGuid("guid-1");
  blocksBefore = memory.Outstanding();
  locksBefore = machine.Locks();
}

std::string FaultWorld::OpenHandles() const {
  return Some(static_cast<std::int64_t>(server.OpenSockets()), "sockets") +
         Some(server.WrongCloses(), "sockets closed that were not open") +
         Some(static_cast<std::int64_t>(registry.OpenHandles()), "keys") +
         Some(registry.WrongHandles(), "keys used that were not open") +
         Some(static_cast<std::int64_t>(machine.HeldGraphics()), "graphics objects") +
         Some(machine.WrongGraphics(), "graphics objects given back that were not held");
}

std::string FaultWorld::Leak() const {
  return Some(memory.Outstanding() - blocksBefore, "blocks of memory") + Some(machine.Locks() - locksBefore, "locks") +
         OpenHandles();
}

std::vector<std::string> FaultWorld::Writes() const {
  std::vector<std::string> writes;
  for (const std::string& call : registry.calls) {
    if (call.rfind("set ", 0) == 0 || call.rfind("create ", 0) == 0) writes.push_back(call);
  }
  return writes;
}

}  // namespace kest::testing
