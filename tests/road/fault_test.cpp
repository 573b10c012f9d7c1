// What comes of a sale when the server misbehaves: each fault, its outcome for the host, what the server has sold, and
// that the next sale works.
#include <gmock/gmock.h>

#include <ostream>

#include "road/sale_road.h"

namespace kest_road {
namespace {

using nlohmann::json;
using ::testing::SizeIs;

struct FaultCase {
  const char* name;
  json fault;
  std::int32_t code;  // 0: the sale went through
  int sold;           // what the server has sold then

  friend std::ostream& operator<<(std::ostream& out, const FaultCase& row) { return out << row.name; }
};

// An address of the server in a fault: the server's own port stands where PORT is.
std::string WithPort(std::string text, std::uint32_t port) {
  const std::size_t place = text.find("PORT");
  return place == std::string::npos ? text : text.replace(place, 4, std::to_string(port));
}

class FaultRoad : public SaleRoad, public ::testing::WithParamInterface<FaultCase> {
 protected:
  void AskFor(json fault) {
    if (fault.contains("location")) fault["location"] = WithPort(fault["location"], port);
    admin.AskFor(json::array({fault}));
  }
};

TEST_P(FaultRoad, GivesItsOutcomeAndTheNextSaleWorks) {
  const FaultCase& row = GetParam();
  AskFor(row.fault);
  EXPECT_EQ(row.code == 0, BuyOne() != nullptr);
  EXPECT_EQ(row.code, Code());
  const std::size_t receipts = row.code == 0 ? 1 : 0;
  EXPECT_THAT(ReceiptsOf(guid), SizeIs(receipts));
  EXPECT_EQ(static_cast<std::uint64_t>(row.sold), admin.Sales());
  EXPECT_EQ(json::array(), admin.Get("/state").at("faults")) << "a fault was asked for and did not come";

  EXPECT_NE(nullptr, BuyOne());
  EXPECT_THAT(ReceiptsOf(guid), SizeIs(receipts + 1));
  EXPECT_EQ(static_cast<std::uint64_t>(row.sold) + 1, admin.Sales());
}

std::string NameOf(const ::testing::TestParamInfo<FaultCase>& info) { return info.param.name; }

json At(const char* place, json fault) {
  fault["at"] = place;
  return fault;
}
json Handshake(json fault) { return At("handshake", std::move(fault)); }
json Request(json fault) { return At("request", std::move(fault)); }
json Kind(const char* kind) { return {{"kind", kind}}; }
json Status(int code, int times = 1) { return {{"kind", "status"}, {"code", code}, {"times", times}}; }
json StatusTo(int code, const char* location, int times = 1) {
  json fault = Status(code, times);
  fault["location"] = location;
  return fault;
}
json Close(int bytes) { return {{"kind", "close"}, {"bytes", bytes}}; }
json ContentLength(const char* value) { return {{"kind", "content-length"}, {"value", value}}; }
json Headers(json lines) { return {{"kind", "headers"}, {"lines", std::move(lines)}}; }
json Field(const char* name, const char* value) { return {{"kind", "field"}, {"name", name}, {"value", value}}; }

const json delay = {{"kind", "delay"}, {"milliseconds", 50}};
const json cutBody = {{"kind", "cut-body"}, {"bytes", 40}};
constexpr char itself[] = "http://127.0.0.1:PORT/BillCustomer";

// The exchange stands: the sale goes through.
INSTANTIATE_TEST_SUITE_P(
    Harmless, FaultRoad,
    ::testing::Values(
        FaultCase{"DelayedHandshake", Handshake(delay), 0, 1}, FaultCase{"DelayedReply", Request(delay), 0, 1},
        FaultCase{"RedirectMovedPermanently", Request(StatusTo(301, itself)), 0, 1},
        FaultCase{"RedirectFound", Request(StatusTo(302, itself)), 0, 1},
        FaultCase{"RedirectSeeOther", Request(StatusTo(303, itself)), 0, 1},
        FaultCase{"RedirectedHandshake", Handshake(StatusTo(302, itself)), 0, 1},
        FaultCase{"RelativeRedirect", Request(StatusTo(302, "/BillCustomer")), 0, 1},
        FaultCase{"FiveRedirects", Request(StatusTo(302, itself, 5)), 0, 1},
        FaultCase{"OneRequestTimeout", Request(Status(408)), 0, 1},
        FaultCase{"HandshakeTimeout", Handshake(Status(408)), 0, 1},
        FaultCase{"FiveRequestTimeouts", Request(Status(408, 5)), 0, 1},
        FaultCase{"UseProxy", Request(StatusTo(305, "http://127.0.0.1:PORT/")), 0, 1},
        FaultCase{"AnotherHost", Handshake(Field("KEST-Host", "localhost")), 0, 1},
        FaultCase{"ExtraHeaders", Request(Headers({"X-Extra: a", "x-extra: b", "X-Empty:"})), 0, 1},
        FaultCase{"FoldedHeader", Request(Headers({"X-Folded: a", "  more of it", "\tand more"})), 0, 1},
        FaultCase{"FoldedHandshakeHeader", Handshake(Headers({"X-Folded: a", " more"})), 0, 1},
        FaultCase{"ErrorZero", Request(Field("KEST-Error", "000")), 0, 1}),
    NameOf);

// The exchange fails before the server opens the request: nothing is sold.
INSTANTIATE_TEST_SUITE_P(
    NothingSold, FaultRoad,
    ::testing::Values(
        FaultCase{"HandshakeClosedAtOnce", Handshake(Close(0)), 102, 0},
        FaultCase{"HandshakeClosedInTheHead", Handshake(Close(20)), 102, 0},
        FaultCase{"HandshakeDigestWrong", Handshake(Kind("wrong-digest")), 102, 0},
        FaultCase{"HandshakeDigestWithoutZero", Handshake(Kind("digest-without-zero")), 102, 0},
        FaultCase{"HandshakeClientChallengeWrong", Handshake(Kind("wrong-client-challenge")), 102, 0},
        FaultCase{"HandshakePaddingBad", Handshake(Kind("bad-padding")), 102, 0},
        FaultCase{"HandshakeBase64Bad", Handshake(Kind("bad-base64")), 102, 0},
        FaultCase{"HandshakeBodyCut", Handshake(cutBody), 102, 0},
        FaultCase{"HandshakeLengthNegative", Handshake(ContentLength("-1")), 102, 0},
        FaultCase{"HandshakeLengthHuge", Handshake(ContentLength("2147483647")), 102, 0},
        FaultCase{"ServerError", Request(Status(500)), 102, 0}, FaultCase{"NotFound", Request(Status(404)), 102, 0},
        FaultCase{"Created", Request(Status(201)), 102, 0}, FaultCase{"NotModified", Request(Status(304)), 102, 0},
        FaultCase{"TemporaryRedirect", Request(StatusTo(307, itself)), 102, 0},
        FaultCase{"RedirectToNowhere", Request(StatusTo(302, "http://127.0.0.1:1/BillCustomer")), 102, 0},
        FaultCase{"RedirectWithoutLocation", Request(Status(302)), 102, 0},
        FaultCase{"SixRedirects", Request(StatusTo(302, itself, 6)), 102, 0},
        FaultCase{"SixRequestTimeouts", Request(Status(408, 6)), 102, 0},
        FaultCase{"ProxyWithoutLocation", Request(Status(305)), 102, 0},
        FaultCase{"LengthRequired", Request(Status(411)), 102, 0}),
    NameOf);

// The reply to a sale that the server has made does not hold: the host learns nothing of it.
INSTANTIATE_TEST_SUITE_P(
    OutcomeUnknown, FaultRoad,
    ::testing::Values(FaultCase{"ClosedAtOnce", Request(Close(0)), 102, 1},
                      FaultCase{"ClosedInTheHead", Request(Close(20)), 102, 1},
                      FaultCase{"ClosedInTheBody", Request(Close(200)), 102, 1},
                      FaultCase{"DigestWrong", Request(Kind("wrong-digest")), 102, 1},
                      FaultCase{"DigestWithoutZero", Request(Kind("digest-without-zero")), 102, 1},
                      FaultCase{"ClientChallengeWrong", Request(Kind("wrong-client-challenge")), 102, 1},
                      FaultCase{"ServerChallengeChanged", Request(Kind("changed-server-challenge")), 102, 1},
                      FaultCase{"PaddingBad", Request(Kind("bad-padding")), 102, 1},
                      FaultCase{"Base64Bad", Request(Kind("bad-base64")), 102, 1},
                      FaultCase{"BodyCut", Request(cutBody), 102, 1},
                      FaultCase{"LengthNegative", Request(ContentLength("-1")), 102, 1},
                      FaultCase{"LengthHuge", Request(ContentLength("2147483647")), 102, 1},
                      FaultCase{"LengthBeyondANumber", Request(ContentLength("99999999999")), 102, 1},
                      FaultCase{"ErrorOfTheServer", Request(Field("KEST-Error", "12")), 12, 1}),
    NameOf);

// Without a limit of the client's the server ends these itself: it answers so a hundred times and then serves.
TEST_F(SaleRoad, AProxyWithoutEndIsEndedByTheServer) {
  json fault = StatusTo(305, WithPort("http://127.0.0.1:PORT/", port).c_str());
  fault["times"] = "always";
  admin.AskFor(json::array({fault}));
  EXPECT_NE(nullptr, BuyOne());
  EXPECT_THAT(ReceiptsOf(guid), SizeIs(1));
  EXPECT_GE(admin.Get("/state").at("requests").get<int>(), 102);
}

TEST_F(SaleRoad, ALengthThatIsAlwaysRequiredIsEndedByTheServer) {
  json fault = Status(411);
  fault["times"] = "always";
  admin.AskFor(json::array({fault}));
  EXPECT_EQ(nullptr, BuyOne());
  EXPECT_EQ(102, Code());
  EXPECT_EQ(0u, admin.Sales());
  EXPECT_NE(nullptr, BuyOne());
}

TEST_F(SaleRoad, AFaultOfAnotherServiceDoesNotTouchASale) {
  json fault = Status(500);
  fault["service"] = "GetBill";
  admin.AskFor(json::array({fault}));
  const std::string transaction = TransactionOf(BuyOne());
  SetField("KEST-TxN", transaction.c_str());
  EXPECT_EQ(nullptr, library.KestGetBill(checkout));
  EXPECT_EQ(102, Code());
  EXPECT_NE(nullptr, library.KestGetBill(checkout));
}

}  // namespace
}  // namespace kest_road
