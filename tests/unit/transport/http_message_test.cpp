// Are the heads of requests and replies written byte by byte as they must be?
#include "transport/http_reply.h"
#include "transport/http_request.h"
#include "transport_fixture.h"

namespace kest::testing {
namespace {

using ::testing::ElementsAre;

HttpRequest RequestFor(const char* path) {
  HttpRequest request;
  request.url.host = "host";
  request.url.path = path;
  return request;
}

TEST(HttpRequest, DefaultsAreGetAndVersionOne) {
  const HttpRequest request;
  EXPECT_EQ(Plain(request.method), "GET");
  EXPECT_EQ(Plain(request.version), "1.0");
  EXPECT_EQ(Plain(request.url.scheme), "http");
  EXPECT_FALSE(request.UsesProxy());
  EXPECT_EQ(request.headers.Count(), 0u);
}

TEST(HttpRequest, HeadWithoutFieldsIsTheRequestLineAndTwoLineEnds) {
  EXPECT_EQ(Plain(RequestFor("/x").WriteHead()), "GET /x HTTP/1.0\r\n\r\n");
}

TEST(HttpRequest, HeadHasItsFieldsInListOrderAndOneEmptyLine) {
  HttpRequest request = RequestFor("/x");
  request.method = "POST";
  request.version = "1.1";
  request.headers.Add("Host", "host");
  request.headers.Add("accept", "*/*");
  request.headers.Add("Empty", "");
  EXPECT_EQ(Plain(request.WriteHead()), "POST /x HTTP/1.1\r\nHost: host\r\naccept: */*\r\nEmpty: \r\n\r\n");
}

TEST(HttpRequest, TargetHoldsParametersQueryAndFragment) {
  HttpRequest request;
  request.url = HttpUrl::Parse("http://host/a;b?c#d");
  EXPECT_EQ(Plain(request.WriteHead()), "GET /a;b?c#d HTTP/1.0\r\n\r\n");
}

TEST(HttpRequest, TargetWithAProxyIsTheAbsoluteForm) {
  HttpRequest request;
  request.url = HttpUrl::Parse("http://me:pw@host:81/a");
  request.proxy.host = "proxy";
  EXPECT_EQ(Plain(request.WriteHead()), "GET http://me:pw@host:81/a HTTP/1.0\r\n\r\n");
}

TEST(HttpRequest, TargetWithAProxyAndPortZeroHasNoPort) {
  HttpRequest request = RequestFor("/a");
  request.proxy.host = "proxy";
  request.proxy.port = 3128;
  EXPECT_EQ(Plain(request.WriteHead()), "GET http://host/a HTTP/1.0\r\n\r\n");
}

TEST(HttpReply, DefaultsAreTwoHundredAndOk) {
  const HttpReply reply;
  EXPECT_EQ(reply.status, 200);
  EXPECT_EQ(Plain(reply.reason), "OK");
  EXPECT_EQ(reply.contentLength, -1);
  EXPECT_FALSE(reply.keepAlive);
  EXPECT_TRUE(reply.handleStatus);
  EXPECT_FALSE(reply.noReply);
}

TEST(HttpReply, HeadIsStatusLineFieldsAndOneEmptyLine) {
  HttpReply reply;
  reply.version = "1.0";
  EXPECT_EQ(Plain(reply.WriteHead()), "HTTP/1.0 200 OK\r\n\r\n");
  reply.status = 404;
  reply.reason = "Not Found";
  reply.headers.Add("Date", "today");
  EXPECT_EQ(Plain(reply.WriteHead()), "HTTP/1.0 404 Not Found\r\nDate: today\r\n\r\n");
}

TEST(HttpHeaderList, GetIgnoresLetterCaseAndTakesTheFirst) {
  HttpHeaderList headers;
  headers.Add("content-length", "1");
  headers.Add("Content-Length", "2");
  EXPECT_EQ(Plain(headers.Get("Content-Length")), "1");
  EXPECT_TRUE(headers.Get("Content").IsEmpty());
}

TEST(HttpHeaderList, EmptyNameMatchesOnlyAFieldWithAnEmptyName) {
  HttpHeaderList headers;
  headers.Add("a", "1");
  EXPECT_TRUE(headers.Get("").IsEmpty());
  headers.Add("", "2");
  EXPECT_EQ(Plain(headers.Get("")), "2");
}

TEST(HttpHeaderList, SetReplacesTheFirstAndKeepsItsNameOrAppends) {
  HttpHeaderList headers;
  headers.Add("content-length", "1");
  headers.Set("Content-Length", "2");
  headers.Set("Date", "3");
  EXPECT_EQ(FieldsOf(headers), (Fields{{"content-length", "2"}, {"Date", "3"}}));
}

// The text fills its block to the last character: without room for the two line ends it would be made twice.
TEST(HttpHeaderList, ABlockOfFieldsIsAskedForOnce) {
  HttpHeaderList headers;
  headers.Add("A", Kest(std::string(141, 'x')));
  AllocationSystem memory;
  const SystemInForce inForce(memory);
  String head;
  AppendHeaderBlock(headers, head);
  EXPECT_EQ(head.Length(), 150u);
  EXPECT_EQ(memory.Allocations(), 1u);
}

TEST(HttpHeaderList, KnownNamesStandInTheirOrder) {
  std::vector<std::string> names(std::begin(header::known), std::end(header::known));
  EXPECT_THAT(names,
              ElementsAre("Accept", "Cache-Control", "Connection", "Content-Length", "Content-Type", "Date", "Host",
                          "If-Modified-Since", "Location", "Pragma", "Proxy-Connection", "User-Agent", "Via"));
  EXPECT_STREQ(header::closeToken, "Close");
  EXPECT_STREQ(header::keepAliveToken, "Keep-Alive");
}

}  // namespace
}  // namespace kest::testing
