// Bytes on both ports that no client of theirs sends: is each answered or let go, and the next good request served?
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "refusal.h"
#include "sandbox/admin_client.h"
#include "sandbox/socket.h"
#include "sandbox/test_client.h"
#include "sandbox/test_server.h"

namespace sandboxtest {
namespace {

using sandbox::Refusal;
using ::testing::HasSubstr;

constexpr const char* noReply = "";

std::string Repeated(const std::string& text, int count) {
  std::string all;
  for (int i = 0; i < count; i++) all += text;
  return all;
}

// Sends the bytes and, unless the server is to decide for itself, their end. Returns all that comes back.
std::string Exchange(std::uint16_t port, const std::string& bytes, bool ends = true) {
  Socket socket(port);
  socket.Send(bytes);
  if (ends) socket.EndSending();
  bool orderly = false;
  const std::string reply = socket.ReadToEnd(orderly);
  EXPECT_FALSE(socket.Silent());
  return reply;
}

std::string Head(const std::string& fields, const std::string& line = "GET /GetProductList HTTP/1.0") {
  return line + "\r\nAccept: */*\r\nHost: 127.0.0.1\r\n" + fields + "\r\n";
}

std::string LengthOf(const std::string& value) {
  return Head("Content-Length: " + value + "\r\nProxy-Connection: Keep-Alive\r\n");
}

struct Case {
  const char* name;
  std::string bytes;
  const char* reason;  // noReply: the connection ends without one
  bool ends = true;
};

void PrintTo(const Case& one, std::ostream* stream) {
  *stream << one.name;
}

const char* Reason(Refusal refusal) {
  return RefusalReason(refusal);
}

const std::string allBytes = [] {
  std::string bytes;
  for (int i = 0; i < 256; i++) bytes += static_cast<char>(i);
  return bytes;
}();

const Case commerceCases[] = {
    {"NothingAtAll", "", noReply},
    {"OneByte", "G", Reason(Refusal::CutShort)},
    {"EmptyLines", "\r\n\r\n", Reason(Refusal::RequestLine)},
    {"EmptyLineBeforeAGoodHead", "\r\n" + LengthOf("0"), Reason(Refusal::RequestLine)},
    {"PathAlone", "GET /GetProductList\r\n\r\n", Reason(Refusal::RequestLine)},
    {"AllBytes", allBytes, Reason(Refusal::CutShort)},
    {"AllBytesAndTheEndOfAHead", allBytes + "\r\n\r\n", Reason(Refusal::RequestLine)},
    {"ZeroBytes", std::string(5000, '\0'), Reason(Refusal::CutShort)},
    {"ZeroByteInTheTarget", LengthOf("0").replace(5, 1, 1, '\0'), Reason(Refusal::RequestLine)},
    {"ZeroByteInAValue", LengthOf(std::string("1\0", 2)), Reason(Refusal::HeaderLine)},
    {"BeginningOfTls", std::string("\x16\x03\x01\x02\x00\x01\x00\x01\xFC\x03\x03", 11) + allBytes,
     Reason(Refusal::CutShort)},
    {"EndlessLine", std::string(300000, 'a'), Reason(Refusal::HeadTooLarge), false},
    {"EndlessTarget", "GET /" + std::string(300000, 'a'), Reason(Refusal::HeadTooLarge), false},
    {"EndlessFields", "GET /a HTTP/1.0\r\n" + Repeated("X: y\r\n", 50000), Reason(Refusal::HeadTooLarge), false},
    {"EndlessLineFeeds", std::string(300000, '\n'), Reason(Refusal::HeadTooLarge), false},
    {"LineFeedsAlone", "GET /a HTTP/1.0\n\n", Reason(Refusal::CutShort)},
    {"CarriageReturnsAlone", "GET /a HTTP/1.0\r\r", Reason(Refusal::CutShort)},
    {"FieldWithoutAColon", Head("Content-Length\r\n"), Reason(Refusal::HeaderLine)},
    {"FieldWithoutAName", Head(": 5\r\n"), Reason(Refusal::HeaderLine)},
    {"FieldOfAColonAlone", Head(":\r\n"), Reason(Refusal::HeaderLine)},
    {"NoFields", "GET /a HTTP/1.0\r\n\r\n", Reason(Refusal::LengthMissing)},
    {"LengthTwice", Head("Content-Length: 0\r\nContent-Length: 0\r\nProxy-Connection: Keep-Alive\r\n"),
     Reason(Refusal::HeaderOrder)},
    {"LengthTwiceBehindAProxy", Head("Via: 1.1 p\r\nContent-Length: 0\r\nContent-Length: 5\r\n"),
     Reason(Refusal::HeaderOrder)},
    {"LengthEmpty", LengthOf(""), Reason(Refusal::LengthValue)},
    {"LengthWithAPlus", LengthOf("+5"), Reason(Refusal::LengthValue)},
    {"LengthOfMinusZero", LengthOf("-0"), Reason(Refusal::LengthValue)},
    {"LengthInHexadecimal", LengthOf("0x10"), Reason(Refusal::LengthValue)},
    {"LengthOfTwoNumbers", LengthOf("5, 5"), Reason(Refusal::LengthValue)},
    {"LengthOf2To64", LengthOf("18446744073709551616"), Reason(Refusal::LengthValue)},
    {"LengthOf2To63", LengthOf("9223372036854775808"), Reason(Refusal::LengthValue)},
    {"LengthOfManyDigits", LengthOf(std::string(5000, '9')), Reason(Refusal::LengthValue)},
    {"LengthOf18Nines", LengthOf("999999999999999999"), Reason(Refusal::BodyTooLarge)},
    {"Chunked", LengthOf("0\r\nTransfer-Encoding: chunked") + "5\r\nAAAAA\r\n0\r\n\r\n", Reason(Refusal::HeaderOrder)},
    {"BodyShorterThanAnnounced", LengthOf("8") + "AAAA", Reason(Refusal::CutShort)},
    {"BodyLongerThanAnnounced", LengthOf("4") + "AAAAA", Reason(Refusal::BodyTooLong)},
    {"SecondRequestBehindTheFirst", LengthOf("0") + LengthOf("0"), Reason(Refusal::BodyTooLong)},
    {"BodyThatIsNotBase64", LengthOf("256") + allBytes, Reason(Refusal::BodyNotBase64)},
    {"BodyOfPaddingAlone", LengthOf("4") + "====", Reason(Refusal::BodyNotBase64)},
    {"BodyWithPaddingInside", LengthOf("8") + "AA==AAAA", Reason(Refusal::BodyNotBase64)},
    {"ConnectionIdOfManyBytes",
     Head("Content-Length: 0\r\nProxy-Connection: Keep-Alive\r\nKEST-Auth-CID: " + std::string(9000, 'a') + "\r\n"),
     Reason(Refusal::ConnectionUnknown)},
};

template <typename Test>
class OneServer : public Test {
 public:
  static void SetUpTestSuite() { server = new TestServer; }
  static void TearDownTestSuite() {
    delete server;
    server = nullptr;
  }
  static TestServer* server;
};
template <typename Test>
TestServer* OneServer<Test>::server = nullptr;

using CommerceBytes = OneServer<::testing::TestWithParam<Case>>;

TEST_P(CommerceBytes, AreRefusedInWordsAndTheNextRequestIsServed) {
  const std::string reply = Exchange(server->Port(), GetParam().bytes, GetParam().ends);
  if (GetParam().reason == std::string(noReply)) {
    EXPECT_EQ(reply, "");
  } else {
    EXPECT_EQ(reply.rfind("HTTP/1.0 ", 0), 0u);
    EXPECT_EQ(reply.substr(std::min(reply.size(), reply.find("\r\n\r\n"))),
              "\r\n\r\n" + std::string(GetParam().reason) + "\n");
  }
  EXPECT_TRUE(TestClient(server->Port(), server->KeyText()).Call("GetProductList", {{"GUID", testGuid}}).has_value());
}

INSTANTIATE_TEST_SUITE_P(Of, CommerceBytes, ::testing::ValuesIn(commerceCases),
                         [](const auto& one) { return one.param.name; });

std::string Post(const std::string& body, const std::string& fields = "") {
  return "POST /faults HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: application/json\r\n" +
         (fields.empty() ? "Content-Length: " + std::to_string(body.size()) + "\r\n" : fields) + "\r\n" + body;
}

struct AdminCase {
  const char* name;
  std::string bytes;
  int status;  // 0: the connection ends without a reply
};

void PrintTo(const AdminCase& one, std::ostream* stream) {
  *stream << one.name;
}

const std::string oneFault = R"({"faults": [{"kind": "delay", "milliseconds": )";

const AdminCase adminCases[] = {
    {"NothingAtAll", "", 0},
    {"OneByte", "G", 0},
    {"AllBytes", allBytes, 400},
    {"EndlessLine", std::string(300000, 'a'), 431},
    {"EndlessTarget", "GET /" + std::string(300000, 'a'), 431},
    {"EndlessFields", "GET /state HTTP/1.1\r\nHost: 127.0.0.1\r\n" + Repeated("X: y\r\n", 50000), 431},
    {"FieldWithoutAColon", "GET /state HTTP/1.1\r\nHost\r\n\r\n", 400},
    {"LengthNegative", Post("", "Content-Length: -1\r\n"), 400},
    {"LengthOf2To64", Post("", "Content-Length: 18446744073709551616\r\n"), 400},
    {"LengthBeyondTheLimit", Post("", "Content-Length: 18446744073709551615\r\n"), 413},
    {"LengthTwice", Post("{}", "Content-Length: 2\r\nContent-Length: 3\r\n"), 400},
    {"BodyShorterThanAnnounced", Post("{}", "Content-Length: 20\r\n"), 0},
    {"ChunkThatIsNone", Post("xyz\r\n{}\r\n0\r\n\r\n", "Transfer-Encoding: chunked\r\n"), 400},
    {"ChunkWithoutEnd", Post("FFFFFFFFFFFFFFFFF\r\n{}", "Transfer-Encoding: chunked\r\n"), 400},
    {"ChunkWithAnEndlessExtension", Post("1;" + std::string(300000, 'x'), "Transfer-Encoding: chunked\r\n"), 413},
    {"EndlessFieldsBehindTheChunks", Post("0\r\n" + Repeated("X: y\r\n", 50000), "Transfer-Encoding: chunked\r\n"),
     413},
    {"NoBody", Post(""), 400},
    {"ListsInsideLists", Post(std::string(60000, '[')), 400},
    {"ListsInsideListsThatEnd", Post(std::string(30000, '[') + std::string(30000, ']')), 400},
    {"ListsInsideAFault", Post(oneFault + std::string(30000, '[') + std::string(30000, ']') + "}]}"), 400},
    {"ObjectsInsideObjects", Post(Repeated("{\"a\":", 9000) + "1" + std::string(9000, '}')), 400},
    {"ListsBeyondTheLimit", Post(std::string(100000, '[')), 413},
    {"BytesThatAreNotUtf8", Post("{\"faults\": [{\"kind\": \"\xFF\xFE\xC3\x28\"}]}"), 400},
    {"KeyThatIsNotUtf8", Post("{\"\xFF\": 1}"), 400},
    {"HalfOfASurrogatePair", Post(R"({"faults": [{"kind": "\ud800"}]})"), 400},
    {"ZeroBytes", Post(std::string(1000, '\0')), 400},
    {"NumberBeyondAllMeasure", Post(oneFault + "1e999}]}"), 400},
    {"NumberOfManyDigits", Post(oneFault + std::string(50000, '9') + "}]}"), 400},
    {"NumberOf2To64", Post(oneFault + "18446744073709551616}]}"), 400},
    {"NumberBelowZero", Post(oneFault + "-1}]}"), 400},
    {"TextThatDoesNotEnd", Post("{\"faults\": \"" + std::string(50000, 'a')), 400},
    {"TextBehindTheWhole", Post("{\"faults\": []}{\"faults\": []}"), 400},
};

using AdminBytes = OneServer<::testing::TestWithParam<AdminCase>>;

TEST_P(AdminBytes, AreAnsweredWithTheirStatusAndChangeNothing) {
  const std::string reply = Exchange(server->AdminPort(), GetParam().bytes);
  if (GetParam().status == 0) {
    EXPECT_EQ(reply, "");
  } else {
    EXPECT_EQ(reply.substr(0, 13), "HTTP/1.1 " + std::to_string(GetParam().status) + " ");
    EXPECT_THAT(reply, HasSubstr("\r\n\r\n{\"error\""));
  }
  const AdminAnswer state = AdminClient(server->AdminPort()).Get("/state");
  EXPECT_EQ(state.status, 200);
  EXPECT_EQ(state.json["faults"], nlohmann::json::array());
}

INSTANTIATE_TEST_SUITE_P(Of, AdminBytes, ::testing::ValuesIn(adminCases),
                         [](const auto& one) { return one.param.name; });

}  // namespace
}  // namespace sandboxtest
