// Sales and bills: granted by the server, and refused.
#include "api/export_support.h"
#include "fault/host_objects.h"
#include "fault/receipt_writes.h"

namespace kest::testing {
namespace {

constexpr std::int32_t refusal = 12;

// A checkout with one order line, a transaction, a purchase and a bill of before.
class WithCheckout : public Operation {
 public:
  WithCheckout() {
    KestAddOrderLine(checkout, 1042, 1);
    KestSetField(Own(), "KEST-TxN", "T-6");
    KestSetField(Own(), "KEST-CCard-Number", "4111 1111 1111 1111");
    FromHandle(checkout)->SetErrorCode(codeBefore);
    FieldSet earlier;
    earlier.Add("KEST-Product", "Name:Axe");
    earlier.Add("Note", "old");
    FromHandle(checkout)->BillOf().Load(earlier);
    FromHandle(checkout)->PurchaseOf().Set("Note", "old");
  }
  ~WithCheckout() override { KestDestroyCheckout(checkout); }

  bool Run() override {
    World().registry.calls.clear();
    code = KestGetErrorCode(Own());
    return Call();
  }
  std::string Ending(bool isDone) const override {
    const std::int32_t now = KestGetErrorCode(Own());
    return isDone && IsRefused() ? EndingOfExchange(true, refusal, now) : EndingOfExchange(isDone, code, now);
  }
  std::string EndingAfter(const Failure& failure) const override { return EndingOfExchangeAfter(failure); }
  std::string Fault(bool isDone, const Failure& failure) override {
    std::string fault = OrderFault() + ResultFault(isDone, failure);
    if (fault.empty()) fault = RequestFault(isDone, failure);
    return fault.empty() ? WritesFault(isDone, failure) : fault;
  }

 protected:
  virtual bool Call() = 0;
  virtual const char* Service() const = 0;
  // What is wrong with the purchase and the bill, and with what lies in the registry.
  virtual std::string ResultFault(bool isDone, const Failure& failure) = 0;
  virtual std::string WritesFault(bool isDone, const Failure& failure) = 0;
  virtual bool IsRefused() const { return false; }
  // The transaction that the request asks for or the reply has told.
  virtual const char* Transaction(bool) const { return "T-6"; }

  // The host's fields, behind them what the request adds, then what the reply leaves: never one before another.
  std::string RequestFault(bool isDone, const Failure& failure) {
    Fields whole = {{"KEST-TxN", Transaction(isDone)},
                    {"KEST-CCard-Number", "4111 1111 1111 1111"},
                    {"KEST-Reseller-List", ""},
                    {"KEST-Service", Service()},
                    {"KEST-User-IDEx", "me"}};
    const std::size_t request = whole.size() - 1;
    if (!IsRefused()) whole.emplace_back("KEST-Host", "10.0.0.1");
    std::size_t least = isDone && !failure.IsMemory() ? whole.size() : request;
    if (Ending(isDone) == unchanged) least = 2;
    // A bill whose number was taken over, for which there was then no memory, may have left the rest of it too.
    if (Ending(isDone) == exchange && whole[0].second == "T-6") whole.resize(request);
    return BeginningFault(FieldsOf(*FromHandle(checkout)), whole, least);
  }
  std::string OrderFault() const {
    const ProductRecords& order = FromHandle(checkout)->Order();
    const Fields line = {{"SKU", "1042"}, {"Quantity", "1"}};
    return order.Count() == 1 && FieldsOf(order.At(0)) == line ? "" : "the order has changed";
  }
  std::string PurchaseFault(bool isReply) const {
    const Fields before = {{"Note", "old"}};
    const bool isRight = FieldsOf(FromHandle(checkout)->PurchaseOf()) == (isReply ? ReplyFields(true) : before);
    return isRight ? "" : "the purchase does not tell what happened";
  }
  std::string BillFault(bool isReply) const {
    KestBill* bill = ToHandle(&FromHandle(checkout)->BillOf());
    const Fields before = {{"Note", "old"}};
    if (KestGetBillProductCount(bill) != 1) return "the bill has other products";
    const char* name = KestGetField(KestGetBillProduct(bill, 0), "Name");
    if (name == nullptr || std::string(name) != (isReply ? "Tool" : "Axe")) return "the bill's product is another";
    const bool isRight = FieldsOf(FromHandle(checkout)->BillOf()) == (isReply ? ReplyFields(false) : before);
    return isRight ? "" : "the bill does not tell what happened";
  }
  static std::string NothingWrittenFault() { return World().Writes().empty() ? "" : "something was written"; }

  KestFieldSet* Own() const { return KEST_FIELDS(checkout); }

  KestCheckout* checkout = KestCreateCheckout();
  std::int32_t code = 0;
};

// The second receipt of its day: the first keeps what it holds.
class Selling : public WithCheckout {
 public:
  Selling() { World().registry.Put(ReceiptWrites::Day() + "\\1", "Guid", std::string("first\0", 6)); }

 protected:
  bool Call() override {
    writes.Begin();
    KestPurchase* purchase = KestBillCustomer(checkout);
    return purchase != nullptr && purchase == ToHandle(&FromHandle(checkout)->PurchaseOf());
  }
  const char* Service() const override { return "BillCustomer"; }
  std::string ResultFault(bool isDone, const Failure&) override { return PurchaseFault(isDone) + BillFault(false); }
  std::string WritesFault(bool isDone, const Failure& failure) override {
    // A key that cannot be opened counts as free: then, and only then, the receipt goes into the first one's place.
    const bool isOpened = failure.point.call == "RegOpenKeyExA" && failure.point.about.back() == '1';
    isReplaced = isReplaced || (isOpened && !failure.isFromThenOn);
    const std::vector<MemoryRegistry::Value> first = World().registry.Values(ReceiptWrites::Day() + "\\1");
    if (!isReplaced && (first.size() != 1 || first[0].data != std::string("first\0", 6))) {
      return "the first receipt has changed";
    }
    return isDone ? writes.Fault(failure) : NothingWrittenFault();
  }

 private:
  ReceiptWrites writes;
  bool isReplaced = false;
};

// The server says no: that is the code, and no lack of memory hides it.
class BeingRefused : public WithCheckout {
 public:
  BeingRefused() { World().server.replyFields[0].second = std::to_string(refusal); }

 protected:
  bool Call() override { return KestBillCustomer(checkout) == nullptr && KestGetErrorCode(Own()) == refusal; }
  const char* Service() const override { return "BillCustomer"; }
  bool IsRefused() const override { return true; }
  std::string ResultFault(bool isDone, const Failure&) override { return PurchaseFault(isDone) + BillFault(false); }
  std::string WritesFault(bool, const Failure&) override { return NothingWrittenFault(); }
};

class FetchingABill : public WithCheckout {
 protected:
  bool Call() override {
    KestBill* bill = KestGetBill(checkout);
    return bill != nullptr && bill == ToHandle(&FromHandle(checkout)->BillOf());
  }
  const char* Service() const override { return "GetBill"; }
  const char* Transaction(bool isDone) const override { return isDone || IsNew() ? "T-7" : "T-6"; }
  // Where memory failed behind the exchange the bill may be loaded, but never in part.
  std::string ResultFault(bool isDone, const Failure& failure) override {
    const bool isLoaded = BillFault(true).empty();
    if (isDone && !isLoaded) return "the bill is not loaded";
    if (isLoaded && !isDone && !failure.IsMemory()) return "the bill is loaded and nobody says so";
    return PurchaseFault(false) + (isLoaded ? "" : BillFault(false));
  }
  // The products' marker, when the bill came.
  std::string WritesFault(bool isDone, const Failure& failure) override {
    return isDone || failure.IsMemory() ? ReceiptWrites::MarkFault(isDone, failure) : NothingWrittenFault();
  }

 private:
  // Whether the bill's number has been taken over, which it is before the rest of the reply is looked at.
  bool IsNew() const {
    return BillFault(true).empty() && std::string(FromHandle(checkout)->Fields().At(0).Value().Text()) == "T-7";
  }
};

class BeingRefusedABill : public FetchingABill {
 public:
  BeingRefusedABill() { World().server.replyFields[0].second = std::to_string(refusal); }

 protected:
  bool Call() override { return KestGetBill(checkout) == nullptr && KestGetErrorCode(Own()) == refusal; }
  bool IsRefused() const override { return true; }
  const char* Transaction(bool) const override { return FetchingABill::Transaction(false); }
  std::string WritesFault(bool, const Failure&) override { return NothingWrittenFault(); }
};

}  // namespace

std::vector<OperationCase> SaleOperations() {
  // Without memory: for the request, during the exchange, and from the reply on what the server said holds.
  const std::vector<std::string> sale = {unchanged, exchange, done};
  // A bill for which there is no memory has not come. Marking the products takes none.
  const std::vector<std::string> bill = {unchanged, exchange};
  return {Case<Selling>("Selling", sale, sale), Case<BeingRefused>("BeingRefused", sale, sale),
          Case<FetchingABill>("FetchingABill", bill, sale),
          Case<BeingRefusedABill>("BeingRefusedABill", sale, sale)};
}

}  // namespace kest::testing
