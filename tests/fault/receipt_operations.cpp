// Finding a receipt: the third of three, on the second of two days.
#include "api/export_support.h"
#include "fault/host_objects.h"

namespace kest::testing {
namespace {

const std::string receipts = "HKCU\\Software\\Veltrix\\KEST\\Receipts\\";

class FindingAReceipt : public Operation {
 public:
  FindingAReceipt() {
    Put("3-6-1998\\1", "Guid", "other");
    Put("3-7-1998\\one", "Guid", "another");
    const std::string wanted = "3-7-1998\\two";
    Put(wanted, "Guid", "guid-1");
    Put(wanted, "Amount", "21.95");
    Put(wanted, "Merchant", "Shop");
    Put(wanted, "Tax", "2.00");
    Put(wanted, "TXN", "T-7");
    World().registry.Put(receipts + wanted, "CardType", std::string("\4\0\0\0", 4), os::typeNumber);
    KestSetField(target, "Note", "old");
    FromHandle(target)->SetErrorCode(codeBefore);
  }
  ~FindingAReceipt() override { KestFreeFieldSet(target); }
  bool Run() override {
    World().registry.calls.clear();
    return KestLoadReceipt(target, "guid-1") == 1;
  }
  // A key that cannot be opened or walked holds no receipt; the search goes on behind it, and finds nothing when it
  // cannot open or walk any.
  std::string EndingAfter(const Failure& failure) const override {
    const FaultPoint& point = failure.point;
    if (failure.isAlike && (point.call == "RegOpenKeyExA" || point.call == "RegEnumKeyExA")) return failed;
    if (point.call == "RegOpenKeyExA") {
      return point.about == "3-6-1998" || point.about == "1" || point.about == "one" ? done : failed;
    }
    if (point.call == "RegEnumKeyExA") return IsAbout(point, "3-6-1998") ? done : failed;
    const bool isRead = point.call.rfind("RegQueryValueExA", 0) == 0;
    const bool isGuid = point.about == "Guid of two" || (failure.isAlike && point.about.rfind("Guid of ", 0) == 0);
    return isRead && isGuid && !IsRepeated(failure) ? failed : done;
  }
  std::string Fault(bool isDone, const Failure& failure) override {
    if (!World().Writes().empty()) return "something was written";
    if (KestGetErrorCode(target) != codeBefore) return "the error code has changed";
    const Fields now = FieldsOf(*FromHandle(target));
    const Fields wanted = isDone ? Found(failure) : Fields{{"Note", "old"}};
    return BeginningFault(now, wanted, wanted.size());
  }

 private:
  static void Put(const std::string& path, const char* name, const std::string& text) {
    World().registry.Put(receipts + path, name, text + '\0');
  }
  static bool IsAbout(const FaultPoint& point, const std::string& path) {
    return point.about.size() > path.size() && point.about.substr(point.about.size() - path.size()) == path;
  }
  // A value that has become longer is read again.
  static bool IsRepeated(const Failure& failure) {
    constexpr int moreData = 2;
    return failure.point.call == "RegQueryValueExA" && failure.way == moreData;
  }
  // A value that cannot be read is empty, its number the greatest.
  static Fields Found(const Failure& failure) {
    const auto isLost = [&failure](const std::string& name) {
      const bool isText = name != "CardType";
      const std::string& call = failure.point.call;
      if (call.rfind("RegQueryValueExA", 0) != 0 || (isText && IsRepeated(failure))) return false;
      if (!failure.isAlike) return failure.point.about == name + " of two";
      // In the order in which they are read. A number's size is not asked for.
      static const std::string order = "Tax of two, Amount of two, TXN of two, Merchant of two, CardType of two";
      return order.find(name + " of two") >= order.find(failure.point.about) && (isText || call == "RegQueryValueExA");
    };
    std::string price = "19.95";
    if (isLost("Tax")) price = "21.95";
    if (isLost("Amount")) price = isLost("Tax") ? "0.00" : "-2.00";
    return {{"Note", "old"},
            {"KEST-Receipt-Date", "3-7-1998"},
            {"KEST-Receipt-Price", price},
            {"KEST-Receipt-Tax", isLost("Tax") ? "" : "2.00"},
            {"KEST-Receipt-Total", isLost("Amount") ? "" : "21.95"},
            {"KEST-Receipt-Merchant", isLost("Merchant") ? "" : "Shop"},
            {"KEST-Receipt-Card", isLost("CardType") ? "4294967295" : "4"},
            {"KEST-Receipt-TxN", isLost("TXN") ? "" : "T-7"}};
  }

  KestFieldSet* target = KestCreateFieldSet();
};

}  // namespace

std::vector<OperationCase> ReceiptOperations() {
  return {Case<FindingAReceipt>("FindingAReceipt", {failed}, {failed, done})};
}

}  // namespace kest::testing
