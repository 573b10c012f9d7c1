// Bodies: their base64, the cipher text, the digest, the inner header block, the challenges, what the fields say.
#include <algorithm>

#include "core/byte_buffer.h"
#include "crypto/message_digest.h"
#include "shape/reply_rows.h"

namespace kest::testing {
namespace {

std::string BodyOf(const std::string& http) {
  return http.substr(http.find("\r\n\r\n") + 4);
}

std::string DigestWithoutZeroByte(const std::string& text) {
  AlgorithmObject* digest = nullptr;
  std::uint8_t bytes[20] = {};
  std::uint32_t length = 0;
  CreateAlgorithm(&digest);
  SetAlgorithmInfo(digest, sha1Descriptor, nullptr);
  DigestInit(digest, libraryChooser);
  DigestUpdate(digest, text.data(), static_cast<std::uint32_t>(text.size()));
  DigestFinal(digest, bytes, &length, sizeof bytes);
  DestroyAlgorithm(&digest);
  String encoded;
  ByteBuffer(bytes, length).EncodeBase64(encoded);
  return encoded.Text();
}

// Collects rows; each method says what is sent, `seen` what comes of it.
class Collector {
 public:
  explicit Collector(SealedServer& sealing) : server(sealing) {}

  ReplyRow& Http(const std::string& name, bool isHandshake, const std::string& http, const std::string& seen) {
    rows.push_back(MakeRow(server, {name.c_str(), {http}, seen.c_str()}, isHandshake));
    return rows.back();
  }
  void Body(const std::string& name, const std::string& body, const std::string& seen) {
    for (const bool isHandshake : {true, false}) Http(name, isHandshake, SealedServer::Http(body), seen);
  }
  // A text behind its own digest.
  void Text(const std::string& name, const std::string& text, const std::string& seen) {
    Body(name, BodyOf(server.Seal(SealedServer::DigestOf(text) + text + '\0')), seen);
  }
  // These fields behind the honest ones.
  ReplyRow& Reply(const std::string& name, const Fields& fields, const std::string& seen, Call call = Call::list) {
    Fields all = HonestFields(server);
    all.insert(all.end(), fields.begin(), fields.end());
    return Only(name, false, all, seen, call);
  }
  ReplyRow& Only(const std::string& name, bool isHandshake, const Fields& fields, const std::string& seen,
                 Call call = Call::list) {
    ReplyRow& row = Http(name, isHandshake, server.Reply(fields), seen);
    row.call = call;
    const std::string service = call == Call::list ? "GetProductList" : call == Call::sale ? "BillCustomer" : "GetBill";
    for (std::string& attempt : row.attempts) attempt.replace(attempt.find("GetProductList"), 14, service);
    return row;
  }

  std::vector<ReplyRow> rows;

 private:
  SealedServer& server;
};

// Honest in both messages, and one product.
Fields OneProduct(const SealedServer& server) {
  Fields fields = HonestFields(server);
  fields.emplace_back("KEST-Product", "SKU:1");
  return fields;
}

void AddBase64(Collector& add, SealedServer& server) {
  // Of one product in the reply to either message; the handshake's is not looked at.
  Fields fields = OneProduct(server);
  const std::string body = BodyOf(server.Reply(fields));
  std::string padded = body;
  for (fields.emplace_back("Z", ""); padded.substr(padded.size() - 2) != "==";) {
    fields.back().second += 'z';
    padded = BodyOf(server.Reply(fields));
  }
  const std::string z = " Z=" + fields.back().second;
  const std::size_t half = body.size() / 2;
  const auto both = [&](const char* name, const std::string& text, bool isGood) {
    add.Http(name, true, SealedServer::Http(text), isGood ? good : failed);
    add.Http(name, false, SealedServer::Http(text),
             isGood ? (text.back() == '=' ? "done" + z + " [SKU=1]" : good) : failed);
  };
  both("Padded", padded, true);
  both("PadMissing", padded.substr(0, padded.size() - 2), false);
  both("OnePadOfTwo", padded.substr(0, padded.size() - 1), false);
  both("PadInTheMiddle", body.substr(0, half) + "==" + body.substr(half), false);
  both("BytesBehindThePad", padded + "AAAA", false);
  std::string wrapped;
  for (std::size_t at = 0; at < body.size(); at += 64) wrapped += body.substr(at, 64) + "\r\n";
  both("Base64InLines", wrapped, true);
  both("Base64AmongSpaces", " \t" + body.substr(0, 1) + "   " + body.substr(1) + " ", true);
  both("SpacesAlone", " \r\n ", false);
  both("ForeignCharacter", body.substr(0, half) + "!" + body.substr(half), false);
  both("ZeroByteInBase64", body.substr(0, half) + '\0' + body.substr(half), false);
  both("UrlAlphabet", "-" + body.substr(1), false);
  both("NoBase64AtAll", "<html>not found</html>", false);
  both("CipherTextOfOddLength", body.substr(0, body.size() - 4), false);
  both("CipherTextOfOneByte", "QQ==", false);
  both("FirstBlocksMissing", body.substr(32), false);
  both("LastBlocksMissing", body.substr(0, body.size() - 32), false);
  const auto changed = [&](std::size_t at) {
    std::string text = body;
    text[at] = text[at] == 'A' ? 'B' : 'A';
    return text;
  };
  both("FirstCharacterChanged", changed(0), false);
  both("MiddleCharacterChanged", changed(half), false);
  both("LastCharacterChanged", changed(body.find_last_not_of('=')), false);
}

void AddMessages(Collector& add, SealedServer& server) {
  const std::string honest = SealedServer::TextOf(OneProduct(server));
  const std::string digest = SealedServer::DigestOf(honest), zero(1, '\0');
  const auto sealed = [&](const std::string& message) { return BodyOf(server.Seal(message)); };
  add.Body("ZeroByteNotEnciphered", sealed(digest + honest), good);
  add.Body("BytesBehindTheZeroByte", sealed(digest + honest + zero + "KEST-Product: SKU:2\r\n"), good);
  add.Body("EmptyMessage", sealed(""), failed);
  add.Body("ZeroByteAlone", sealed(zero), failed);
  add.Body("OneByteLessThanADigest", sealed(std::string(27, 'A') + zero), failed);
  add.Body("DigestAlone", sealed(SealedServer::DigestOf("") + zero), failed);
  add.Body("DigestOmitsTheZeroByte", sealed(DigestWithoutZeroByte(honest) + honest + zero), failed);
  add.Body("DigestOfAnotherText", sealed(SealedServer::DigestOf(honest + " ") + honest + zero), failed);
  add.Body("NoDigest", sealed(honest + zero), failed);
  const std::string racs = SealedServer::TextOf(HonestFields(server));
  const std::string open = racs.substr(0, racs.size() - 2);
  add.Text("InnerBlockWithoutEmptyLine", open + "KEST-Product: SKU:1\r\n", good);
  add.Text("InnerBlockEndsInALine", open + "KEST-Product: SKU:1", good);
  add.Text("InnerBareLineFeeds", open + "KEST-Product: SKU:1\n\n", good);
  add.Text("InnerFoldedLine", open + "KEST-Product:\r\n\tSKU:1\r\n\r\n", good);
  add.Text("InnerFieldsBehindTheEmptyLine", open + "KEST-Product: SKU:1\r\n\r\nKEST-Product: SKU:2\r\n", good);
  add.Text("InnerBareReturn", open + "KEST-Product: SKU\r:1\r\n\r\n", failed);
  add.Text("InnerEmptyLineFirst", "\r\n" + racs, failed);
  add.Text("InnerNonsense", "nonsense", failed);
}

void AddChallenges(Collector& add, SealedServer& server) {
  const std::string client = "KEST-Auth-Client-RAC", serverName = "KEST-Auth-Server-RAC", rac = server.clientRac;
  const std::pair<std::string, std::string> product = {"KEST-Product", "SKU:1"}, s = {serverName, "s"};
  std::string otherCase = rac;
  for (char& c : otherCase) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
  for (const bool isHandshake : {true, false}) {
    const std::string done = good;
    add.Only("ClientChallengeMissing", isHandshake, {s, product}, failed);
    add.Only("ClientChallengeEmpty", isHandshake, {{client, ""}, s, product}, failed);
    add.Only("ClientChallengeInOtherLetterCase", isHandshake, {{client, otherCase}, s, product}, failed);
    add.Only("ClientChallengeCut", isHandshake, {{client, rac.substr(0, 63)}, s, product}, failed);
    add.Only("ClientChallengeWithMore", isHandshake, {{client, rac + "A"}, s, product}, failed);
    add.Only("WrongClientChallengeFirst", isHandshake, {{client, "x"}, {client, rac}, s, product}, failed);
    add.Only("RightClientChallengeFirst", isHandshake, {{client, rac}, {client, "x"}, s, product}, done);
    add.Only("ChallengesUnderOtherLetterCase", isHandshake,
             {{"kest-auth-CLIENT-rac", rac}, {"kest-auth-SERVER-rac", "s"}, product}, done);
    add.Only("SpacesAroundChallenges", isHandshake, {{client, "  " + rac + " \t"}, {serverName, " s "}, product}, done);
  }
  add.Only("ServerChallengeMissing", false, {{client, rac}, product}, failed);
  add.Only("ServerChallengeIsAnother", false, {{client, rac}, {serverName, "t"}, product}, failed);
  add.Only("ServerChallengeInOtherLetterCase", false, {{client, rac}, {serverName, "S"}, product}, failed);
  add.Only("ServerChallengeWithMore", false, {{client, rac}, {serverName, "ss"}, product}, failed);
  // The handshake's reply fixes it; one without leaves it to the next.
  add.Only("NoServerChallengeYet", true, {{client, rac}}, good);
  add.Only("EmptyServerChallenge", true, {{client, rac}, {serverName, ""}}, good);
  ReplyRow& other = add.Only("OtherServerChallengeThanLater", true, {{client, rac}, {serverName, "t"}}, failed);
  other.attempts.push_back(other.attempts[0]);
}

void AddHosts(Collector& add, SealedServer& server) {
  Fields fields = HonestFields(server);
  fields.emplace_back("KEST-Host", "");
  add.Only("EmptyHost", true, fields, good);
  fields.back().second = "10.9.8.7";
  add.Only("OtherHost", true, fields, good).attempts[1] = "10.9.8.7:8080 /GetProductList";
  fields.back().second = "255.255.255.255";
  add.Only("HostWhereNothingListens", true, fields, failed);
  fields[0].second = "x";
  fields.back().second = "10.9.8.7";
  add.Only("OtherHostInARefusedReply", true, fields, failed);
  add.Reply("HostInTheLastReply", {{"KEST-Host", "10.9.8.7"}}, "done KEST-Host=10.9.8.7");
}

void AddProducts(Collector& add) {
  const auto product = [](const std::string& text) { return std::make_pair(std::string("KEST-Product"), text); };
  add.Reply("NoProducts", {}, "done");
  add.Reply("ThreeProducts", {product("SKU:1"), product("SKU:2^Name:Tool"), product("SKU:3")},
            "done [SKU=1] [SKU=2 Name=Tool] [SKU=3]");
  add.Reply("ProductInOtherLetterCase", {{"kest-PRODUCT", "SKU:1"}}, good);
  add.Reply("ProductsAmongOtherFields", {{"A", "1"}, product("SKU:1"), {"B", "2"}, product("SKU:2")},
            "done A=1 B=2 [SKU=1] [SKU=2]");
  add.Reply("ProductWithoutColon", {product("abc")}, "done []");
  add.Reply("EmptyProduct", {product("")}, "done []");
  add.Reply("ProductWithFurtherColons", {product("a:1^b:2:3")}, "done [a=1 b=2:3]");
  add.Reply("ProductWithUnfinishedPair", {product("a:1^b")}, "done [a=1]");
  add.Reply("ProductWithPairWithoutColonInTheMiddle", {product("a:1^xyz^b:2")}, "done [a=1 xyz^b=2]");
  add.Reply("ProductWithNameTwice", {product("a:1^a:2")}, "done [a=1 a=2]");
  Fields many;
  std::string seen = "done";
  for (int sku = 1; sku <= 40; ++sku) {
    many.push_back(product("SKU:" + std::to_string(sku)));
    seen += " [SKU=" + std::to_string(sku) + "]";
  }
  add.Reply("FortyProducts", many, seen);
  add.Reply("ErrorInAList", {{"KEST-Error", "5"}}, "done KEST-Error=5");
}

void AddSales(Collector& add) {
  const Fields sold = {
      {"KEST-Error", "0"}, {"KEST-TxN", "T-7"}, {"KEST-TotalAmount", "21.95"}, {"KEST-TaxAmount", "2.00"}};
  const std::string fields = " KEST-TxN=T-7 KEST-TotalAmount=21.95 KEST-TaxAmount=2.00";
  add.Reply("SaleDone", sold, "done KEST-Error=0" + fields + " receipt", Call::sale);
  add.Reply("SaleWithoutError", Fields(sold.begin() + 1, sold.end()), "done" + fields + " receipt", Call::sale);
  add.Reply("SaleRefused", {{"KEST-Error", "7"}, {"KEST-TxN", "T-7"}}, "7 KEST-Error=7 KEST-TxN=T-7", Call::sale);
  add.Reply("SaleRefusedWithTheExchangesCode", {{"KEST-Error", "102"}}, "102 KEST-Error=102", Call::sale);
  add.Reply("SaleOfNothing", {}, "done receipt", Call::sale);
  add.Reply("BillWithTwoProducts", {{"KEST-TxN", "T-9"}, {"KEST-Product", "SKU:1"}, {"KEST-Product", "SKU:2"}},
            "done KEST-TxN=T-9 [SKU=1] [SKU=2]", Call::bill);
  add.Reply("BillRefused", {{"KEST-Error", "9"}, {"KEST-TxN", "T-9"}}, "9 KEST-Error=9 KEST-TxN=T-9", Call::bill);
  for (const Call call : {Call::sale, Call::bill}) {
    const std::string name = call == Call::sale ? "Sale" : "Bill";
    add.Only(name + "WithoutChallenges", false, sold, failed, call);
  }
}

}  // namespace

std::vector<ReplyRow> SealedRows(SealedServer& server) {
  Collector add(server);
  AddBase64(add, server);
  AddMessages(add, server);
  AddChallenges(add, server);
  AddHosts(add, server);
  AddProducts(add);
  AddSales(add);
  return std::move(add.rows);
}

}  // namespace kest::testing
