// Does a branch or an address depend on the secrets of a message: its text, its padding, the challenges, the block that
// is enciphered for the server? public_uses.supp lists the uses that may show.
#include <string>

#include "crypto/rsa_public_cipher.h"
#include "secrets/marked.h"
#include "support/public_key.h"
#include "support/rc5_message.h"
#include "support/sealed_server.h"
#include "support/toolkit.h"
#include "transport/auth_session.h"
#include "transport/message_check.h"
#include "transport/server_settings.h"

namespace kest::testing {
namespace {

// 400 bytes: a digest, a text and its zero byte, four bytes of padding.
std::string Message(Fields fields) {
  fields.emplace_back("Filler", "");
  const std::size_t length = 28 + SealedServer::TextOf(fields).size() + 1;
  fields.back().second.assign(396 - length, 'f');
  const std::string text = SealedServer::TextOf(fields);
  return SealedServer::DigestOf(text) + text + std::string("\0\4\4\4\4", 5);
}

class MarkedMessages : public MarkedTest {
 protected:
  void Check(std::string message, bool isGood) {
    const std::size_t textLength = message.size() - 28 - 5;
    Mark(&message[0], message.size());
    std::uint32_t length = 0;
    bool isAccepted = CheckMessage(reinterpret_cast<std::uint8_t*>(&message[0]), 400, &length);
    EXPECT_EQ(before, Errors());
    EXPECT_NE(0u, MarkedBytes(&isAccepted, sizeof isAccepted));
    EXPECT_NE(0u, MarkedBytes(&length, sizeof length));
    Publish(&isAccepted, sizeof isAccepted);
    Publish(&length, sizeof length);
    EXPECT_EQ(isGood, isAccepted);
    EXPECT_TRUE(!isGood || length == textLength) << length;
  }
};

TEST_F(MarkedMessages, GoodOneIsCheckedWithoutABranch) {
  Check(Message({{"Name", "Value"}}), true);
}

TEST_F(MarkedMessages, BadPaddingIsCheckedWithoutABranch) {
  std::string message = Message({});
  message[397] ^= 1;
  Check(message, false);
}

TEST_F(MarkedMessages, BadDigestIsCheckedWithoutABranch) {
  std::string message = Message({});
  message[9] ^= 1;
  Check(message, false);
}

TEST_F(MarkedMessages, OneThatIsNothingButZeroBytesIsCheckedWithoutABranch) {
  Check(std::string(400, '\0'), false);
}

// The session's own challenges are marked: texts share their blocks, so that the fields which it sets lead there.
class MarkedChallenges : public MarkedTest {
 protected:
  void SetUp() override {
    MarkedTest::SetUp();
    SetServer("shop.example", 80, SealedServer::KeyText().c_str());
    ASSERT_TRUE(session.Begin());
    ASSERT_FALSE(session.SealMessage(fields, false).IsEmpty());
    client = fields.Get("KEST-Auth-Client-RAC").Text();
    before = Errors();
  }
  void TearDown() override { SetServer("", 0, ""); }

  bool Open(const std::string& clientRac, const std::string& serverRac) {
    ByteBuffer key;
    key.DecodeBase64(session.ExportedKey());
    const std::string exported(reinterpret_cast<const char*>(key.Bytes()), key.Length());
    const std::string message = Message({{"KEST-Auth-Client-RAC", clientRac}, {"KEST-Auth-Server-RAC", serverRac}});
    const std::string sealed = EncipherRc5(exported, message);
    String body;
    ByteBuffer(sealed.data(), static_cast<std::uint32_t>(message.size())).EncodeBase64(body);
    NameValueList reply;
    return session.OpenMessage(body, reply);
  }
  void MarkField(const char* name) {
    const String value = fields.Get(name);
    Mark(value.Characters(), value.Length());
  }
  void PublishField(const char* name) {
    const String value = fields.Get(name);
    Publish(value.Characters(), value.Length());
  }

  AuthSession session;
  NameValueList fields;
  std::string client;
};

TEST_F(MarkedChallenges, NothingButTheOutcomeOfAComparisonShows) {
  MarkField("KEST-Auth-Client-RAC");
  EXPECT_TRUE(Open(client, "from the server"));
  EXPECT_EQ(before + 1, Errors()) << "one branch on whether it is right";
  PublishField("KEST-Auth-Client-RAC");
}

TEST_F(MarkedChallenges, NorWhereAWrongOneDiffers) {
  MarkField("KEST-Auth-Client-RAC");
  for (const std::size_t at : {0, 31, 63}) {
    std::string wrong = client;
    wrong[at] = wrong[at] == 'A' ? 'B' : 'A';
    before = Errors();
    EXPECT_FALSE(Open(wrong, "from the server"));
    EXPECT_EQ(before + 1, Errors()) << at;
  }
  PublishField("KEST-Auth-Client-RAC");
}

TEST_F(MarkedChallenges, TheServersShowsNoMoreThanTheClients) {
  ASSERT_TRUE(Open(client, "from the server"));
  for (const char* challenge : {"from the server", "From the server", "from the serveR"}) {
    // A right one is taken over anew, unmarked.
    ASSERT_FALSE(session.SealMessage(fields, false).IsEmpty());
    ASSERT_STREQ("from the server", fields.Get("KEST-Auth-Server-RAC").Text());
    before = Errors();
    MarkField("KEST-Auth-Server-RAC");
    EXPECT_EQ(std::string("from the server") == challenge, Open(client, challenge));
    EXPECT_EQ(before + 1, Errors()) << challenge;
    PublishField("KEST-Auth-Server-RAC");
  }
}

// Whole, and in pieces, which are put together first.
TEST_F(MarkedMessages, BlockForTheServerIsEncipheredWithoutABranch) {
  Bytes modulus(128, 0x5A);
  modulus.front() = 0xC1;
  modulus.back() = 0x0F;
  const Bytes der = PublicKey(modulus, {1, 0, 1});
  RsaPublicCipher cipher;
  ASSERT_TRUE(cipher.LoadPublicKey(ByteBuffer(der.data(), static_cast<std::uint32_t>(der.size()))));
  for (const std::uint32_t piece : {128u, 50u}) {
    Bytes block = SomeBytes(128, piece);
    Bytes out(128);
    block.front() = 0;
    Mark(block.data(), block.size());
    ASSERT_TRUE(cipher.BeginEncipher());
    int written = 0;
    for (std::uint32_t at = 0; at < 128; at += piece) {
      written += cipher.EncipherUpdate(block.data() + at, std::min(piece, 128 - at), out.data(), 128);
    }
    EXPECT_EQ(before, Errors()) << piece;
    EXPECT_EQ(128, written);
    EXPECT_EQ(128u, MarkedBytes(out.data(), out.size()));
  }
}

}  // namespace
}  // namespace kest::testing
