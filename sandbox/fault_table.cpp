#include "fault_table.h"

#include <algorithm>

namespace sandbox {

std::chrono::milliseconds FaultPlan::Delay() const {
  std::chrono::milliseconds sum{0};
  for (const Fault& fault : faults) sum += fault.delay;
  return sum;
}

const Fault* FaultPlan::Main() const {
  return faults.empty() || faults.back().kind == FaultKind::Delay ? nullptr : &faults.back();
}

std::vector<std::string> FaultPlan::Kinds() const {
  std::vector<std::string> kinds;
  for (const Fault& fault : faults) kinds.push_back(FaultKindName(fault.kind));
  return kinds;
}

void FaultTable::Append(std::vector<Fault> further) {
  std::size_t bytes = 0;
  for (const std::vector<Fault>* some : {&waiting, &further}) {
    for (const Fault& fault : *some) bytes += fault.asked.size();
  }
  if (waiting.size() + further.size() > mostFaults || bytes > mostFaultBytes) {
    throw FaultError("more would wait than " + std::to_string(mostFaults) + " faults or " +
                     std::to_string(mostFaultBytes) +
                     " bytes of JSON; let some be applied, or forget all with a reset");
  }
  for (Fault& fault : further) {
    fault.id = ++lastId;
    waiting.push_back(std::move(fault));
  }
}

void FaultTable::Clear(FaultKind kind) {
  const auto same = [&](const Fault& fault) { return fault.kind == kind; };
  waiting.erase(std::remove_if(waiting.begin(), waiting.end(), same), waiting.end());
}

FaultPlan FaultTable::Find(FaultPlace at, std::string_view service) const {
  FaultPlan plan;
  for (const Fault& fault : waiting) {
    if (fault.at != at || (!fault.service.empty() && fault.service != service)) continue;
    plan.faults.push_back(fault);
    if (fault.kind != FaultKind::Delay) break;
  }
  return plan;
}

void FaultTable::Spend(const FaultPlan& plan) {
  for (const Fault& spent : plan.faults) {
    const auto found =
        std::find_if(waiting.begin(), waiting.end(), [&](const Fault& fault) { return fault.id == spent.id; });
    if (found == waiting.end() || !found->left) continue;
    --*found->left;
    if (*found->left == 0) waiting.erase(found);
  }
}

}  // namespace sandbox
