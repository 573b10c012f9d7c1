// Thousands of conversations, each damaged somewhere: in the bytes on the connection, under the base64, under the seal
// or in the fields. The server answers or lets go, sells nothing that it does not answer, and serves the next client.
#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <random>
#include <set>

#include "sandbox/admin_client.h"
#include "sandbox/socket.h"
#include "sandbox/test_client.h"
#include "sandbox/test_server.h"

namespace sandboxtest {
namespace {

constexpr int conversations = 2000;

std::uint32_t Seed() {
  const char* given = std::getenv("KEST_SEED");
  return given ? static_cast<std::uint32_t>(std::strtoul(given, nullptr, 10)) : 20260105;
}

// Draws without the standard distributions, whose results differ from library to library.
class Draw {
 public:
  explicit Draw(std::uint32_t seed) : engine(seed) {}
  std::size_t Below(std::size_t limit) { return engine() % limit; }
  char Byte() { return static_cast<char>(engine() & 0xFF); }

 private:
  std::mt19937 engine;
};

const std::vector<std::string> pieces = {"\r\n",
                                         "\r\n\r\n",
                                         "\n",
                                         "\r",
                                         std::string(1, '\0'),
                                         ": ",
                                         ":",
                                         " ",
                                         "\t",
                                         "-",
                                         "+",
                                         "0",
                                         "99999999999999999999",
                                         "4294967296",
                                         "%s%n",
                                         "^",
                                         "SKU:",
                                         "Quantity:",
                                         "KEST-Product: ",
                                         "Content-Length: ",
                                         "Transfer-Encoding: chunked",
                                         "HTTP/1.1",
                                         "http://",
                                         "=",
                                         "====",
                                         "\xFF",
                                         std::string(300, 'A'),
                                         std::string(70000, 'B')};

std::string Mutated(std::string bytes, Draw& draw) {
  for (std::size_t steps = 1 + draw.Below(3); steps > 0; steps--) {
    const std::size_t at = draw.Below(bytes.size() + 1), count = draw.Below(bytes.size() - at + 1);
    switch (draw.Below(7)) {
      case 0:
        if (at < bytes.size()) bytes[at] = draw.Byte();
        break;
      case 1:
        if (at < bytes.size()) bytes[at] = static_cast<char>(bytes[at] ^ (1 << draw.Below(8)));
        break;
      case 2:
        bytes.insert(at, 1, draw.Byte());
        break;
      case 3:
        bytes.erase(at, 1 + draw.Below(8));
        break;
      case 4:
        bytes.insert(at, bytes.substr(at, std::min<std::size_t>(count, 200)));
        break;
      case 5:
        bytes.insert(at, pieces[draw.Below(pieces.size())]);
        break;
      default:
        bytes.resize(at);
    }
  }
  return bytes;
}

Fields MutatedFields(Fields fields, Draw& draw) {
  const std::size_t at = draw.Below(fields.size());
  switch (draw.Below(6)) {
    case 0:
      fields.erase(fields.begin() + static_cast<std::ptrdiff_t>(at));
      break;
    case 1:
      fields.push_back(fields[at]);
      break;
    case 2:
      std::swap(fields[at], fields[draw.Below(fields.size())]);
      break;
    case 3:
      fields[at].second = Mutated(fields[at].second, draw);
      break;
    case 4:
      fields[at].first = Mutated(fields[at].first, draw);
      break;
    default:
      fields[at].second = std::string(1 + draw.Below(50000), draw.Byte());
  }
  return fields;
}

class Mutation : public ::testing::Test {
 protected:
  std::string Exchange(const std::string& bytes) {
    Socket socket(server.Port());
    socket.Send(bytes);
    socket.EndSending();
    bool orderly = false;
    const std::string reply = socket.ReadToEnd(orderly);
    EXPECT_FALSE(socket.Silent());
    EXPECT_TRUE(reply.empty() || reply.rfind("HTTP/1.0 ", 0) == 0) << reply.substr(0, 100);
    return reply;
  }

  std::string WithHead(const TestClient& client, const std::string& path, const std::string& body) const {
    return client.Head(path, body.size()) + body;
  }

  // A damaged request within a session that is open.
  std::string DamagedRequest(TestClient& client, const std::string& service, Fields own) {
    const Fields fields = client.RequestFields(service, own);
    const std::string text = TestClient::HeaderBlock(fields), body = client.RequestBody(fields);
    const std::string path = "/" + service;
    switch (draw.Below(5)) {
      case 0:
        return Mutated(WithHead(client, path, body), draw);
      case 1:
        return WithHead(client, path, Base64(Mutated(FromBase64(body).value(), draw)));
      case 2:
        return WithHead(client, path, client.SealForSession(Mutated(TestClient::WithDigest(text) + '\0', draw)));
      case 3:
        return WithHead(client, path, client.SealForSession(TestClient::WithDigest(Mutated(text, draw)) + '\0'));
      default:
        return WithHead(client, path, client.RequestBody(MutatedFields(fields, draw)));
    }
  }

  std::string DamagedHandshake(TestClient& client) {
    const Fields fields = client.HandshakeFields();
    const std::string text = TestClient::HeaderBlock(fields), body = client.HandshakeBody(fields);
    switch (draw.Below(4)) {
      case 0:
        return Mutated(WithHead(client, "/BillCustomer", body), draw);
      case 1:
        return WithHead(client, "/BillCustomer", Base64(Mutated(FromBase64(body).value(), draw)));
      case 2:
        return WithHead(client, "/BillCustomer",
                        client.SealForServer(TestClient::WithDigest(Mutated(text, draw)) + '\0'));
      default:
        return WithHead(client, "/BillCustomer", client.HandshakeBody(MutatedFields(fields, draw)));
    }
  }

  // Notes the transaction that a reply tells of, if it is one of a sale.
  void Note(const TestClient& client, const std::string& reply) {
    if (reply.rfind("HTTP/1.0 200", 0) != 0) return;
    const std::string body = reply.substr(reply.find("\r\n\r\n") + 4);
    const Fields fields = client.Open(body).value_or(Fields());
    const std::string number = Value(fields, "KEST-TxN");
    if (Value(fields, "KEST-Error") == "0" && number != "(absent)") answered.insert(number);
  }

  void SellWell(TestClient& client) {
    const std::optional<Fields> reply = client.Call("BillCustomer", order);
    ASSERT_TRUE(reply.has_value());
    ASSERT_EQ(Value(*reply, "KEST-TotalAmount"), "3.00");
    answered.insert(Value(*reply, "KEST-TxN"));
  }

  const Fields order = {{"KEST-CCard-Number", "4111111111111111"}, {"KEST-Product", "SKU:1042^Quantity:2"}};
  TestServer server;
  const std::uint32_t seed = Seed();
  Draw draw{seed};
  std::set<std::string> answered;
};

TEST_F(Mutation, DamagedConversationsSellNothingThatIsNotAnsweredAndEndNothing) {
  SCOPED_TRACE("KEST_SEED=" + std::to_string(seed));
  std::cout << "KEST_SEED=" << seed << "\n";
  TestClient client(server.Port(), server.KeyText());
  for (int i = 0; i < conversations && !HasFatalFailure(); i++) {
    client.NewSession();
    if (i % 3 != 0) {
      Exchange(DamagedHandshake(client));
    } else {
      const bool sells = draw.Below(2) == 0;
      const std::string service = sells ? "BillCustomer" : "GetBill";
      ASSERT_TRUE(client.Handshake(service)) << i;
      Note(client, Exchange(DamagedRequest(client, service, sells ? order : Fields{{"KEST-TxN", "100001"}})));
    }
    if (i % 250 == 0) SellWell(client);
  }
  SellWell(client);
  const nlohmann::json state = AdminClient(server.AdminPort()).Get("/state").json;
  EXPECT_EQ(state["sales"], answered.size());
  EXPECT_GT(state["refused"], conversations / 2);
}

}  // namespace
}  // namespace sandboxtest
