#include "operations.h"

#include <algorithm>

#include "log_text.h"

namespace sandbox {
namespace {

OperationResult ErrorResult(const ErrorCode& error, const std::string& summary) {
  return {error, {{"KEST-Error", std::to_string(error.code)}}, summary + ": " + error.meaning};
}

}  // namespace

const Operations::Service Operations::services[] = {
    {"GetProductList", &Operations::GetProductList},
};

bool Operations::Offers(std::string_view name) {
  return std::any_of(std::begin(services), std::end(services), [&](const Service& one) { return one.name == name; });
}

OperationResult Operations::Run(std::string_view name, const FieldList& request) const {
  for (const Service& service : services) {
    if (service.name == name) return (this->*service.handler)(request);
  }
  return ErrorResult(unknownService, LogText(name, false));
}

OperationResult Operations::GetProductList(const FieldList& request) const {
  const std::string_view guid = FieldOrEmpty(request, "GUID");
  const bool known = catalogue.HasGuid(guid);
  const std::string summary = "GetProductList for " + LogText(guid, known);
  const Application* application = catalogue.Find(guid, FieldOrEmpty(request, "VERSIONID"));
  if (!application) return ErrorResult(known ? unknownVersion : unknownApplication, summary);

  OperationResult result = ErrorResult(noError, summary);
  result.fields.reserve(1 + application->products.size());
  for (const Product& product : application->products) result.fields.push_back({"KEST-Product", product.record});
  result.summary = summary + ": " + std::to_string(application->products.size()) + " products";
  return result;
}

}  // namespace sandbox
