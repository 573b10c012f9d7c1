// Requests whose seal holds and whose fields are missing, repeated, huge or of another kind: is each answered with its
// code?
#include <gtest/gtest.h>

#include "sandbox/test_client.h"
#include "sandbox/test_server.h"

namespace sandboxtest {
namespace {

const std::pair<std::string, std::string> good = {"KEST-CCard-Number", "4111111111111111"};
const std::pair<std::string, std::string> declined = {"KEST-CCard-Number", "4000000000000002"};

std::pair<std::string, std::string> Line(const std::string& text) {
  return {"KEST-Product", text};
}

const auto pen = Line("SKU:1042^Quantity:1");

struct Case {
  const char* name;
  const char* service;
  Fields fields;
  const char* code;
};

void PrintTo(const Case& one, std::ostream* stream) {
  *stream << one.name;
}

std::string Huge(char c) {
  return std::string(1024 * 1024, c);
}

const Case cases[] = {
    {"OrderOfNothing", "BillCustomer", {good}, "1201"},
    {"NoFieldAtAll", "BillCustomer", {}, "1201"},
    {"CardMissing", "BillCustomer", {pen}, "1401"},
    {"CardEmpty", "BillCustomer", {pen, {"KEST-CCard-Number", ""}}, "1401"},
    {"CardTwice", "BillCustomer", {pen, declined, good}, "1403"},
    {"CardHuge", "BillCustomer", {pen, {"KEST-CCard-Number", Huge('4')}}, "1402"},
    {"CardOfOtherBytes", "BillCustomer", {pen, {"KEST-CCard-Number", "4111\xFF\x01 1111^:"}}, "1402"},
    {"LineEmpty", "BillCustomer", {good, Line("")}, "1203"},
    {"LineHuge", "BillCustomer", {good, Line(Huge('S'))}, "1203"},
    {"LineOfAHugeSku", "BillCustomer", {good, Line("SKU:" + Huge('1') + "^Quantity:1")}, "1203"},
    {"LineOfAHugeForeignPair", "BillCustomer", {good, Line("SKU:1042^Quantity:1^Note:" + Huge('n'))}, "0"},
    {"LineOfManyPairs",
     "BillCustomer",
     {good, Line([] {
        std::string pairs = "SKU:1042^Quantity:1";
        for (int i = 0; i < 200000; i++) pairs += "^a:b";
        return pairs;
      }())},
     "1203"},
    {"LineOfColonsAlone", "BillCustomer", {good, Line(Huge(':'))}, "1203"},
    {"LineTwice", "BillCustomer", {good, pen, pen}, "0"},
    {"TenThousandLines", "BillCustomer",
     [] {
       Fields fields = {good};
       fields.resize(10001, pen);
       return fields;
     }(),
     "0"},
    {"TwentyThousandLines", "BillCustomer",
     [] {
       Fields fields = {good};
       fields.resize(20001, pen);
       return fields;
     }(),
     "1203"},
    {"GuidHuge", "BillCustomer", {good, pen, {"GUID", Huge('g')}}, "1101"},
    {"TransactionMissing", "GetBill", {}, "1302"},
    {"TransactionEmpty", "GetBill", {{"KEST-TxN", ""}}, "1302"},
    {"TransactionNegative", "GetBill", {{"KEST-TxN", "-100001"}}, "1301"},
    {"TransactionWithAPlus", "GetBill", {{"KEST-TxN", "+100001"}}, "1301"},
    {"TransactionWithAZeroInFront", "GetBill", {{"KEST-TxN", "0100001"}}, "1301"},
    {"TransactionWithDecimals", "GetBill", {{"KEST-TxN", "100001.0"}}, "1301"},
    {"TransactionOf2To63", "GetBill", {{"KEST-TxN", "9223372036854775808"}}, "1301"},
    {"TransactionOf2To64And100001", "GetBill", {{"KEST-TxN", "18446744073709651617"}}, "1301"},
    {"TransactionOfSql", "GetBill", {{"KEST-TxN", "100001 OR 1=1"}}, "1301"},
    {"TransactionHuge", "GetBill", {{"KEST-TxN", Huge('1')}}, "1301"},
    {"TransactionTwice", "GetBill", {{"KEST-TxN", "7"}, {"KEST-TxN", "100001"}}, "1301"},
    {"GuidMissing", "GetProductList", {}, "1101"},
    {"GuidTwice", "GetProductList", {{"GUID", "unknown"}, {"GUID", testGuid}}, "1101"},
    {"VersionHuge", "GetProductList", {{"GUID", "only-two"}, {"VERSIONID", Huge('2')}}, "1102"},
    {"FieldNameHuge", "GetProductList", {{"GUID", testGuid}, {Huge('n'), ""}}, "0"},
};

class OddFields : public ::testing::TestWithParam<Case> {
 public:
  // With one sale, number 100001.
  static void SetUpTestSuite() {
    server = new TestServer;
    TestClient(server->Port(), server->KeyText()).Call("BillCustomer", {good, pen});
  }
  static void TearDownTestSuite() {
    delete server;
    server = nullptr;
  }
  static TestServer* server;
};
TestServer* OddFields::server = nullptr;

TEST_P(OddFields, AreAnsweredWithTheirCode) {
  TestClient client(server->Port(), server->KeyText());
  const Fields reply = client.Call(GetParam().service, GetParam().fields).value_or(Fields());
  EXPECT_EQ(Value(reply, "KEST-Error"), GetParam().code);
  const Fields bill = client.Call("GetBill", {{"KEST-TxN", "100001"}}).value_or(Fields());
  EXPECT_EQ(Value(bill, "KEST-TotalAmount"), "1.50");
}

INSTANTIATE_TEST_SUITE_P(Of, OddFields, ::testing::ValuesIn(cases), [](const auto& one) { return one.param.name; });

}  // namespace
}  // namespace sandboxtest
