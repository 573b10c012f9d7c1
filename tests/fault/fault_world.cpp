#include "fault/fault_world.h"

#include <kestapi.h>

namespace kest::testing {
namespace {

FaultWorld* current = nullptr;

}  // namespace

FaultWorld::FaultWorld() {
  current = this;
  BeginAnew();
}

FaultWorld::~FaultWorld() {
  faults.FailNever();
  // What the settings hold goes back before the systems go.
  KestSetServer("", 0, "");
  KestSetApplicationGuid(nullptr);
  current = nullptr;
}

FaultWorld& FaultWorld::Current() { return *current; }

void FaultWorld::BeginAnew() {
  faults.FailNever();
  registry.Clear();
  server.requests.clear();
  server.replyFields = {{"KEST-Error", "0"},        {"KEST-TxN", "T-7"},       {"KEST-TotalAmount", "21.95"},
                        {"KEST-TaxAmount", "2.00"}, {"KEST-Merchant", "Shop"}, {"KEST-CCard-Number", "41**1111"},
                        {"KEST-User-IDEx", "me"},   {"KEST-Host", "10.0.0.1"}, {"KEST-Product", "Name:Tool^Price:19.95"}};
  KestSetServer("shop.example", 8080, SealedServer::KeyText().c_str());
  KestSetProxy("", 0);
  KestSetApplicationGuid("guid-1");
  before = memory.Outstanding();
}

std::string FaultWorld::Leak() {
  std::string leak;
  if (memory.Outstanding() != before) leak += std::to_string(memory.Outstanding() - before) + " blocks of memory ";
  if (server.OpenSockets() != 0) leak += std::to_string(server.OpenSockets()) + " sockets ";
  if (registry.OpenHandles() != 0) leak += std::to_string(registry.OpenHandles()) + " keys ";
  if (registry.WrongHandles() != 0) leak += std::to_string(registry.WrongHandles()) + " handles that were not open ";
  return leak;
}

}  // namespace kest::testing
