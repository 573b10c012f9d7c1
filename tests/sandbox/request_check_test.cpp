// What does the head check take out of a head, and what does it let a proxy change?
#include "request_check.h"

#include <gtest/gtest.h>

#include "refusal.h"

namespace sandboxtest {
namespace {

using sandbox::CheckHead;
using sandbox::Refusal;
using sandbox::RequestHead;

std::optional<Refusal> RefusalOf(const std::string& head) {
  try {
    CheckHead(head);
    return std::nullopt;
  } catch (const sandbox::Refused& refused) {
    return refused.refusal;
  }
}

std::string Direct(const std::string& line, const std::string& more = "") {
  return line + "\r\nAccept: */*\r\nHost: shop.test\r\nContent-Length: 12\r\nProxy-Connection: Keep-Alive\r\n" + more +
         "\r\n";
}

TEST(RequestHeadOf, HandshakeNamesNoConnection) {
  const RequestHead head = CheckHead(Direct("GET /GetProductList HTTP/1.0"));
  EXPECT_EQ(head.path, "/GetProductList");
  EXPECT_EQ(head.connectionId, "");
  EXPECT_EQ(head.contentLength, 12u);
}

TEST(RequestHeadOf, RequestNamesItsConnection) {
  EXPECT_EQ(CheckHead(Direct("GET /A HTTP/1.0", "KEST-Auth-CID: a b\r\n")).connectionId, "a b");
}

TEST(RequestHeadOf, AbsoluteTargetGivesItsPath) {
  EXPECT_EQ(CheckHead(Direct("GET http://shop.test/A HTTP/1.0")).path, "/A");
  EXPECT_EQ(CheckHead(Direct("GET HTTP://u:p@shop.test:8080/A/b HTTP/1.0")).path, "/A/b");
  EXPECT_EQ(RefusalOf(Direct("GET http://shop.test HTTP/1.0")), Refusal::Target);
  EXPECT_EQ(RefusalOf(Direct("GET http:///A HTTP/1.0")), Refusal::Target);
}

TEST(RequestHeadOf, AbsoluteTargetAloneDoesNotLoosenTheFields) {
  EXPECT_EQ(RefusalOf(Direct("GET http://shop.test/A HTTP/1.0", "X-Other: 1\r\n")), Refusal::HeaderOrder);
}

constexpr const char* proxied =
    "GET http://shop.test/A HTTP/1.1\r\nhost: shop.test:8080\r\nvia: 1.0 proxy\r\naccept: */*\r\n"
    "X-Forwarded-For: 10.0.0.1\r\nContent-Length: 12\r\nKEST-Auth-CID: abc\r\nConnection: close\r\n\r\n";

TEST(RequestHeadBehindAProxy, MayHaveOtherFieldsOrderCaseVersionAndPort) {
  const RequestHead head = CheckHead(proxied);
  EXPECT_EQ(head.path, "/A");
  EXPECT_EQ(head.connectionId, "abc");
  EXPECT_EQ(head.contentLength, 12u);
}

TEST(RequestHeadBehindAProxy, StillNeedsItsValues) {
  const auto changed = [](const std::string& what, const std::string& with) {
    std::string head = proxied;
    return head.replace(head.find(what), what.size(), with);
  };
  EXPECT_EQ(RefusalOf(changed("*/*", "x")), Refusal::AcceptValue);
  EXPECT_EQ(RefusalOf(changed("Content-Length: 12\r\n", "")), Refusal::LengthMissing);
  EXPECT_EQ(RefusalOf(changed("host: shop.test:8080\r\n", "")), Refusal::HostValue);
  EXPECT_EQ(RefusalOf(changed("shop.test:8080", "shop.test :8080")), Refusal::HostValue);
  EXPECT_EQ(RefusalOf(changed("X-Forwarded-For", "Host")), Refusal::HeaderOrder);
  EXPECT_EQ(RefusalOf(changed("HTTP/1.1", "HTTP/2.0")), Refusal::HttpVersion);
  EXPECT_EQ(RefusalOf(changed("via", "vie")), Refusal::HttpVersion);
}

TEST(RequestHeadLength, TakesNothingButDigits) {
  for (const char* value : {"", "+1", "-1", "1 2", "0x10", "1.0", "00", "012", "1234567890123456789"}) {
    const std::string head = "GET /A HTTP/1.0\r\nAccept: */*\r\nHost: h\r\nContent-Length: " + std::string(value) +
                             "\r\nProxy-Connection: Keep-Alive\r\n\r\n";
    EXPECT_EQ(RefusalOf(head), Refusal::LengthValue) << value;
  }
}

TEST(RequestHeadLength, MayBeZero) {
  const std::string head =
      "GET /A HTTP/1.0\r\nAccept: */*\r\nHost: h\r\nContent-Length: 0\r\nProxy-Connection: Keep-Alive\r\n\r\n";
  EXPECT_EQ(CheckHead(head).contentLength, 0u);
}

TEST(RequestHeadLine, WithControlBytesIsRefused) {
  EXPECT_EQ(RefusalOf(Direct("GET /A\r HTTP/1.0")), Refusal::RequestLine);
  EXPECT_EQ(RefusalOf(Direct(std::string("GET /A\0 HTTP/1.0", 16))), Refusal::RequestLine);
  EXPECT_EQ(RefusalOf(Direct("GET /A HTTP/1.0", "KEST-Auth-CID: a\rb\r\n")), Refusal::HeaderLine);
}

}  // namespace
}  // namespace sandboxtest
