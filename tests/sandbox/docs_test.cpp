// Does the page on the sandbox say what the program does?
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "admin_routes.h"
#include "error_codes.h"
#include "fault.h"
#include "http_server.h"
#include "refusal.h"
#include "sandbox/process.h"
#include "server_limits.h"

namespace sandboxtest {
namespace {

using ::testing::HasSubstr;

std::string Page() {
  std::ifstream file(KEST_SANDBOX_DOCS);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

TEST(SandboxPage, HasARowForEachRefusal) {
  for (int i = 0; i < sandbox::refusalCount; i++) {
    const auto refusal = static_cast<sandbox::Refusal>(i);
    const std::string row = "| " + std::to_string(RefusalStatus(refusal)) + " | " + RefusalReason(refusal) + " |\n";
    EXPECT_NE(Page().find(row), std::string::npos) << row;
  }
}

TEST(SandboxPage, HasARowForEachErrorCode) {
  for (const sandbox::ErrorCode& error : sandbox::errorCodes) {
    const std::string row = "| " + std::to_string(error.code) + " | " + error.meaning + " | " + error.advice + " |\n";
    EXPECT_NE(Page().find(row), std::string::npos) << row;
  }
}

TEST(SandboxPage, HasARowForEachTestCard) {
#define KEST_TEST_CARD(number, kind, typeCode, error, outcome) \
  {number, kind, std::to_string(sandbox::error.code), outcome},
  const std::vector<std::vector<std::string>> cards = {
#include "tables/test_cards.inc"
  };
#undef KEST_TEST_CARD
  for (const std::vector<std::string>& card : cards) {
    std::string row = "|";
    for (const std::string& cell : card) row += " " + cell + " |";
    EXPECT_NE(Page().find(row + "\n"), std::string::npos) << row;
  }
}

TEST(SandboxPage, HasARowForEachKindOfFault) {
  for (std::size_t i = 0; i < sandbox::faultKindCount; i++) {
    const sandbox::FaultKindRow& kind = sandbox::faultKinds[i];
    const std::string row = std::string("| `") + kind.name + "` | " + kind.parameters + " | " + kind.meaning + " |\n";
    EXPECT_NE(Page().find(row), std::string::npos) << row;
  }
}

TEST(SandboxPage, HasARowForEachRouteOfTheAdminPort) {
  for (std::size_t i = 0; i < sandbox::adminRouteCount; i++) {
    const sandbox::AdminRouteRow& route = sandbox::adminRoutes[i];
    const std::string row = std::string("| `") + route.method + " " + route.path + "` | " + route.meaning + " |\n";
    EXPECT_NE(Page().find(row), std::string::npos) << row;
  }
}

TEST(SandboxPage, HasARowForEachLimit) {
  for (const sandbox::LimitRow& limit : sandbox::Limits()) {
    const std::string row = "| " + limit.what + " | " + limit.limit + " | " + limit.beyond + " |\n";
    EXPECT_NE(Page().find(row), std::string::npos) << row;
  }
}

// The reasons of refusals and the words of the page name these as numbers.
TEST(SandboxPage, NamesTheLimitsInItsWordsAsTheyAre) {
  EXPECT_THAT(RefusalReason(sandbox::Refusal::FieldsTooMany), HasSubstr(std::to_string(sandbox::mostFields)));
  EXPECT_THAT(sandbox::malformedOrderLine.advice, HasSubstr(std::to_string(sandbox::mostOrderLines) + " lines"));
  EXPECT_THAT(RefusalReason(sandbox::Refusal::HandshakePath), HasSubstr(std::to_string(sandbox::longestServicePath)));
  EXPECT_THAT(RefusalReason(sandbox::Refusal::RsaTooLong), HasSubstr(std::to_string(sandbox::longestHandshake)));
  EXPECT_THAT(RefusalReason(sandbox::Refusal::BodiesTooLarge), HasSubstr("four times"));
  EXPECT_EQ(sandbox::bodiesAtOnce, 4u);
  EXPECT_THAT(RefusalReason(sandbox::Refusal::RepliesTooLarge),
              HasSubstr(std::to_string(sandbox::HttpLimits().maxReplies >> 20) + " MB"));
  EXPECT_THAT(Page(), HasSubstr("A body of more than " + std::to_string(sandbox::smallBody) + " bytes counts"));
  EXPECT_THAT(Page(), HasSubstr("- " + std::to_string(sandbox::mostFaults) + " faults wait at the most"));
  EXPECT_THAT(Page(), HasSubstr("keeps up to " + std::to_string(sandbox::mostAdminConnections) + " such replies"));
}

TEST(SandboxPage, NamesEachOptionOfServeWithItsDefault) {
  Process help({"serve", "--help"});
  ASSERT_EQ(help.Wait(), 0);
  const std::string page = Page();
  std::istringstream lines(help.Output());
  int options = 0;
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::string option, kind, sign;
    words >> option >> kind;
    if (option.rfind("--", 0) != 0) continue;
    options++;
    const std::size_t equals = line.find("=");
    std::string value;
    if (equals != std::string::npos) std::istringstream(line.substr(equals + 1)) >> value;
    const std::string row = "| `" + option + "` | " + value;
    EXPECT_NE(page.find(row), std::string::npos) << row;
  }
  EXPECT_EQ(options, 12);
}

}  // namespace
}  // namespace sandboxtest
