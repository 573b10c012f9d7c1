// Which replies call for another attempt, and what do they change?
#include "transport/next_attempt.h"

#include "transport_fixture.h"

namespace kest::testing {
namespace {

class NextAttemptTest : public ::testing::Test {
 protected:
  NextAttemptTest() {
    request.url = HttpUrl::Parse("http://host:81/a/b");
    request.headers.Add("Host", "host");
  }
  bool Prepare(int status, const char* location = nullptr) {
    HttpReply reply;
    reply.status = static_cast<std::uint16_t>(status);
    if (location != nullptr) reply.headers.Add("location", location);
    return PrepareNextAttempt(reply, request, state);
  }
  std::string Url() const {
    String text;
    request.url.AppendAbsolute(text);
    return Plain(text);
  }

  HttpRequest request;
  AttemptState state;
};

TEST_F(NextAttemptTest, OnlySixStatusesOfAllAskForOne) {
  for (int status = 0; status <= 999; ++status) {
    const bool isKnown =
        status == 301 || status == 302 || status == 303 || status == 305 || status == 408 || status == 411;
    state = AttemptState();
    EXPECT_EQ(Prepare(status, "http://other/"), isKnown) << status;
  }
}

TEST_F(NextAttemptTest, RedirectsMergeTheLocationIntoTheUrl) {
  for (const int status : {301, 302, 303}) {
    state = AttemptState();
    request.url = HttpUrl::Parse("http://host:81/a/b");
    EXPECT_TRUE(Prepare(status, "c?d"));
    EXPECT_EQ(Url(), "http://host:81/a/c?d");
    EXPECT_TRUE(Prepare(status, "http://other/e"));
    EXPECT_EQ(Url(), "http://other/e");
  }
}

TEST_F(NextAttemptTest, RedirectLeavesTheHostFieldAsItIs) {
  EXPECT_TRUE(Prepare(302, "http://other/"));
  EXPECT_EQ(FieldsOf(request.headers), (Fields{{"Host", "host"}}));
}

TEST_F(NextAttemptTest, RedirectWithoutALocationIsNotFollowed) {
  EXPECT_FALSE(Prepare(302));
  EXPECT_FALSE(Prepare(302, ""));
  EXPECT_EQ(state.redirectsLeft, 5);
}

TEST_F(NextAttemptTest, RedirectOfAnotherMethodThanGetOrHeadIsNotFollowed) {
  for (const char* method : {"POST", "PUT", "get", "GETS", "", "HEADER"}) {
    request.method = method;
    EXPECT_FALSE(Prepare(302, "http://other/")) << method;
  }
  request.method = "HEAD";
  EXPECT_TRUE(Prepare(302, "http://other/"));
  EXPECT_EQ(state.redirectsLeft, 4);
}

TEST_F(NextAttemptTest, FiveRedirectsOfAnyKindAreFollowed) {
  const int statuses[] = {301, 302, 303, 302, 301};
  for (const int status : statuses) EXPECT_TRUE(Prepare(status, "/x"));
  EXPECT_FALSE(Prepare(303, "/y"));
  EXPECT_FALSE(Prepare(303, "/y"));
  EXPECT_EQ(Url(), "http://host:81/x");
  EXPECT_EQ(state.timeoutRetriesLeft, 5);
}

TEST_F(NextAttemptTest, UseProxySetsTheProxyAndIsNotCounted) {
  request.method = "POST";
  for (int i = 0; i < 100; ++i) EXPECT_TRUE(Prepare(305, "http://proxy:3128/"));
  EXPECT_EQ(Plain(request.proxy.host), "proxy");
  EXPECT_EQ(request.proxy.port, 3128);
  EXPECT_EQ(Url(), "http://host:81/a/b");
  EXPECT_EQ(state.redirectsLeft, 5);
}

TEST_F(NextAttemptTest, UseProxyWithoutALocationStops) {
  EXPECT_FALSE(Prepare(305));
  EXPECT_FALSE(request.UsesProxy());
}

TEST_F(NextAttemptTest, UseProxyWithoutAHostStopsAndKeepsTheProxyInUse) {
  for (const char* location : {"/", "other:3128", "http:///path", "http:"}) {
    request.proxy.host = "proxy";
    request.proxy.port = 3128;
    EXPECT_FALSE(Prepare(305, location)) << location;
    EXPECT_EQ(Plain(request.proxy.host), "proxy") << location;
    EXPECT_EQ(request.proxy.port, 3128) << location;
  }
}

TEST_F(NextAttemptTest, FiveTimeoutsAreTriedAgain) {
  request.method = "POST";
  for (int i = 0; i < 5; ++i) EXPECT_TRUE(Prepare(408));
  EXPECT_FALSE(Prepare(408));
  EXPECT_EQ(state.redirectsLeft, 5);
}

TEST_F(NextAttemptTest, LengthRequiredSaysZeroAndLeavesTheBodyOut) {
  request.headers.Add("content-length", "123");
  EXPECT_TRUE(state.sendsBody);
  EXPECT_TRUE(Prepare(411));
  EXPECT_FALSE(state.sendsBody);
  EXPECT_EQ(FieldsOf(request.headers), (Fields{{"Host", "host"}, {"content-length", "0"}}));
}

TEST_F(NextAttemptTest, LengthRequiredAddsTheFieldWhereThereIsNone) {
  EXPECT_TRUE(Prepare(411));
  EXPECT_EQ(FieldsOf(request.headers), (Fields{{"Host", "host"}, {"Content-Length", "0"}}));
}

TEST_F(NextAttemptTest, LengthRequiredIsNotCounted) {
  for (int i = 0; i < 1000; ++i) EXPECT_TRUE(Prepare(411));
}

}  // namespace
}  // namespace kest::testing
