#include "operations.h"

#include <algorithm>

#include "log_text.h"

namespace sandbox {

const Operations::Service Operations::services[] = {
    {"GetProductList", &Operations::GetProductList},
    {"BillCustomer", &Operations::BillCustomer},
    {"GetBill", &Operations::GetBill},
};

OperationResult ResultOf(const ErrorCode& error, const std::string& summary) {
  const std::string meaning = error.code == noError.code ? "" : std::string(": ") + error.meaning;
  return {error, {{"KEST-Error", std::to_string(error.code)}}, summary + meaning};
}

bool Operations::Offers(std::string_view name) {
  return std::any_of(std::begin(services), std::end(services), [&](const Service& one) { return one.name == name; });
}

std::string Operations::Names() {
  std::string names;
  for (const Service& one : services) names.append(names.empty() ? "" : ", ").append(one.name);
  return names;
}

OperationResult Operations::Run(std::string_view name, const FieldList& request) const {
  for (const Service& service : services) {
    if (service.name == name) return RunSafely(service, request);
  }
  return ResultOf(unknownService, LogText(name, false));
}

// A lock held too long must not end in silence: the client is told that nothing was sold. A commit that failed is let
// pass, because that would not be certain.
OperationResult Operations::RunSafely(const Service& service, const FieldList& request) const {
  try {
    return (this->*service.handler)(request);
  } catch (const DatabaseError& error) {
    OperationResult result = ResultOf(ledgerFailed, std::string(service.name) + " (" + error.what() + ")");
    result.serverFailed = true;
    return result;
  }
}

OperationResult Operations::GetProductList(const FieldList& request) const {
  const std::string_view guid = FieldOrEmpty(request, "GUID");
  const bool known = catalogue.HasGuid(guid);
  const std::string summary = "GetProductList for " + LogText(guid, known);
  const Application* application = catalogue.Find(guid, FieldOrEmpty(request, "VERSIONID"));
  if (!application) return ResultOf(known ? unknownVersion : unknownApplication, summary);

  OperationResult result =
      ResultOf(noError, summary + ": " + std::to_string(application->products.size()) + " products");
  result.fields.reserve(1 + application->products.size());
  for (const Product& product : application->products) result.fields.push_back({"KEST-Product", product.record});
  return result;
}

}  // namespace sandbox
