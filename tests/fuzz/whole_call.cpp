// Whole calls through the exports against a server that answers what the input says: each ends in one of the results
// that the header states, and leaves no socket, no registry handle and no memory behind. The input's first line is the
// operation, "list", "buy" or "bill", and how many bytes arrive at once; then come the server's answers, parted by a
// line
// "----", the last one for further requests too. An answer's first line says what the rest is: "raw" all that is sent,
// "http" a body, "plain" what is enciphered, "sealed" a text that gets its digest, "honest" fields behind those of the
// sealing.
// "$C" and "$S" stand for the challenges.
#include <algorithm>
#include <cstdlib>

#include "fuzz/target.h"
#include "kestapi.h"
#include "store/receipt_paths.h"
#include "support/allocation_system.h"
#include "support/memory_registry.h"
#include "support/sealed_server.h"

namespace kest::testing {
namespace {

constexpr int mostRequests = 20;
constexpr char guid[] = "{7C1E-0A}";

struct Plan {
  std::string operation;
  std::size_t pieceSize = 1;
  std::vector<std::string> answers;
};

Plan ReadPlan(Input input) {
  const std::string line = input.Line();
  Plan plan;
  plan.operation = line.substr(0, line.find(' '));
  plan.pieceSize = std::max<std::size_t>(1, std::strtoul(line.substr(plan.operation.size()).c_str(), nullptr, 10));
  std::string rest = input.Rest();
  const std::string mark = "\n----\n";
  for (std::size_t end; (end = rest.find(mark)) != std::string::npos; rest.erase(0, end + mark.size())) {
    plan.answers.push_back(rest.substr(0, end));
  }
  plan.answers.push_back(rest);
  return plan;
}

std::string Replaced(std::string text, const std::string& mark, const std::string& by) {
  for (std::size_t at = 0; (at = text.find(mark, at)) != std::string::npos; at += by.size()) {
    text.replace(at, mark.size(), by);
  }
  return text;
}

// Answers by the plan, and counts what could have been a valid answer.
class PlannedServer {
 public:
  PlannedServer(SealedServer& played, const Plan& followed) : server(played), plan(followed) {
    server.pieceSize = plan.pieceSize;
    server.answer = [this](SealedServer&, const ServerRequest& request) { return Answer(request); };
  }

  int SealedAnswers() const { return sealedAnswers; }
  bool WasHonest() const { return isHonest; }

 private:
  // A further attempt sends the same bytes once more, or none.
  void Open(const ServerRequest& request) {
    if (request.number == 1) {
      handshake = request.body;
      server.OpenHandshake(request);
    } else if (!request.body.empty() && request.body != handshake) {
      server.OpenRequest(request);
    }
  }

  std::string Answer(const ServerRequest& request) {
    // Some answers ask for the next attempt without end.
    if (request.number > mostRequests) return {};
    Open(request);
    const std::size_t index = std::min<std::size_t>(static_cast<std::size_t>(request.number), plan.answers.size()) - 1;
    const std::string& answer = plan.answers[index];
    const std::size_t end = std::min(answer.find('\n'), answer.size());
    const std::string kind = answer.substr(0, end);
    std::string rest = answer.substr(std::min(end + 1, answer.size()));
    rest = Replaced(Replaced(rest, "$C", server.clientRac), "$S", server.serverRac);
    isHonest = isHonest && kind == "honest";
    if (kind == "http") return SealedServer::Http(rest);
    if (kind != "plain" && kind != "sealed" && kind != "honest") return rest;
    ++sealedAnswers;
    if (kind == "plain") return server.Seal(rest);
    if (kind == "honest") rest = HonestText(rest);
    return server.Seal(SealedServer::DigestOf(rest.c_str()) + rest + '\0');
  }

  // Each line of the answer a field, whatever it says.
  std::string HonestText(std::string rest) const {
    std::string text = "KEST-Auth-Client-RAC: " + server.clientRac + "\r\nKEST-Auth-Server-RAC: " + server.serverRac +
                       "\r\nKEST-Auth-CID: connection-7\r\n";
    while (!rest.empty()) {
      std::string line = rest.substr(0, rest.find('\n'));
      rest.erase(0, std::min(line.size() + 1, rest.size()));
      line.erase(std::remove_if(line.begin(), line.end(), [](char c) { return c == '\r' || c == '\0'; }), line.end());
      if (!line.empty()) text += line + "\r\n";
    }
    return text + "\r\n";
  }

  SealedServer& server;
  const Plan& plan;
  std::string handshake;
  int sealedAnswers = 0;
  bool isHonest = true;
};

// The server's own code, as it is read from a field; 0 for none.
std::int32_t CodeIn(KestFieldSet* reply) {
  const char* text = KestGetField(reply, "KEST-Error");
  std::uint32_t code = 0;
  for (; text != nullptr && *text != '\0'; ++text) code = code * 10 + static_cast<unsigned char>(*text) - 48;
  return static_cast<std::int32_t>(code);
}

void HoldFields(KestFieldSet* set) {
  const std::int32_t count = KestGetFieldCount(set);
  HOLD(count >= 0);
  for (std::int32_t i = 0; i < count; ++i) {
    HOLD(KestGetFieldName(set, i) != nullptr && KestGetFieldValue(set, i) != nullptr);
    HOLD(KestGetField(set, KestGetFieldName(set, i)) != nullptr);
  }
  HOLD(KestGetFieldName(set, count) == nullptr && KestGetFieldValue(set, -1) == nullptr);
}

// Each answers whether the exchange went through.
bool List() {
  KestProductList* list = KestCreateProductList();
  const bool isGood = KestGetProductList(list, "1.0") != 0;
  HOLD(KestGetErrorCode(KEST_FIELDS(list)) == (isGood ? KEST_ERROR_NONE : KEST_ERROR_EXCHANGE));
  HoldFields(KEST_FIELDS(list));
  KestFieldSet* product;
  while ((product = KestNextProduct(list)) != nullptr) {
    HOLD(isGood);
    HoldFields(product);
  }
  KestDestroyProductList(list);
  return isGood;
}

KestCheckout* MakeCheckout() {
  KestCheckout* checkout = KestCreateCheckout();
  KestSetField(KEST_FIELDS(checkout), "KEST-CCard-Number", "4111111111111111");
  KestSetField(KEST_FIELDS(checkout), "KEST-TxN", "TX-77");
  KestAddOrderLine(checkout, 1001, 2);
  return checkout;
}

// A failure has the exchange's code or one of the server's.
bool HoldFailure(KestCheckout* checkout) {
  const std::int32_t code = KestGetErrorCode(KEST_FIELDS(checkout));
  HOLD(code != KEST_ERROR_NONE);
  return code != KEST_ERROR_EXCHANGE;
}

bool Buy(MemoryRegistry& registry) {
  KestCheckout* checkout = MakeCheckout();
  KestPurchase* purchase = KestBillCustomer(checkout);
  bool isGood = purchase != nullptr;
  if (isGood) {
    HOLD(KestGetErrorCode(KEST_FIELDS(checkout)) == KEST_ERROR_NONE);
    HOLD(CodeIn(KEST_FIELDS(purchase)) == 0);
    HoldFields(KEST_FIELDS(purchase));
  } else {
    isGood = HoldFailure(checkout);
  }
  // A sale stands in a receipt, and nothing else does.
  KestFieldSet* receipt = KestCreateFieldSet();
  HOLD((KestLoadReceipt(receipt, guid) != 0) == (purchase != nullptr));
  HOLD(registry.Has(std::string("HKCU\\") + receiptsPath) == (purchase != nullptr));
  KestFreeFieldSet(receipt);
  HoldFields(KEST_FIELDS(checkout));
  KestDestroyCheckout(checkout);
  return isGood;
}

bool FetchBill() {
  KestCheckout* checkout = MakeCheckout();
  KestBill* bill = KestGetBill(checkout);
  bool isGood = bill != nullptr;
  if (isGood) {
    HOLD(CodeIn(KEST_FIELDS(bill)) == 0);
    HoldFields(KEST_FIELDS(bill));
    const std::int32_t count = KestGetBillProductCount(bill);
    for (std::int32_t i = 0; i < count; ++i) HoldFields(KestGetBillProduct(bill, static_cast<std::uint32_t>(i)));
  } else {
    isGood = HoldFailure(checkout);
  }
  KestDestroyCheckout(checkout);
  return isGood;
}

// The settings of the process, made once and outside of what is counted.
void Configure() {
  static const bool isConfigured =
      KestSetServer("shop.example", 8080, SealedServer::KeyText().c_str()) != 0 && (KestSetApplicationGuid(guid), true);
  HOLD(isConfigured);
}

void Check(const Plan& plan) {
  Configure();
  AllocationSystem memory;
  SealedServer server(memory);
  MemoryRegistry registry(server);
  PlannedServer planned(server, plan);
  {
    const SystemInForce inForce(registry);
    const bool isGood = plan.operation == "buy" ? Buy(registry) : plan.operation == "bill" ? FetchBill() : List();
    // Nobody without the session's key can make a valid answer, and an honest server is understood.
    if (isGood) HOLD(planned.SealedAnswers() >= 2);
    // 102 may be the server's own code too.
    if (planned.WasHonest()) HOLD(server.requests.size() == 2 && (isGood || plan.operation != "list"));
  }
  HOLD(server.OpenSockets() == 0);
  HOLD(registry.OpenHandles() == 0);
  HOLD(registry.WrongHandles() == 0);
  HOLD(memory.Outstanding() == 0);
}

}  // namespace
}  // namespace kest::testing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t length) {
  kest::testing::Check(kest::testing::ReadPlan(kest::testing::Input(bytes, length)));
  return 0;
}
