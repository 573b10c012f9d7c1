// Fetching the product list, over each of the roads to a server.
#include "api/export_support.h"
#include "fault/host_objects.h"

namespace kest::testing {
namespace {

// A list that holds the products of an earlier reply, of which the host has read the first.
class FetchingProducts : public Operation {
 public:
  FetchingProducts() {
    FieldSet earlier;
    earlier.Add("Note", "old");
    earlier.Add("KEST-Product", "Name:Axe^Price:1.00");
    earlier.Add("KEST-Product", "Name:Saw^Price:2.00");
    FromHandle(list)->Load(earlier);
    FromHandle(list)->SetErrorCode(codeBefore);
    KestNextProduct(list);
  }
  ~FetchingProducts() override { KestDestroyProductList(list); }
  bool Run() override {
    World().registry.calls.clear();
    code = KestGetErrorCode(KEST_FIELDS(list));
    return KestGetProductList(list, "1.0") == 1;
  }
  std::string Ending(bool isDone) const override {
    return EndingOfExchange(isDone, code, KestGetErrorCode(KEST_FIELDS(list)));
  }
  std::string EndingAfter(const Failure& failure) const override { return EndingOfExchangeAfter(failure); }
  std::string Fault(bool isDone, const Failure&) override {
    if (!World().Writes().empty()) return "something was written";
    const char* name = KestGetField(KestNextProduct(list), "Name");
    if (name == nullptr || std::string(name) != (isDone ? "Tool" : "Saw")) return "the next product is another";
    if (KestNextProduct(list) != nullptr) return "there are more products";
    const Fields own = FieldsOf(*FromHandle(list));
    if (isDone) return own == ReplyFields(false) ? "" : BeginningFault(own, ReplyFields(false), own.size() + 1);
    const Fields request = {
        {"Note", "old"}, {"GUID", "guid-1"}, {"VERSIONID", "1.0"}, {"KEST-Service", "GetProductList"}};
    return BeginningFault(own, request, Ending(false) == exchange ? request.size() : 1);
  }

 protected:
  KestProductList* list = KestCreateProductList();

 private:
  std::int32_t code = 0;
};

// By way of a proxy with two addresses, of which the second is tried when the first refuses. It leads every other
// request to a further proxy, which is named by its address and has no other.
class FetchingThroughProxies : public FetchingProducts {
 public:
  FetchingThroughProxies() {
    KestSetProxy("proxy.example", 3128);
    World().server.addressCount = 2;
    World().server.answer = [](SealedServer& server, const ServerRequest& request) {
      if (request.number % 2 == 0) return server.AnswerHonestly(request);
      return SealedServer::Http("", "HTTP/1.0 305 Use Proxy\r\nLocation: http://10.0.0.9:3129/");
    };
  }
  ~FetchingThroughProxies() override { KestSetProxy("", 0); }
  std::string EndingAfter(const Failure& failure) const override {
    const bool hasSecond = !failure.isAlike && failure.point.call == "connect" && failure.point.about != "10.0.0.9";
    return hasSecond ? done : FetchingProducts::EndingAfter(failure);
  }
};

}  // namespace

std::vector<OperationCase> ProductOperations() {
  // Without memory: for the request, and from then on; a reply for whose records there is none has not come.
  const std::vector<std::string> endings = {unchanged, exchange};
  return {Case<FetchingProducts>("FetchingProducts", endings, endings),
          Case<FetchingThroughProxies>("FetchingThroughProxies", endings, endings)};
}

}  // namespace kest::testing
