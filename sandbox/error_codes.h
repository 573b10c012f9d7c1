// The values of "KEST-Error" that this server answers with, in one table. They are plain decimal below 2^31; 102 stays
// free, because clients use it for an exchange that failed. Constant data: any thread may read it.
#pragma once

namespace sandbox {

struct ErrorCode {
  int code;
  const char* meaning;
};

constexpr ErrorCode noError = {0, "done"};
constexpr ErrorCode unknownService = {1001, "the server offers no service of this name"};
constexpr ErrorCode unknownApplication = {1101, "the catalogue has no application of this GUID"};
constexpr ErrorCode unknownVersion = {1102, "the catalogue has the application, but not this version of it"};

constexpr ErrorCode errorCodes[] = {noError, unknownService, unknownApplication, unknownVersion};

}  // namespace sandbox
