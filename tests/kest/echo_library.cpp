// A library that a host can load in the place of KESTAPI, and that answers a sale and a bill with the request's own
// fields: a server that returns what no server should. "Echo-" in front of a name is left out of the answer; the field
// "X-Fail" makes it fail with that error code. A sale makes the file that "X-Sold" names and closes the file descriptor
// "X-Close". A product list has the fields NAME=VALUE of its version, apart by ";", and one product with the same; it
// fails without a version.
#include <kestapi.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

struct KestFieldSet {
  std::vector<std::pair<std::string, std::string>> fields;
  std::int32_t error = 0;
};
struct KestCheckout : KestFieldSet {};
struct KestPurchase : KestFieldSet {};
struct KestProductList : KestFieldSet {
  bool isRead = false;
};
struct KestBill : KestFieldSet {};

namespace {

KestPurchase purchase;
KestBill bill;

const std::string* FieldOf(KestFieldSet* set, const std::string& name) {
  for (const auto& field : set->fields) {
    if (field.first == name) return &field.second;
  }
  return nullptr;
}

// Null when the request asks for a failure.
template <typename Reply>
Reply* Echo(KestFieldSet* request, Reply& reply) {
  if (const std::string* code = FieldOf(request, "X-Fail")) {
    request->error = std::atoi(code->c_str());
    return nullptr;
  }
  const std::string prefix = "Echo-";
  for (auto [name, value] : request->fields) {
    if (name.compare(0, prefix.size(), prefix) == 0) name.erase(0, prefix.size());
    reply.fields.emplace_back(name, value);
  }
  return &reply;
}

}  // namespace

extern "C" {

void KestFreeFieldSet(KestFieldSet* set) {
  delete set;
}
KestFieldSet* KestCreateFieldSet() {
  return new KestFieldSet;
}
KestBool KestSetServer(const char*, std::uint32_t, const char*) {
  return 1;
}
const char* KestGetField(KestFieldSet* set, const char* name) {
  const std::string* value = FieldOf(set, name);
  return value == nullptr ? nullptr : value->c_str();
}
const char* KestGetFieldName(KestFieldSet* set, std::int32_t index) {
  return set->fields[static_cast<std::size_t>(index)].first.c_str();
}
std::int32_t KestGetFieldCount(KestFieldSet* set) {
  return static_cast<std::int32_t>(set->fields.size());
}
const char* KestGetFieldValue(KestFieldSet* set, std::int32_t index) {
  return set->fields[static_cast<std::size_t>(index)].second.c_str();
}
std::int32_t KestGetErrorCode(KestFieldSet* set) {
  return set->error;
}
void KestAddField(KestFieldSet* set, const char* name, const char* value) {
  set->fields.emplace_back(name, value);
}
void KestSetField(KestFieldSet* set, const char* name, const char* value) {
  set->fields.emplace_back(name, value);
}
void KestSetProxy(const char*, std::uint32_t) {}
KestCheckout* KestCreateCheckout() {
  return new KestCheckout;
}
void KestDestroyCheckout(KestCheckout* checkout) {
  delete checkout;
}
KestBool KestConfigureServer(KestFieldSet*) {
  return 1;
}
KestPurchase* KestCreatePurchase() {
  return new KestPurchase;
}
void KestDestroyPurchase(KestPurchase* object) {
  delete object;
}
KestProductList* KestCreateProductList() {
  return new KestProductList;
}
void KestDestroyProductList(KestProductList* list) {
  delete list;
}
KestFieldSet* KestGetBillProduct(KestBill*, std::uint32_t) {
  return nullptr;
}
std::int32_t KestGetBillProductCount(KestBill*) {
  return 0;
}
void KestSetApplicationGuid(const char*) {}
void KestAddOrderLine(KestCheckout*, std::uint32_t, std::uint32_t) {}
KestPurchase* KestBillCustomer(KestCheckout* checkout) {
  if (const std::string* path = FieldOf(checkout, "X-Sold")) std::ofstream(*path) << "sold";
  if (const std::string* descriptor = FieldOf(checkout, "X-Close")) close(std::atoi(descriptor->c_str()));
  return Echo(checkout, purchase);
}
KestBill* KestGetBill(KestCheckout* checkout) {
  return Echo(checkout, bill);
}
KestBool KestLoadReceipt(KestFieldSet*, const char*) {
  return 0;
}
KestBool KestGetProductList(KestProductList* list, const char* version) {
  std::istringstream stream(version);
  for (std::string field; std::getline(stream, field, ';');) {
    const std::size_t equals = field.find('=');
    list->fields.emplace_back(field.substr(0, equals), field.substr(equals + 1));
  }
  return list->fields.empty() ? 0 : 1;
}
KestFieldSet* KestNextProduct(KestProductList* list) {
  return std::exchange(list->isRead, true) ? nullptr : list;
}
void KestClearOrder(KestCheckout*) {}

}  // extern "C"
