// The values of "KEST-Error" that this server answers with, made from tables/error_codes.inc. Constant data: any thread
// may read it.
#pragma once

namespace sandbox {

struct ErrorCode {
  int code;
  const char* meaning;
  const char* advice;  // what to do about it
};

#define KEST_ERROR_CODE(identifier, code, meaning, advice) constexpr ErrorCode identifier = {code, meaning, advice};
#include "tables/error_codes.inc"
#undef KEST_ERROR_CODE

constexpr ErrorCode errorCodes[] = {
#define KEST_ERROR_CODE(identifier, code, meaning, advice) identifier,
#include "tables/error_codes.inc"
#undef KEST_ERROR_CODE
};

}  // namespace sandbox
