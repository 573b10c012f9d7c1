// Making the host's objects and filling them. What could not be done is missing, and nothing else.
#include "api/export_support.h"
#include "fault/host_objects.h"

namespace kest::testing {
namespace {

// Whether `have` is what `steps` steps come to when one of them, or all from one on, did nothing.
// `simulate(isLost)` says what they come to when isLost(step) tells which did nothing.
template <typename Result, typename Simulate>
bool IsWithoutSteps(const Result& have, int steps, bool isFromThenOn, Simulate simulate) {
  for (int lost = 0; lost < steps; ++lost) {
    const auto isLost = [lost, isFromThenOn](int step) { return isFromThenOn ? step >= lost : step == lost; };
    if (have == simulate(isLost)) return true;
  }
  return false;
}

constexpr auto nothingLost = [](int) { return false; };

class MakingObjects : public Operation {
 public:
  bool Run() override {
    KestFieldSet* set = KestCreateFieldSet();
    KestCheckout* checkout = KestCreateCheckout();
    KestPurchase* purchase = KestCreatePurchase();
    KestProductList* list = KestCreateProductList();
    made = 0;
    isWhole = true;
    for (KestFieldSet* object : {set, KEST_FIELDS(checkout), KEST_FIELDS(purchase), KEST_FIELDS(list)}) {
      if (object == nullptr) continue;
      ++made;
      isWhole = isWhole && KestGetFieldCount(object) == 0 && KestGetErrorCode(object) == 0;
    }
    KestFreeFieldSet(set);
    KestDestroyCheckout(checkout);
    KestDestroyPurchase(purchase);
    KestDestroyProductList(list);
    return made == 4;
  }
  std::string EndingAfter(const Failure&) const override { return done; }
  std::string Fault(bool isDone, const Failure& failure) override {
    if (!isWhole) return "an object is not empty";
    return isDone || failure.IsMemoryGone() || made == 3 ? "" : "more than one object is missing";
  }

 private:
  int made = 0;
  bool isWhole = true;
};

// Forty fields, so that the list grows.
class AddingFields : public Operation {
 public:
  ~AddingFields() override { KestFreeFieldSet(set); }
  bool Run() override {
    KestFreeFieldSet(set);
    set = KestCreateFieldSet();
    for (int i = 0; i < count; ++i) KestAddField(set, "name", std::to_string(i).c_str());
    KestSetField(set, "NAME", "first");
    return set != nullptr && FieldsOf(*FromHandle(set)) == Simulated(nothingLost);
  }
  std::string EndingAfter(const Failure&) const override { return done; }
  std::string Fault(bool isDone, const Failure& failure) override {
    if (isDone || set == nullptr) return "";
    if (KestGetErrorCode(set) != 0) return "an error code";
    const auto simulate = [](const auto& isLost) { return Simulated(isLost); };
    const Fields have = FieldsOf(*FromHandle(set));
    return IsWithoutSteps(have, count + 1, failure.IsMemoryGone(), simulate) ? "" : "other fields than were added";
  }

 private:
  template <typename IsLost>
  static Fields Simulated(IsLost isLost) {
    Fields fields;
    for (int i = 0; i < count; ++i) {
      if (!isLost(i)) fields.emplace_back("name", std::to_string(i));
    }
    if (!isLost(count) && !fields.empty()) fields[0].second = "first";
    return fields;
  }

  static constexpr int count = 40;
  KestFieldSet* set = nullptr;
};

// Forty lines, of which the first is then replaced.
class Ordering : public Operation {
 public:
  Ordering() { KestAddOrderLine(checkout, 99, 1); }
  ~Ordering() override { KestDestroyCheckout(checkout); }
  bool Run() override {
    KestClearOrder(checkout);
    for (std::uint32_t sku = 1; sku <= count; ++sku) KestAddOrderLine(checkout, sku, 2);
    KestAddOrderLine(checkout, 1, 3);
    return Lines() == Simulated(nothingLost);
  }
  std::string EndingAfter(const Failure&) const override { return done; }
  std::string Fault(bool isDone, const Failure& failure) override {
    if (KestGetErrorCode(KEST_FIELDS(checkout)) != 0) return "an error code";
    if (KestGetFieldCount(KEST_FIELDS(checkout)) != 0) return "the checkout's own fields have changed";
    const auto simulate = [](const auto& isLost) { return Simulated(isLost); };
    const bool isRight = isDone || IsWithoutSteps(Lines(), count + 1, failure.IsMemoryGone(), simulate);
    return isRight ? "" : "other lines than were added";
  }

 private:
  using OrderLines = std::vector<Fields>;

  OrderLines Lines() const {
    OrderLines lines;
    const ProductRecords& order = FromHandle(checkout)->Order();
    for (std::uint32_t i = 0; i < order.Count(); ++i) lines.push_back(FieldsOf(order.At(i)));
    return lines;
  }
  static Fields Line(const char* sku, const char* quantity) { return {{"SKU", sku}, {"Quantity", quantity}}; }
  template <typename IsLost>
  static OrderLines Simulated(IsLost isLost) {
    OrderLines lines;
    for (int i = 0; i < count; ++i) {
      if (!isLost(i)) lines.push_back(Line(std::to_string(i + 1).c_str(), "2"));
    }
    if (isLost(count)) return lines;
    const bool isThere = !lines.empty() && lines[0][0].second == "1";
    if (isThere) lines[0] = Line("1", "3");
    if (!isThere) lines.push_back(Line("1", "3"));
    return lines;
  }

  static constexpr int count = 40;
  KestCheckout* checkout = KestCreateCheckout();
};

}  // namespace

std::vector<OperationCase> ObjectOperations() {
  return {Case<MakingObjects>("MakingObjects", {failed}, {failed}),
          Case<AddingFields>("AddingFields", {failed}, {failed}), Case<Ordering>("Ordering", {failed}, {failed})};
}

}  // namespace kest::testing
