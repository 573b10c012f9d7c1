// The text of a product, as a server sends it: read as the plain rule says, and the same again when it is written.
#include <algorithm>

#include "core/product_record.h"
#include "fuzz/target.h"

namespace kest::testing {
namespace {

// A name ends at the first ":" from where the last pair ended, a value at the next "^".
Pairs Expected(const std::string& text) {
  Pairs pairs;
  std::size_t begin = 0;
  for (;;) {
    const std::size_t colon = begin <= text.size() ? text.find(':', begin) : std::string::npos;
    if (colon == std::string::npos) return pairs;
    const std::size_t end = std::min(text.find('^', colon), text.size());
    pairs.emplace_back(text.substr(begin, colon - begin), text.substr(colon + 1, end - colon - 1));
    begin = end + 1;
  }
}

// The pairs in a line "KEST-Product: ...\r\n".
std::string TextInLine(const std::string& line) {
  const std::string begin = "KEST-Product: ";
  HOLD(line.size() >= begin.size() + 2);
  HOLD(line.compare(0, begin.size(), begin) == 0);
  HOLD(line.compare(line.size() - 2, 2, "\r\n") == 0);
  return line.substr(begin.size(), line.size() - begin.size() - 2);
}

void Check(const std::string& text) {
  ProductRecord record;
  record.Set("left over", "from before");
  record.Parse(Kest(text));
  const Pairs pairs = PairsOf(record.Fields());
  HOLD(pairs == Expected(text));

  const std::string line = Plain(record.Format());
  HOLD(line.size() == record.LineLength());
  ProductRecord again;
  again.Parse(Kest(TextInLine(line)));
  HOLD(PairsOf(again.Fields()) == pairs);

  // A record may be read from one of its own texts.
  if (pairs.empty()) return;
  record.Parse(record.Fields().At(0).Value());
  HOLD(PairsOf(record.Fields()) == Expected(pairs[0].second));
}

}  // namespace
}  // namespace kest::testing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t length) {
  kest::testing::Check(kest::testing::Input(bytes, length).Rest());
  return 0;
}
