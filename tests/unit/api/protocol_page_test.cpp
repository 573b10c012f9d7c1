// Does the library send and take the bytes that docs/protocol.md shows? The page's blocks are the expectation: nothing of
// them stands here.
#include <gtest/gtest.h>
#include <kestapi.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>

#include "support/recorded_system.h"
#include "support/scripted_sockets.h"
#include "support/vector_file.h"

namespace kest::testing {
namespace {

std::string Page() {
  std::ifstream file(KEST_VECTORS "/../../docs/protocol.md");
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

// The block of the page that begins with this fence, as it stands there.
std::string Block(const std::string& fence) {
  const std::string page = Page(), begin = "\n```" + fence + "\n";
  const std::size_t at = page.find(begin);
  if (at == std::string::npos) {
    ADD_FAILURE() << "the page has no block " << fence;
    return {};
  }
  const std::size_t start = at + begin.size();
  return page.substr(start, page.find("```\n", start) - start);
}

std::string FromBlock(const std::string& name) {
  std::istringstream lines(Block("hex " + name));
  std::string digits;
  for (std::string line; std::getline(lines, line);) {
    if (line.empty() || line[0] == '#') continue;
    for (const char c : line) {
      if (c != ' ') digits += c;
    }
  }
  const Bytes bytes = FromHex(digits);
  return std::string(bytes.begin(), bytes.end());
}

// A text that the page shows in several lines.
std::string TextOfBlock(const std::string& name) {
  std::string text = Block("base64 " + name);
  text.erase(std::remove(text.begin(), text.end(), '\n'), text.end());
  return text;
}

std::string Message(const std::string& name) { return FromBlock(name + "-head") + TextOfBlock(name + "-body"); }

class ProtocolPage : public ::testing::Test {
 protected:
  ProtocolPage() {
    sockets.hosts["shop.example"] = {"10.0.0.1"};
    for (const char* reply : {"handshake-reply", "reply"}) {
      Conversation conversation;
      conversation.answers = {Message(reply)};
      sockets.conversations.push_back(conversation);
    }
    KestSetApplicationGuid("{6F1D2A54-93C7-4B0E-8E21-5A7C0D94B3F6}");
  }
  ~ProtocolPage() override {
    KestDestroyProductList(list);
    KestSetServer("", 0, "");
    KestSetApplicationGuid("");
  }

  bool Call() {
    EXPECT_EQ(1, KestSetServer("shop.example", 8080, TextOfBlock("key-text").c_str()));
    return KestGetProductList(list, "1.0") != 0;
  }

  ScriptedSockets sockets;
  RecordedSystem system{sockets};  // whose screen, clock and counters always say the same
  SystemInForce inForce{system};
  KestProductList* list = KestCreateProductList();
};

TEST_F(ProtocolPage, TheLibrarySendsExactlyTheHandshakeAndTheRequestThatItShows) {
  Call();
  ASSERT_EQ(2u, sockets.connections.size());
  EXPECT_EQ(Message("handshake"), sockets.connections[0].sent);
  EXPECT_EQ(Message("request"), sockets.connections[1].sent);
  for (const ConnectionRecord& connection : sockets.connections) {
    EXPECT_EQ("10.0.0.1:8080", connection.address);
    EXPECT_FALSE(connection.isOpen);
  }
}

TEST_F(ProtocolPage, TheLibraryTakesTheAnswersThatItShows) {
  ASSERT_TRUE(Call());
  KestFieldSet* fields = KEST_FIELDS(list);
  ASSERT_EQ(3, KestGetFieldCount(fields));
  EXPECT_STREQ("KEST-Auth-Client-RAC", KestGetFieldName(fields, 0));
  EXPECT_STREQ("KEST-Auth-Server-RAC", KestGetFieldName(fields, 1));
  EXPECT_STREQ("0", KestGetField(fields, "KEST-Error"));
  std::string rows;
  while (KestFieldSet* product = KestNextProduct(list)) {
    for (const char* name : {"SKU", "Name", "Price"}) rows += std::string("| ") + KestGetField(product, name) + " ";
    rows += "|\n";
  }
  const std::string page = Page(), ruler = "\n|---|---|---|\n";
  EXPECT_EQ(page.substr(page.rfind(ruler) + ruler.size()), rows) << "the page's last table";
}

TEST_F(ProtocolPage, AnAnswerOfWhichOneCharacterDiffersIsNotTaken) {
  std::string& answer = sockets.conversations.back().answers.front();
  answer[answer.size() - 20] = answer[answer.size() - 20] == 'A' ? 'B' : 'A';
  EXPECT_FALSE(Call());
  EXPECT_EQ(KEST_ERROR_EXCHANGE, KestGetErrorCode(KEST_FIELDS(list)));
}

}  // namespace
}  // namespace kest::testing
