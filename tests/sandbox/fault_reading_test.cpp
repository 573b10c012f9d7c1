// Is every fault read as it was asked for, and every mistake in asking told with its place?
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fault.h"

namespace sandboxtest {
namespace {

using sandbox::Fault;
using sandbox::FaultKind;
using sandbox::FaultPlace;
using ::testing::ElementsAre;

std::vector<Fault> Read(const std::string& faults) {
  return sandbox::ReadFaults(R"({"faults": [)" + faults + "]}");
}

// Says what is wrong with a text, or with one fault.
std::string WordsForText(const std::string& text) {
  try {
    sandbox::ReadFaults(text);
  } catch (const sandbox::FaultError& error) {
    return error.what();
  }
  return "(nothing)";
}

std::string WordsFor(const std::string& fault) {
  return WordsForText(R"({"faults": [)" + fault + "]}");
}

TEST(FaultReading, OmittedKeysAreOnceForAnyRequest) {
  const Fault fault = Read(R"({"kind": "wrong-digest"})").at(0);
  EXPECT_EQ(fault.at, FaultPlace::Request);
  EXPECT_EQ(fault.service, "");
  EXPECT_EQ(fault.left, 1u);
}

TEST(FaultReading, EveryKindIsFoundByItsName) {
  for (std::size_t i = 0; i < sandbox::faultKindCount; i++) {
    const auto& row = sandbox::faultKinds[i];
    const std::string parameters =
        R"(, "milliseconds": 1, "bytes": 1, "value": "1", "code": 302, "name": "a", "lines": ["a"]})";
    const std::string words = WordsFor(std::string(R"({"kind": ")") + row.name + "\"" + parameters);
    EXPECT_THAT(words, ::testing::HasSubstr("faults[0]: the key ")) << row.name;
    EXPECT_STREQ(sandbox::FaultKindName(row.kind), row.name);
  }
}

TEST(FaultReading, ParametersOfAKindAreKept) {
  const std::vector<Fault> faults = Read(
      R"({"kind": "delay", "milliseconds": 600000, "at": "handshake", "service": "GetBill", "times": 1000000000},
         {"kind": "status", "code": 305, "location": "http://a/", "reason": "R", "times": 100},
         {"kind": "field", "name": "N", "value": null}, {"kind": "headers", "lines": ["a", " b\r"], "times": "always"})");
  ASSERT_EQ(faults.size(), 4u);
  EXPECT_EQ(faults[0].kind, FaultKind::Delay);
  EXPECT_EQ(faults[0].delay.count(), 600000);
  EXPECT_EQ(faults[0].at, FaultPlace::Handshake);
  EXPECT_EQ(faults[0].service, "GetBill");
  EXPECT_EQ(faults[0].left, 1000000000u);
  EXPECT_EQ(faults[1].status, 305);
  EXPECT_EQ(faults[1].location, "http://a/");
  EXPECT_EQ(faults[1].reason, "R");
  EXPECT_EQ(faults[2].name, "N");
  EXPECT_FALSE(faults[2].value.has_value());
  EXPECT_THAT(faults[3].lines, ElementsAre("a", " b\r"));
  EXPECT_FALSE(faults[3].left.has_value());
}

TEST(FaultReading, AlwaysIs100TimesForAStatusThatClientsAnswerWithoutEnd) {
  EXPECT_EQ(Read(R"({"kind": "status", "code": 305, "times": "always"})").at(0).left, 100u);
  EXPECT_EQ(Read(R"({"kind": "status", "code": 411, "times": "always"})").at(0).left, 100u);
  for (const char* code : {"301", "302", "303", "408", "500"}) {
    const std::string fault = std::string(R"({"kind": "status", "times": "always", "code": )") + code + "}";
    EXPECT_FALSE(Read(fault).at(0).left.has_value()) << code;
  }
  EXPECT_EQ(WordsFor(R"({"kind": "status", "code": 411, "times": 101})"),
            "faults[0].times: must be a whole number of 1 to 100");
}

TEST(FaultReading, WholeMustBeAListOfFaults) {
  EXPECT_EQ(WordsForText("[]"), "the whole: must be an object");
  EXPECT_EQ(WordsForText("{}"), "the whole: \"faults\" is missing");
  EXPECT_EQ(WordsForText(R"({"faults": 1})"), "faults: must be a list");
  EXPECT_EQ(WordsForText(R"({"faults": [], "more": 1})"), "the whole: the key \"more\" has no meaning here");
  EXPECT_THAT(WordsForText("{"), ::testing::HasSubstr("this is not JSON: parse error at line 1"));
  EXPECT_THAT(WordsForText("\"\xff\""), ::testing::HasSubstr("this is not JSON: "));
  EXPECT_EQ(WordsForText(R"({"faults": []})"), "(nothing)");
}

TEST(FaultReading, MistakeIsToldWithItsPlace) {
  EXPECT_EQ(WordsFor(R"({"kind": "bad-padding"}, 7)"), "faults[1]: must be an object");
  EXPECT_EQ(WordsFor("{}"), "faults[0]: \"kind\" is missing");
  EXPECT_EQ(WordsFor(R"({"kind": "explode"})"), "faults[0].kind: there is no fault \"explode\"");
  EXPECT_EQ(WordsFor(R"({"kind": "bad-padding", "at": "reply"})"),
            "faults[0].at: must be \"handshake\" or \"request\"");
  EXPECT_EQ(WordsFor(R"({"kind": "bad-padding", "bytes": 1})"), "faults[0]: the key \"bytes\" has no meaning here");
  EXPECT_EQ(WordsFor(R"({"kind": "bad-padding", "service": 1})"), "faults[0].service: must be a text");
}

TEST(FaultReading, ServiceThatNoRequestCanHaveIsRefused) {
  for (const char* service : {"Nope", "/GetBill", "getbill", "GetBil", ""}) {
    EXPECT_EQ(WordsFor(std::string(R"({"kind": "bad-padding", "service": ")") + service + "\"}"),
              std::string("faults[0].service: there is no service \"") + service +
                  "\"; the server offers GetProductList, BillCustomer, GetBill");
  }
  for (const char* service : {"GetProductList", "BillCustomer", "GetBill"}) {
    EXPECT_EQ(Read(std::string(R"({"kind": "bad-padding", "service": ")") + service + "\"}").at(0).service, service);
  }
}

std::string ObjectOfKeys(int count) {
  std::string keys;
  for (int i = 0; i < count; i++) keys += (i ? ",\"" : "\"") + std::to_string(i) + "\":1";
  return "{" + keys + "}";
}

// Before they are parsed, which would take longer than a server can be silent.
TEST(FaultReading, ObjectOfVeryManyKeysIsRefusedAtOnce) {
  const std::string words = "an object has more than 32 keys";
  EXPECT_EQ(WordsFor(ObjectOfKeys(200000)), words);
  EXPECT_EQ(WordsForText(ObjectOfKeys(33)), words);
  EXPECT_EQ(WordsFor(R"({"kind": )" + ObjectOfKeys(33) + "}"), words);
  EXPECT_EQ(WordsForText(ObjectOfKeys(32)), "the whole: \"faults\" is missing");
}

TEST(FaultReading, KeysAreCountedInEachObjectByItself) {
  std::string faults = R"({"kind": "bad-padding"})";
  for (int i = 0; i < 40; i++) faults += R"(, {"kind": "bad-padding"})";
  EXPECT_EQ(Read(faults).size(), 41u);
}

TEST(FaultReading, KeyThatStandsTwiceIsRefused) {
  EXPECT_EQ(WordsFor(R"({"kind": "bad-padding", "times": 1, "times": 2})"),
            "the key \"times\" stands twice in one object");
  EXPECT_EQ(WordsForText(R"({"faults": [{"kind": "bad-padding"}], "faults": []})"),
            "the key \"faults\" stands twice in one object");
}

TEST(FaultReading, NumberOutsideItsRangeIsRefused) {
  for (const char* times : {"0", "-1", "1.5", "1000000001", "\"never\"", "null", "18446744073709551616"}) {
    EXPECT_EQ(WordsFor(std::string(R"({"kind": "bad-padding", "times": )") + times + "}"),
              "faults[0].times: must be a whole number of 1 to 1000000000")
        << times;
  }
  EXPECT_EQ(WordsFor(R"({"kind": "delay", "milliseconds": 600001})"),
            "faults[0].milliseconds: must be a whole number of 0 to 600000");
  EXPECT_EQ(WordsFor(R"({"kind": "close", "bytes": -1})"),
            "faults[0].bytes: must be a whole number of 0 to 1000000000");
  EXPECT_EQ(WordsFor(R"({"kind": "status", "code": 99})"), "faults[0].code: must be a whole number of 100 to 999");
  EXPECT_EQ(WordsFor(R"({"kind": "status"})"), "faults[0]: \"code\" is missing");
}

TEST(FaultReading, TextThatWouldBreakItsLineIsRefused) {
  const std::string words = "must have no line ends and no zero bytes";
  EXPECT_EQ(WordsFor(R"({"kind": "content-length", "value": "1\r"})"), "faults[0].value: " + words);
  EXPECT_EQ(WordsFor(R"({"kind": "status", "code": 302, "location": "a\n"})"), "faults[0].location: " + words);
  EXPECT_EQ(WordsFor(R"({"kind": "status", "code": 302, "reason": "a\n"})"), "faults[0].reason: " + words);
  EXPECT_EQ(WordsFor(R"({"kind": "field", "name": "a", "value": "\u0000"})"), "faults[0].value: " + words);
  EXPECT_EQ(WordsFor(R"({"kind": "field", "name": "a:", "value": "b"})"),
            "faults[0].name: must be a name without \":\"");
  EXPECT_EQ(WordsFor(R"({"kind": "field", "name": "", "value": "b"})"), "faults[0].name: must be a name without \":\"");
}

TEST(FaultReading, LinesThatWouldEndTheHeadAreRefused) {
  EXPECT_EQ(WordsFor(R"({"kind": "headers", "lines": "a"})"), "faults[0].lines: must be a list of texts");
  EXPECT_EQ(WordsFor(R"({"kind": "headers", "lines": []})"), "faults[0].lines: must be a list of texts");
  EXPECT_EQ(WordsFor(R"({"kind": "headers", "lines": [1]})"), "faults[0].lines: must be a list of texts");
  EXPECT_EQ(WordsFor(R"({"kind": "headers", "lines": [""]})"), "faults[0].lines: an empty line would end the head");
  EXPECT_EQ(WordsFor(R"({"kind": "headers", "lines": ["a\nb"]})"),
            "faults[0].lines: write two lines instead of a line end");
}

}  // namespace
}  // namespace sandboxtest
