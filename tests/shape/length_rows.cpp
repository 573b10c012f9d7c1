// What "Content-Length" says, and how long the body is.
#include "shape/reply_rows.h"

namespace kest::testing {
namespace {

RowText Length(const char* name, const std::string& value, const char* seen) {
  return {name, {"HTTP/1.0 200 OK\r\nContent-Length: " + value + "\r\n\r\n{body}"}, seen};
}

}  // namespace

const std::vector<RowText>& LengthRows() {
  static const std::vector<RowText> rows = {
      {"LengthMissing", {"HTTP/1.0 200 OK\r\nServer: x\r\n\r\n{body}"}, failed},
      {"ChunksInsteadOfLength",
       {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\nabcd\r\n0\r\n\r\n"},
       failed},
      Length("LengthWithLeadingZeros", "000{length}", good),
      // The number is taken modulo 2^32.
      Length("LengthWrapsToTheRightOne", "{wrapped}", good),
      Length("LengthOneShort", "{less}", failed),
      Length("LengthOneTooMany", "{more}", failed),
      Length("LengthZero", "0", failed),
      Length("LengthEmpty", "", failed),
      Length("LengthNegative", "-{length}", failed),
      Length("LengthWithPlus", "+{length}", failed),
      Length("LengthInHexadecimal", "0xA0", failed),
      Length("LengthOfLetters", "abc", failed),
      Length("LengthWithLetterBehind", "{length}x", failed),
      Length("LengthOfTwoGigabytes", "2147483647", failed),
      Length("LengthOfMinusOneInThirtyTwoBits", "4294967295", failed),
      Length("LengthOverflows", "99999999999", failed),
      Length("FirstOfTwoLengthsCounts", "{length}\r\nContent-Length: 1", good),
      Length("FirstOfTwoLengthsIsWrong", "1\r\nContent-Length: {length}", failed),
      {"BytesBehindTheBody", {"{reply}{closed}{reset}GARBAGE\r\n\r\n"}, good},
      {"SecondReplyBehindTheBody", {"{reply}{closed}{reset}HTTP/1.0 404 Not Found\r\n\r\n"}, good},
  };
  return rows;
}

}  // namespace kest::testing
