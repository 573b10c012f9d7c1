#include "transport/secure_exchange.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "core/exception.h"
#include "crypto/message_digest.h"
#include "support/commerce_fixture.h"

namespace kest {
namespace {

using testing::Fields;
using testing::SealedServer;
using testing::ServerRequest;

std::string DigestWithoutZero(const std::string& text) {
  AlgorithmObject* digest = nullptr;
  std::uint8_t bytes[20] = {};
  std::uint32_t length = 0;
  EXPECT_EQ(resultSuccess, CreateAlgorithm(&digest));
  EXPECT_EQ(resultSuccess, SetAlgorithmInfo(digest, sha1Descriptor, nullptr));
  EXPECT_EQ(resultSuccess, DigestInit(digest, libraryChooser));
  EXPECT_EQ(resultSuccess, DigestUpdate(digest, text.data(), static_cast<std::uint32_t>(text.size())));
  EXPECT_EQ(resultSuccess, DigestFinal(digest, bytes, &length, sizeof bytes));
  DestroyAlgorithm(&digest);
  String encoded;
  ByteBuffer(bytes, length).EncodeBase64(encoded);
  return encoded.Text();
}

class SecureExchangeTest : public testing::CommerceTest {
 protected:
  // Runs an exchange and answers whether it went through; the reply's fields are in `reply`.
  bool Run() {
    NameValueList request;
    request.Add("KEST-Service", "GetProductList");
    request.Add("GUID", "application");
    reply.Clear();
    return SecureExchange("GetProductList", request, reply);
  }

  // Lets the handshake pass and answers the real request with this.
  void AnswerRequestWith(const std::function<std::string(SealedServer&, const ServerRequest&)>& answer) {
    server.answer = [answer](SealedServer& self, const ServerRequest& request) {
      return self.IsHandshake(request) ? self.AnswerHonestly(request) : answer(self, request);
    };
  }
  // Fields that make an honest reply.
  Fields Honest() const {
    return {{"KEST-Auth-Client-RAC", server.clientRac}, {"KEST-Auth-Server-RAC", server.serverRac}};
  }
  // The last request as the server reads it.
  std::string LastRequest() { return server.OpenRequest(server.requests.back()); }

  NameValueList reply;
};

TEST_F(SecureExchangeTest, AnHonestServersFieldsComeBackInOrder) {
  server.replyFields = {{"KEST-Product", "SKU:1"}, {"KEST-Product", "SKU:2"}, {"Note", "last"}};
  ASSERT_TRUE(Run());
  ASSERT_EQ(5u, reply.Count());
  EXPECT_STREQ("KEST-Auth-Client-RAC", reply.At(0).Name().Text());
  EXPECT_STREQ("SKU:1", reply.At(2).Value().Text());
  EXPECT_STREQ("SKU:2", reply.At(3).Value().Text());
  EXPECT_STREQ("last", reply.Get("note").Text());
}

TEST_F(SecureExchangeTest, TwoConnectionsGoToTheConfiguredServer) {
  ASSERT_TRUE(Run());
  ASSERT_EQ(2u, server.requests.size());
  for (const ServerRequest& request : server.requests) {
    EXPECT_EQ("10.0.0.1", request.host);
    EXPECT_EQ(8080, request.port);
  }
  EXPECT_EQ((std::vector<std::string>{"shop.example", "shop.example"}), server.lookedUp);
}

TEST_F(SecureExchangeTest, TheHandshakesHeadIsExactlyThis) {
  ASSERT_TRUE(Run());
  const ServerRequest& handshake = server.requests[0];
  EXPECT_EQ("GET /GetProductList HTTP/1.0\r\nAccept: */*\r\nHost: shop.example\r\nContent-Length: " +
                std::to_string(handshake.body.size()) + "\r\nProxy-Connection: Keep-Alive\r\n\r\n",
            handshake.head);
}

TEST_F(SecureExchangeTest, TheRequestsHeadNamesTheConnection) {
  ASSERT_TRUE(Run());
  const ServerRequest& request = server.requests[1];
  EXPECT_EQ("GET /GetProductList HTTP/1.0\r\nAccept: */*\r\nHost: shop.example\r\nContent-Length: " +
                std::to_string(request.body.size()) +
                "\r\nProxy-Connection: Keep-Alive\r\nKEST-Auth-CID: connection-7\r\n\r\n",
            request.head);
}

TEST_F(SecureExchangeTest, AHandshakeReplyWithoutConnectionIdentifierIsNoFailure) {
  server.connectionId = "";
  server.answer = [](SealedServer& self, const ServerRequest& request) {
    if (request.number == 1) return self.AnswerHonestly(request);
    return self.Reply({{"KEST-Auth-Client-RAC", self.clientRac}, {"KEST-Auth-Server-RAC", self.serverRac}});
  };
  ASSERT_TRUE(Run());
  EXPECT_EQ(std::string::npos, server.requests[1].head.find("KEST-Auth-CID"));
}

TEST_F(SecureExchangeTest, TheHandshakeCarriesKeyChallengesAndVersionBehindItsDigest) {
  ASSERT_TRUE(Run());
  const std::string text = server.OpenHandshake(server.requests[0]);
  const std::size_t key = text.find("KEST-Auth-Client-Key: ");
  ASSERT_EQ(0u, key);
  const std::size_t keyLength = text.find("\r\n") - 22;
  EXPECT_EQ(184u, keyLength);  // base64 of 136 bytes
  EXPECT_EQ(64u, server.clientRac.size());
  EXPECT_EQ(
      "KEST-Auth-Client-RAC: " + server.clientRac + "\r\nKEST-Auth-Server-RAC: \r\nKEST-Protocol-Version: 1.1\r\n\r\n",
      text.substr(text.find("\r\n") + 2));
}

TEST_F(SecureExchangeTest, TheRequestCarriesTheFieldsThenTheSealingsOwn) {
  ASSERT_TRUE(Run());
  EXPECT_EQ("KEST-Service: GetProductList\r\nGUID: application\r\nKEST-Auth-Client-RAC: " + server.clientRac +
                "\r\nKEST-Auth-Server-RAC: " + server.serverRac + "\r\nKEST-Protocol-Version: 1.1\r\n\r\n",
            LastRequest());
}

TEST_F(SecureExchangeTest, FieldsOfAnEarlierSealingAreReplacedWhereTheyStand) {
  NameValueList request;
  request.Add("kest-auth-client-rac", "old");
  request.Add("KEST-Protocol-Version", "9.9");
  ASSERT_TRUE(SecureExchange("GetProductList", request, reply));
  EXPECT_EQ("kest-auth-client-rac: " + server.clientRac +
                "\r\nKEST-Protocol-Version: 1.1\r\nKEST-Auth-Server-RAC: " + server.serverRac + "\r\n\r\n",
            LastRequest());
}

TEST_F(SecureExchangeTest, EveryExchangeHasAKeyAndAChallengeOfItsOwn) {
  ASSERT_TRUE(Run());
  const std::string firstChallenge = server.clientRac;
  const std::string firstBody = server.requests[0].body;
  ASSERT_TRUE(Run());
  EXPECT_NE(firstChallenge, server.clientRac);
  EXPECT_NE(firstBody, server.requests[2].body);
}

TEST_F(SecureExchangeTest, AReplyShorterThanADigestIsRefused) {
  for (const std::size_t length : {0u, 1u, 27u}) {
    AnswerRequestWith(
        [length](SealedServer& self, const ServerRequest&) { return self.Seal(std::string(length, 'A')); });
    EXPECT_FALSE(Run()) << length;
  }
}

TEST_F(SecureExchangeTest, AReplyOfADigestAloneIsRefused) {
  AnswerRequestWith([](SealedServer& self, const ServerRequest&) { return self.Seal(SealedServer::DigestOf("")); });
  EXPECT_FALSE(Run());
}

TEST_F(SecureExchangeTest, ADigestThatOmitsTheZeroByteIsRefused) {
  AnswerRequestWith([this](SealedServer& self, const ServerRequest&) {
    const std::string text = SealedServer::TextOf(Honest());
    return self.Seal(DigestWithoutZero(text) + text);
  });
  EXPECT_FALSE(Run());
}

TEST_F(SecureExchangeTest, AChangedByteAnywhereIsRefused) {
  const std::size_t size = 28 + SealedServer::TextOf({{"KEST-Auth-Client-RAC", std::string(64, 'x')},
                                                      {"KEST-Auth-Server-RAC", server.serverRac}})
                                    .size();
  for (std::size_t at = 0; at < size; ++at) {
    AnswerRequestWith([this, at](SealedServer& self, const ServerRequest&) {
      return self.Reply(Honest(), [at](std::string& message) { message[at] = static_cast<char>(message[at] ^ 1); });
    });
    EXPECT_FALSE(Run()) << at;
  }
}

TEST_F(SecureExchangeTest, TheTerminatingZeroByteMayBeEncipheredOrNot) {
  AnswerRequestWith([this](SealedServer& self, const ServerRequest&) {
    const std::string text = SealedServer::TextOf(Honest());
    return self.Seal(SealedServer::DigestOf(text) + text);
  });
  EXPECT_TRUE(Run());
  AnswerRequestWith([this](SealedServer& self, const ServerRequest&) { return self.Reply(Honest()); });
  EXPECT_TRUE(Run());
}

TEST_F(SecureExchangeTest, WhatFollowsTheFirstZeroByteIsNoText) {
  AnswerRequestWith([this](SealedServer& self, const ServerRequest&) {
    return self.Reply(Honest(), [](std::string& message) { message += std::string(1, '\0') + "Late: field\r\n"; });
  });
  ASSERT_TRUE(Run());
  EXPECT_EQ(2u, reply.Count());
}

TEST_F(SecureExchangeTest, TheHandshakeReplyIsAcceptedWithAnyServerChallenge) {
  server.serverRac = "anything at all";
  EXPECT_TRUE(Run());
}

TEST_F(SecureExchangeTest, ADifferentServerChallengeInTheReplyIsRefused) {
  AnswerRequestWith([](SealedServer& self, const ServerRequest&) {
    return self.Reply({{"KEST-Auth-Client-RAC", self.clientRac}, {"KEST-Auth-Server-RAC", self.serverRac + "x"}});
  });
  EXPECT_FALSE(Run());
}

TEST_F(SecureExchangeTest, AServerChallengeInOtherLetterCaseIsRefused) {
  AnswerRequestWith([](SealedServer& self, const ServerRequest&) {
    return self.Reply({{"KEST-Auth-Client-RAC", self.clientRac}, {"KEST-Auth-Server-RAC", "Server challenge"}});
  });
  EXPECT_FALSE(Run());
}

TEST_F(SecureExchangeTest, AMissingServerChallengeInTheReplyIsRefused) {
  AnswerRequestWith([](SealedServer& self, const ServerRequest&) {
    return self.Reply({{"KEST-Auth-Client-RAC", self.clientRac}});
  });
  EXPECT_FALSE(Run());
}

TEST_F(SecureExchangeTest, AfterAnEmptyServerChallengeAnyIsAccepted) {
  server.handshakeFields = {{"KEST-Auth-Server-RAC", ""}};
  EXPECT_TRUE(Run());
}

TEST_F(SecureExchangeTest, AWrongClientChallengeIsRefusedInEitherReply) {
  server.handshakeFields = {{"KEST-Auth-Client-RAC", "not what was sent"}};
  EXPECT_FALSE(Run());
  EXPECT_EQ(1u, server.requests.size());
  server.handshakeFields.clear();
  AnswerRequestWith([](SealedServer& self, const ServerRequest&) {
    return self.Reply({{"KEST-Auth-Client-RAC", ""}, {"KEST-Auth-Server-RAC", self.serverRac}});
  });
  EXPECT_FALSE(Run());
}

TEST_F(SecureExchangeTest, AHostInTheHandshakeReplyTakesTheRealRequest) {
  server.handshakeFields = {{"KEST-Host", "10.9.8.7"}};
  ASSERT_TRUE(Run());
  EXPECT_EQ("10.0.0.1", server.requests[0].host);
  EXPECT_EQ("10.9.8.7", server.requests[1].host);
  EXPECT_EQ(8080, server.requests[1].port);
  EXPECT_EQ("10.9.8.7", server.requests[1].Header("Host"));
}

TEST_F(SecureExchangeTest, TheNextExchangeBeginsAtTheConfiguredHostAgain) {
  server.handshakeFields = {{"KEST-Host", "10.9.8.7"}};
  ASSERT_TRUE(Run());
  ASSERT_TRUE(Run());
  EXPECT_EQ("10.0.0.1", server.requests[2].host);
  EXPECT_EQ("shop.example", server.requests[2].Header("Host"));
}

TEST_F(SecureExchangeTest, AHostInARefusedHandshakeReplyIsNotFollowed) {
  server.handshakeFields = {{"KEST-Host", "10.9.8.7"}, {"KEST-Auth-Client-RAC", "wrong"}};
  EXPECT_FALSE(Run());
  EXPECT_EQ(1u, server.requests.size());
}

TEST_F(SecureExchangeTest, AnEmptyHostChangesNothing) {
  server.handshakeFields = {{"KEST-Host", ""}};
  ASSERT_TRUE(Run());
  EXPECT_EQ("shop.example", server.requests[1].Header("Host"));
}

TEST_F(SecureExchangeTest, AFailedHandshakeSendsNoRequest) {
  server.answer = [](SealedServer&, const ServerRequest&) { return SealedServer::Http("", "HTTP/1.0 403 Forbidden"); };
  EXPECT_FALSE(Run());
  EXPECT_EQ(1u, server.requests.size());
}

TEST_F(SecureExchangeTest, EveryStatusButTwoHundredFails) {
  for (const char* status :
       {"201 Created", "204 No Content", "304 Not Modified", "404 Not Found", "500 Error", "200x"}) {
    server.requests.clear();
    AnswerRequestWith([this, status](SealedServer& self, const ServerRequest&) {
      std::string http = self.Reply(Honest());
      return http.replace(9, 6, status);
    });
    EXPECT_FALSE(Run()) << status;
    EXPECT_EQ(2u, server.requests.size()) << status;
  }
}

TEST_F(SecureExchangeTest, BodiesThatAreNoSealedTextFail) {
  for (const char* body : {"", "=", "QQ", "not base64!", "QUJDREVGR0g=", "QUJDREVGRw=="}) {
    AnswerRequestWith([body](SealedServer&, const ServerRequest&) { return SealedServer::Http(body); });
    EXPECT_FALSE(Run()) << body;
  }
}

TEST_F(SecureExchangeTest, AReplyWithoutContentLengthFails) {
  AnswerRequestWith([this](SealedServer& self, const ServerRequest&) {
    const std::string http = self.Reply(Honest());
    return "HTTP/1.0 200 OK\r\n\r\n" + http.substr(http.find("\r\n\r\n") + 4);
  });
  EXPECT_FALSE(Run());
}

TEST_F(SecureExchangeTest, TheOutcomeDoesNotDependOnThePieces) {
  for (const std::size_t size : {1u, 2u, 3u, 7u, 64u, 100u, 4096u}) {
    server.pieceSize = size;
    EXPECT_TRUE(Run()) << size;
  }
}

TEST_F(SecureExchangeTest, AReplyCutAnywhereFails) {
  std::size_t size = 1;
  for (std::size_t cut = 0; cut < size; ++cut) {
    AnswerRequestWith([this, cut, &size](SealedServer& self, const ServerRequest&) {
      const std::string http = self.Reply(Honest());
      size = http.size();
      return http.substr(0, cut);
    });
    EXPECT_FALSE(Run()) << cut;
  }
  EXPECT_GT(size, 200u);
}

TEST_F(SecureExchangeTest, AHandshakeThatIsRedirectedLeavesTheRequestWhereItBelongs) {
  server.answer = [](SealedServer& self, const ServerRequest& request) {
    if (request.number == 1) {
      return SealedServer::Http("", "HTTP/1.0 302 Found\r\nLocation: http://10.5.5.5:99/elsewhere");
    }
    return self.AnswerHonestly(request);
  };
  ASSERT_TRUE(Run());
  ASSERT_EQ(3u, server.requests.size());
  EXPECT_EQ("10.5.5.5", server.requests[1].host);
  EXPECT_EQ(0u, server.requests[1].head.find("GET /elsewhere HTTP/1.0\r\n"));
  EXPECT_EQ("shop.example", server.requests[1].Header("Host"));
  EXPECT_EQ(server.requests[0].body, server.requests[1].body);
  EXPECT_EQ("10.0.0.1", server.requests[2].host);
  EXPECT_EQ(8080, server.requests[2].port);
  EXPECT_EQ(0u, server.requests[2].head.find("GET /GetProductList HTTP/1.0\r\n"));
}

TEST_F(SecureExchangeTest, AHandshakeSentToAProxyLeavesTheRequestDirect) {
  server.answer = [](SealedServer& self, const ServerRequest& request) {
    if (request.number == 1) {
      return SealedServer::Http("", "HTTP/1.0 305 Use Proxy\r\nLocation: http://10.5.5.5:3128");
    }
    return self.AnswerHonestly(request);
  };
  ASSERT_TRUE(Run());
  EXPECT_EQ("10.5.5.5", server.requests[1].host);
  EXPECT_EQ(0u, server.requests[1].head.find("GET http://shop.example:8080/GetProductList HTTP/1.0\r\n"));
  EXPECT_EQ("10.0.0.1", server.requests[2].host);
}

TEST_F(SecureExchangeTest, ALengthRequiredForTheHandshakeLeavesTheRequestItsBody) {
  server.answer = [handshake = ServerRequest()](SealedServer& self, const ServerRequest& request) mutable {
    if (request.number == 1) {
      handshake = request;
      return SealedServer::Http("", "HTTP/1.0 411 Length Required");
    }
    // The second attempt carries no body; the server answers what the first one asked.
    return self.AnswerHonestly(request.number == 2 ? handshake : request);
  };
  ASSERT_TRUE(Run());
  ASSERT_EQ(3u, server.requests.size());
  EXPECT_EQ("0", server.requests[1].Header("Content-Length"));
  EXPECT_EQ("", server.requests[1].body);
  EXPECT_EQ(std::to_string(server.requests[2].body.size()), server.requests[2].Header("Content-Length"));
  EXPECT_FALSE(server.requests[2].body.empty());
}

TEST_F(SecureExchangeTest, AProxyIsConnectedToAndGivenTheWholeUrl) {
  SetProxy("10.1.1.1", 3128);
  ASSERT_TRUE(Run());
  EXPECT_EQ("10.1.1.1", server.requests[1].host);
  EXPECT_EQ(3128, server.requests[1].port);
  EXPECT_EQ(0u, server.requests[1].head.find("GET http://shop.example:8080/GetProductList HTTP/1.0\r\n"));
  EXPECT_EQ("shop.example", server.requests[1].Header("Host"));
  EXPECT_TRUE(server.lookedUp.empty());
}

TEST_F(SecureExchangeTest, WithoutAKeyNothingIsSent) {
  EXPECT_FALSE(SetServer("shop.example", 8080, "not a key"));
  EXPECT_FALSE(Run());
  EXPECT_TRUE(server.requests.empty());
}

TEST_F(SecureExchangeTest, AKeyThatLoadsButCannotBeUsedSendsNothing) {
  const std::string keys[] = {SealedServer::KeyText(257), SealedServer::KeyText(128, '\x0E'), SealedServer::KeyText(1)};
  for (const std::string& key : keys) {
    EXPECT_TRUE(SetServer("shop.example", 8080, key.c_str()));
    EXPECT_FALSE(Run());
    EXPECT_TRUE(server.requests.empty());
  }
}

TEST_F(SecureExchangeTest, AnEmptyHostFailsWithoutALookUp) {
  SetServer("", 8080, SealedServer::KeyText().c_str());
  EXPECT_FALSE(Run());
  EXPECT_TRUE(server.lookedUp.empty());
  EXPECT_TRUE(server.requests.empty());
}

// Counts what the generator is seeded for: each seeding asks the system's own generator for that many bytes.
class SeedRecorder : public testing::ForwardingSystem {
 public:
  using ForwardingSystem::ForwardingSystem;
  bool RtlGenRandom(void* bytes, std::uint32_t length) override {
    lengths.push_back(length);
    return ForwardingSystem::RtlGenRandom(bytes, length);
  }
  std::vector<std::uint32_t> lengths;
};

TEST_F(SecureExchangeTest, OneExchangeSeedsForKeyChallengeAndOneEnciphering) {
  SeedRecorder recorder(server);
  testing::SystemInForce recording(recorder);
  ASSERT_TRUE(Run());
  EXPECT_EQ((std::vector<std::uint32_t>{128, 48, 256}), recorder.lengths);
}

class SecureExchangeMemoryTest : public SecureExchangeTest {
 protected:
  // Whether the exchange went through; running out of memory in it is a failure.
  bool RunGuarded() {
    try {
      return Run();
    } catch (const Qor::MemoryException&) {
      return false;
    }
  }
  void FailAtEveryPoint(testing::AllocationSystem::Failing how) {
    ASSERT_TRUE(RunGuarded());
    const std::int64_t before = memory.Outstanding();
    memory.Restart();
    ASSERT_TRUE(RunGuarded());
    const std::uint64_t points = memory.Allocations();
    ASSERT_GT(points, 50u);
    for (std::uint64_t point = 1; point <= points; ++point) {
      memory.FailAt(point, how);
      EXPECT_FALSE(RunGuarded()) << point;
      memory.FailNever();
      EXPECT_EQ(0u, server.OpenSockets()) << point;
    }
    reply.Clear();
    ASSERT_TRUE(RunGuarded());
    EXPECT_EQ(before, memory.Outstanding());
  }
};

TEST_F(SecureExchangeMemoryTest, AnAllocationThatFailsOnceIsAFailedExchange) {
  FailAtEveryPoint(testing::AllocationSystem::Failing::once);
}

TEST_F(SecureExchangeMemoryTest, MemoryThatEndsIsAFailedExchange) {
  FailAtEveryPoint(testing::AllocationSystem::Failing::fromThenOn);
}

}  // namespace
}  // namespace kest
