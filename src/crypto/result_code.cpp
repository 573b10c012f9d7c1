#include "crypto/result_code.h"

namespace kest {
namespace {

struct Mapping {
  int methodResult;
  int code;
};

// Also the numbers that no method built here answers: the table is fixed.
constexpr Mapping mappings[] = {
    {0, 0},   {1, 519},  {2, 520},  {3, 521},  {4, 522},  {5, 524},  {6, 525},   {7, 533},
    {9, 535}, {10, 536}, {11, 534}, {12, 528}, {13, 527}, {15, 513}, {128, 518},
};
constexpr int codeForAnythingElse = 520;

}  // namespace

ResultCode ToResultCode(int methodResult) {
  for (const Mapping& mapping : mappings) {
    if (mapping.methodResult == methodResult) return static_cast<ResultCode>(mapping.code);
  }
  return static_cast<ResultCode>(codeForAnythingElse);
}

}  // namespace kest
