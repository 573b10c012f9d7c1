#include "fault/receipt_writes.h"

#include <algorithm>
#include <map>

namespace kest::testing {
namespace {

using Writes = std::vector<std::string>;

const std::string top = "HKCU\\Software\\Veltrix\\KEST\\";
constexpr std::size_t markWrites = 2;  // the marker of a granted reply: its key and its value

bool BeginsWith(const Writes& whole, const Writes& beginning) {
  return beginning.size() <= whole.size() && std::equal(beginning.begin(), beginning.end(), whole.begin());
}

Writes Joined(const Writes& first, const Writes& then) {
  Writes all = first;
  all.insert(all.end(), then.begin(), then.end());
  return all;
}

// The writes before the `i`-th, and of the later ones those that are not of its kind.
Writes WithoutItsLike(const Writes& whole, std::size_t i) {
  Writes left(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(i));
  if (whole[i].rfind("create ", 0) == 0) return left;  // nothing can be set where there is no key
  for (std::size_t later = i; later < whole.size(); ++later) {
    if (whole[later].rfind("set ", 0) != 0) left.push_back(whole[later]);
  }
  return left;
}

// What is written when this call fails, alone or with its like, and nothing else does.
Writes AfterOne(const Writes& whole, const Failure& failure) {
  const char* kind = failure.point.call == "RegSetValueExA" ? "set " : "create ";
  std::size_t i = 0;
  for (int earlier = 0; whole.at(i).rfind(kind, 0) != 0 || earlier++ != failure.earlier;) ++i;
  if (failure.isAlike) return WithoutItsLike(whole, i);
  Writes left = whole;
  const auto at = left.begin() + static_cast<std::ptrdiff_t>(i);
  if (*kind == 's') {
    left.erase(at);
  } else if (i == 2 || i == 3) {
    left.resize(i);  // a receipt ends with the key that cannot be made
  } else {
    left.erase(at, at + 2);  // a marker without its key
  }
  return left;
}

// Without memory what is written is a beginning of the whole. A lack of it that came before the marker, and was over
// behind it, leaves the receipt.
bool IsCutShort(const Writes& whole, const Writes& written, bool isGone) {
  if (BeginsWith(whole, written)) return true;
  if (isGone) return false;
  return written == Writes(whole.begin() + markWrites, whole.end());
}

// What the value of each name under a receipt holds.
std::string ValueFault(const std::string& write) {
  static const std::map<std::string, std::string> texts = {
      {"Guid", "guid-1"}, {"Amount", "21.95"}, {"Merchant", "Shop"}, {"Tax", "2.00"},
      {"TXN", "T-7"},     {"Tool", "19.95"},   {"Update", "1"}};
  const std::size_t colon = write.find(" : ");
  if (colon == std::string::npos) return "";
  const std::string path = write.substr(4, colon - 4), name = write.substr(colon + 3);
  const std::string wanted = name == "CardType" ? std::string("\4\0\0\0", 4) : texts.at(name) + '\0';
  for (const MemoryRegistry::Value& value : World().registry.Values(path)) {
    if (value.name != name) continue;
    const bool isRight = value.data == wanted && value.type == (name == "CardType" ? os::typeNumber : os::typeString);
    return isRight ? "" : write + " holds " + value.data;
  }
  return write + " is not there";
}

std::string FaultOf(const Writes& whole, const Failure& failure) {
  const Writes written = World().Writes();
  bool isRight = written == whole;
  const bool isWrite = failure.point.call == "RegSetValueExA" || failure.point.call == "RegCreateKeyExA";
  if (failure.IsMemory()) {
    isRight = IsCutShort(whole, written, failure.IsMemoryGone());
  } else if (isWrite) {
    isRight = written == AfterOne(whole, failure);
  }
  std::string fault;
  for (const std::string& write : written) fault += isRight ? ValueFault(write) : write + "; ";
  return isRight || !fault.empty() ? fault : "nothing was written";
}

}  // namespace

std::string ReceiptWrites::Day() {
  return top + "Receipts\\12-31-1999";
}

std::vector<std::string> ReceiptWrites::Whole(const std::string& receipt) {
  const std::string products = top + "Products", receipts = top + "Receipts";
  Writes all = {"create all " + products, "set " + products + " : Update", "create all " + receipt,
                "create all " + receipt + "\\Products", "set " + receipt + "\\Products : Tool"};
  for (const char* name : {"Guid", "Amount", "Merchant", "Tax", "TXN", "CardType"}) {
    all.push_back("set " + receipt + " : " + name);
  }
  return Joined(all, {all[0], all[1], "create all " + receipts, "set " + receipts + " : Update"});
}

void ReceiptWrites::Begin() {
  for (sequence = 1; World().registry.Has(Day() + "\\" + std::to_string(sequence));) ++sequence;
}

std::string ReceiptWrites::Fault(const Failure& failure) const {
  const std::string expected = FaultOf(Whole(Day() + "\\" + std::to_string(sequence)), failure);
  // A clock that cannot be read gives a day without numbers; a key that cannot be opened counts as free.
  std::string other;
  if (failure.point.call == "GetSystemTime") other = top + "Receipts\\0-0-0\\1";
  if (failure.point.call == "RegOpenKeyExA")
    other = Day() + "\\" + failure.point.about.substr(failure.point.about.rfind('\\') + 1);
  // What fails for good fails for the receipt too; what fails once may have done so elsewhere.
  return other.empty() || (expected.empty() && !failure.isAlike) ? expected : FaultOf(Whole(other), failure);
}

std::string ReceiptWrites::MarkFault(bool isDone, const Failure& failure) {
  Writes whole = Whole("");
  whole.resize(markWrites);
  const Writes written = World().Writes();
  const bool isWrite = failure.point.call == "RegSetValueExA" || failure.point.call == "RegCreateKeyExA";
  if (isDone && !isWrite && !failure.isFromThenOn) return written == whole ? "" : "the products are not marked";
  if (!isDone) return written.empty() ? "" : "the products of a bill that has not come are marked";
  return BeginsWith(whole, written) ? "" : "something else was written";
}

}  // namespace kest::testing
