// Does the program keep what it promises to those who start it: ready line, exit codes, files, signals, a clean log?
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "files.h"
#include "sandbox/admin_client.h"
#include "sandbox/process.h"
#include "sandbox/socket.h"
#include "sandbox/test_client.h"

namespace sandboxtest {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

constexpr const char* sampleGuid = "{6F1D2A54-93C7-4B0E-8E21-5A7C0D94B3F6}";

std::string FileText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

void WriteFile(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

int RunInit(const std::vector<std::string>& arguments) {
  std::vector<std::string> all = {"init"};
  all.insert(all.end(), arguments.begin(), arguments.end());
  return Process(all).Wait();
}

// Says what the program says on stderr when it fails with that exit code.
std::string WordsOfFailure(const std::vector<std::string>& arguments, int exitCode) {
  Process process(arguments);
  EXPECT_EQ(process.Wait(), exitCode) << process.Log();
  EXPECT_EQ(process.Output(), "");
  EXPECT_THAT(process.Log(), Not(HasSubstr("terminate")));
  return process.Log();
}

class Program : public ::testing::Test {
 protected:
  TemporaryFolder folder;
  const std::string shop = folder / "shop";
};

class Serving : public Program {
 protected:
  void SetUp() override { ASSERT_EQ(RunInit({shop}), 0); }

  nlohmann::json Ready(Process& process) { return nlohmann::json::parse(process.ReadLine()); }
};

TEST_F(Program, InitMakesKeysAndCatalogue) {
  Process init({"init", shop});
  EXPECT_EQ(init.Wait(), 0);
  EXPECT_THAT(init.Output(), HasSubstr("kest-sandbox serve " + shop));
  EXPECT_THAT(FileText(shop + "/private.key"), HasSubstr("BEGIN PRIVATE KEY"));
  EXPECT_THAT(FileText(shop + "/public.key"), ::testing::MatchesRegex("[A-Za-z0-9+/]+=*\n"));
  const nlohmann::json catalogue = nlohmann::json::parse(FileText(shop + "/catalogue.json"));
  EXPECT_GE(catalogue["applications"][0]["products"].size(), 3u);
}

TEST_F(Program, InitKeepsThePrivateKeyToItsOwner) {
  ASSERT_EQ(RunInit({shop}), 0);
  EXPECT_EQ(std::filesystem::status(shop + "/private.key").permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(Program, InitMakesALongerKeyWhenAsked) {
  ASSERT_EQ(RunInit({folder / "short"}), 0);
  ASSERT_EQ(RunInit({folder / "long", "--bits", "2048"}), 0);
  EXPECT_EQ(FromBase64(FileText(folder / "short/public.key").substr(0, 216)).value().size(), 162u);
  EXPECT_EQ(FileText(folder / "long/public.key").size(), 393u);
}

TEST_F(Program, InitOverwritesNothing) {
  for (const char* name : {"private.key", "public.key", "catalogue.json"}) {
    const std::string taken = folder / (std::string("with-") + name);
    std::filesystem::create_directory(taken);
    WriteFile(taken + "/" + name, "mine");
    const std::string words = WordsOfFailure({"init", taken}, 1);
    EXPECT_THAT(words, HasSubstr(std::string("holds ") + name + " already"));
    EXPECT_THAT(words, HasSubstr("name another folder, or remove the file"));
    EXPECT_EQ(FileText(taken + "/" + name), "mine");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(taken), {}), 1);
  }
}

// Init looks first; the writing itself must not fall for a file that comes between.
TEST_F(Program, WritingANewFileLeavesAnExistingOneAsItIs) {
  WriteFile(folder / "file", "mine");
  EXPECT_THROW(sandbox::WriteNewFile(folder / "file", "other", 0600), std::runtime_error);
  EXPECT_EQ(FileText(folder / "file"), "mine");
}

TEST_F(Program, InitWhereNoFolderCanBeSaysSo) {
  WriteFile(folder / "file", "");
  EXPECT_THAT(WordsOfFailure({"init", folder / "file/shop"}, 1), HasSubstr("cannot make the folder"));
}

TEST_F(Program, WrongUsageExitsWith2) {
  EXPECT_THAT(WordsOfFailure({}, 2), HasSubstr("subcommand"));
  EXPECT_THAT(WordsOfFailure({"init"}, 2), HasSubstr("DIR"));
  EXPECT_THAT(WordsOfFailure({"init", shop, "--bits", "1000"}, 2), HasSubstr("--bits"));
  EXPECT_THAT(WordsOfFailure({"serve", shop, "--session-seconds", "0"}, 2), HasSubstr("--session-seconds"));
  EXPECT_THAT(WordsOfFailure({"serve", shop, "--nonsense"}, 2), HasSubstr("--nonsense"));
}

TEST_F(Program, NumberThatIsNoneIsWrongUsage) {
  for (const char* seconds : {"nan", "-nan", "inf", "-1", "0", "3601", "x"}) {
    EXPECT_THAT(WordsOfFailure({"serve", shop, std::string("--client-seconds=") + seconds}, 2),
                HasSubstr("--client-seconds"));
  }
}

TEST_F(Program, SeedThatIsNoNumberBelow2ToThe64thIsWrongUsage) {
  for (const char* seed : {"-1", "+1", "010", "0x10", "18446744073709551616", "1 ", "x", ""}) {
    EXPECT_THAT(WordsOfFailure({"serve", shop, std::string("--seed=") + seed}, 2), HasSubstr("--seed")) << seed;
  }
}

TEST_F(Program, HelpExitsWith0) {
  Process help({"serve", "--help"});
  EXPECT_EQ(help.Wait(), 0);
  EXPECT_THAT(help.Output(), HasSubstr("--max-body"));
}

TEST_F(Program, ServeWithoutInitSaysWhatToDo) {
  EXPECT_THAT(WordsOfFailure({"serve", shop}, 1), HasSubstr("kest-sandbox init " + shop));
}

TEST_F(Serving, ReadyLineIsTheOnlyOutputAndTellsAddressAndKey) {
  Process serve({"serve", shop, "--listen", "127.0.0.1:0"});
  const nlohmann::json ready = Ready(serve);
  EXPECT_EQ(ready["event"], "ready");
  EXPECT_EQ(ready["host"], "127.0.0.1");
  EXPECT_EQ(ready["address"], "127.0.0.1:" + std::to_string(ready["port"].get<int>()));
  EXPECT_EQ(ready["key"].get<std::string>() + "\n", FileText(shop + "/public.key"));
  EXPECT_EQ(ready.size(), 5u);
  serve.Signal(SIGTERM);
  EXPECT_EQ(serve.Wait(), 0);
  EXPECT_EQ(serve.Output(), serve.Output().substr(0, serve.Output().find('\n') + 1));
}

TEST_F(Serving, SampleCatalogueIsSoldToBothOfItsVersions) {
  Process serve({"serve", shop});
  const nlohmann::json ready = Ready(serve);
  TestClient client(ready["port"], ready["key"]);
  const auto products = [&](const std::string& version) {
    const Fields fields =
        client.Call("GetProductList", {{"GUID", sampleGuid}, {"VERSIONID", version}}).value_or(Fields());
    return std::count_if(fields.begin(), fields.end(), [](const auto& field) { return field.first == "KEST-Product"; });
  };
  EXPECT_EQ(products("1.0"), 4);
  EXPECT_EQ(products("0.9"), 2);
}

TEST_F(Serving, InterruptEndsItAsTerminationDoes) {
  Process serve({"serve", shop});
  Ready(serve);
  serve.Signal(SIGINT);
  EXPECT_EQ(serve.Wait(), 0);
}

TEST_F(Serving, TerminationWaitsForTheAnswerThatIsUnderWay) {
  Process serve({"serve", shop, "--verbose"});
  const nlohmann::json ready = Ready(serve);
  TestClient client(ready["port"], ready["key"]);
  const std::string body = client.HandshakeBody(client.HandshakeFields());
  Socket socket(ready["port"]);
  ASSERT_TRUE(socket.Send(client.Head("/GetProductList", body.size()) + body.substr(0, 10)));
  ASSERT_TRUE(serve.WaitForLog("head read"));
  serve.Signal(SIGTERM);
  ASSERT_TRUE(serve.WaitForLog("stopping"));
  ASSERT_TRUE(socket.Send(body.substr(10)));
  const HttpReply reply = ReadReply(socket);
  EXPECT_EQ(reply.status, 200);
  EXPECT_TRUE(client.Open(reply.body).has_value());
  socket.EndSending();
  EXPECT_EQ(serve.Wait(), 0);
}

TEST_F(Serving, LogHoldsNoSecret) {
  const std::string card = "4111111111111111";
  Process serve({"serve", shop, "--verbose"});
  const nlohmann::json ready = Ready(serve);
  TestClient client(ready["port"], ready["key"]);
  ASSERT_TRUE(client.Handshake(card));
  EXPECT_EQ(client.Request(card, {{"GUID", card}}).status, 200);
  EXPECT_EQ(client.Request("GetProductList", {{card, card}}).status, 409);
  const TestClient before = client;
  client.NewSession();
  ASSERT_TRUE(client.Handshake());
  const HttpReply reply = client.Request("GetProductList", {{"GUID", card}, {"VERSIONID", card}, {"CardNumber", card}});
  EXPECT_EQ(reply.status, 200);
  EXPECT_EQ(client.Send("GET /" + card + " HTTP/1.0\r\n" + card + ": " + card + "\r\n\r\n").status, 411);
  serve.Signal(SIGTERM);
  ASSERT_EQ(serve.Wait(), 0);
  EXPECT_THAT(serve.Log(), HasSubstr("session 2"));
  for (const TestClient& one : {before, client}) {
    for (const std::string& secret : {card, one.connectionId, one.clientRac, one.serverRac, Base64(one.iv + one.key)}) {
      EXPECT_THAT(serve.Log(), Not(HasSubstr(secret)));
    }
  }
  EXPECT_THAT(serve.Log(), Not(HasSubstr(ready["key"].get<std::string>())));
}

TEST_F(Serving, MemoryHoldsNoSecretOfASessionThatHasEnded) {
  const std::string card = "CardNumber 4111-1111-1111-1111";
  Process serve({"serve", shop});
  const nlohmann::json ready = Ready(serve);
  TestClient client(ready["port"], ready["key"]);
  ASSERT_TRUE(client.Handshake());
  EXPECT_TRUE(serve.HoldsInMemory(client.clientRac)) << "the open session needs it, so the search itself fails";
  EXPECT_TRUE(serve.HoldsInMemory(client.key));
  EXPECT_EQ(client.Request("GetProductList", {{"GUID", sampleGuid}, {"CardNumber", card}}).status, 200);
  const std::string exported = client.iv + client.key;
  for (const std::string& secret :
       {client.clientRac, client.serverRac, FromBase64(client.clientRac).value(), FromBase64(client.serverRac).value(),
        exported, client.key, Base64(exported), card}) {
    EXPECT_FALSE(serve.HoldsInMemory(secret)) << secret.size() << " bytes, the client challenge being 64";
    EXPECT_FALSE(serve.HoldsInMemory(secret.substr(secret.size() / 2))) << "half of " << secret.size() << " bytes";
  }
}

TEST_F(Serving, MemoryHoldsNoCardNumberThatTheAdminPortShowsMasked) {
  const std::string card = "CardNumber 4111-1111-1111-1111";
  Process serve({"serve", shop, "--admin", "127.0.0.1:0"});
  const nlohmann::json ready = Ready(serve);
  TestClient client(ready["port"], ready["key"]);
  ASSERT_TRUE(client.Call("GetProductList", {{"GUID", sampleGuid}, {"CardNumber", card}}).has_value());
  EXPECT_THAT(AdminClient(ready["admin"]).Get("/requests").json.dump(), HasSubstr("CardNumber 41**-****-****-1111"));
  for (const std::string& secret : {card, client.clientRac, client.serverRac, client.key}) {
    EXPECT_FALSE(serve.HoldsInMemory(secret.substr(secret.size() / 2))) << "half of " << secret.size() << " bytes";
  }
}

TEST_F(Serving, LogHoldsNoTextThatTheServerDoesNotKnow) {
  const std::string cardAsGuid = "{41111111-1111-1111-0000-000000000000}";
  Process serve({"serve", shop, "--verbose"});
  const nlohmann::json ready = Ready(serve);
  TestClient client(ready["port"], ready["key"]);
  ASSERT_TRUE(client.Call("GetProductList", {{"GUID", cardAsGuid}}).has_value());
  ASSERT_TRUE(client.Call("JohnDoe", {{"GUID", sampleGuid}}).has_value());
  ASSERT_TRUE(client.Call("GetProductList", {{"GUID", sampleGuid}}).has_value());
  serve.Signal(SIGTERM);
  ASSERT_EQ(serve.Wait(), 0);
  EXPECT_THAT(serve.Log(), Not(HasSubstr("41111111")));
  EXPECT_THAT(serve.Log(), Not(HasSubstr("JohnDoe")));
  EXPECT_THAT(serve.Log(), HasSubstr("GetProductList for (unknown, 38 bytes): the catalogue has no application"));
  EXPECT_THAT(serve.Log(), HasSubstr("(unknown, 7 bytes): the server offers no service of this name"));
}

TEST_F(Serving, EachRequestIsOneLineOfLog) {
  Process serve({"serve", shop});
  const nlohmann::json ready = Ready(serve);
  TestClient client(ready["port"], ready["key"]);
  ASSERT_TRUE(client.Call("GetProductList", {{"GUID", sampleGuid}}).has_value());
  serve.Signal(SIGTERM);
  ASSERT_EQ(serve.Wait(), 0);
  const std::string log = serve.Log();
  EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 3) << log;
  EXPECT_THAT(serve.Log(), HasSubstr("handshake for GetProductList, opened session 1"));
  EXPECT_THAT(serve.Log(), HasSubstr(std::string("session 1, GetProductList for ") + sampleGuid + ": 4 products"));
}

TEST_F(Serving, LimitsOfTheCommandLineHold) {
  Process serve({"serve", shop, "--max-body", "100", "--max-head", "300", "--client-seconds", "5"});
  const nlohmann::json ready = Ready(serve);
  TestClient client(ready["port"], ready["key"]);
  EXPECT_EQ(client.Send(client.Head("/GetProductList", 101)).status, 413);
  EXPECT_EQ(client.Send(client.Head("/" + std::string(300, 'a'), 1)).status, 431);
}

TEST_F(Serving, SessionsHeldAreLimitedByTheCommandLine) {
  Process serve({"serve", shop, "--max-sessions", "1", "--session-seconds", "86400"});
  const nlohmann::json ready = Ready(serve);
  TestClient client(ready["port"], ready["key"]);
  EXPECT_TRUE(client.Handshake());
  client.NewSession();
  EXPECT_FALSE(client.Handshake());
}

TEST_F(Serving, AddressThatIsTakenIsToldInWords) {
  Process serve({"serve", shop});
  const std::string address = Ready(serve)["address"];
  EXPECT_THAT(WordsOfFailure({"serve", shop, "--listen", address}, 1), HasSubstr("Address already in use"));
}

TEST_F(Serving, AddressInAnotherFormIsToldInWords) {
  for (const char* address : {"x", "8080", "127.0.0.1", "127.0.0.1:", ":80", "127.0.0.1:65536", "127.0.0.1:x",
                              "localhost:0", "[127.0.0.1:0"}) {
    EXPECT_THAT(WordsOfFailure({"serve", shop, "--listen", address}, 2), HasSubstr("--listen needs a numeric address"));
    EXPECT_THAT(WordsOfFailure({"serve", shop, "--admin", address}, 2), HasSubstr("--admin needs a numeric address"));
  }
}

TEST_F(Serving, AdminPortIsToldInTheReadyLine) {
  Process serve({"serve", shop, "--admin", "127.0.0.1:0"});
  const nlohmann::json ready = Ready(serve);
  EXPECT_EQ(ready.size(), 6u);
  EXPECT_NE(ready["admin"], ready["port"]);
  const nlohmann::json state = AdminClient(ready["admin"]).Get("/state").json;
  EXPECT_EQ(state["requests"], 0);
  TestClient client(ready["port"], ready["key"]);
  ASSERT_TRUE(client.Handshake());
  EXPECT_EQ(AdminClient(ready["admin"]).Get("/state").json["sessions"], 1);
  EXPECT_EQ(AdminClient(ready["admin"]).Get("/state").json["requests"], 1);
  serve.Signal(SIGTERM);
  EXPECT_EQ(serve.Wait(), 0);
}

TEST_F(Serving, AdminPortListensOnLoopbackAddressesAlone) {
  EXPECT_THAT(WordsOfFailure({"serve", shop, "--admin", "0.0.0.0:0"}, 1), HasSubstr("0.0.0.0 is none"));
}

TEST_F(Serving, FaultsOfAFileAreAppliedFromTheStart) {
  WriteFile(folder / "faults.json", R"({"faults": [{"kind": "status", "at": "handshake", "code": 503}]})");
  Process serve({"serve", shop, "--faults", folder / "faults.json"});
  const nlohmann::json ready = Ready(serve);
  TestClient client(ready["port"], ready["key"]);
  const std::string body = client.HandshakeBody(client.HandshakeFields());
  EXPECT_EQ(client.Send(client.Head("/GetProductList", body.size()) + body).status, 503);
  EXPECT_TRUE(client.Handshake());
}

TEST_F(Serving, FaultsThatCannotBeReadAreToldWithFileAndPlace) {
  const std::string file = folder / "faults.json";
  EXPECT_THAT(WordsOfFailure({"serve", shop, "--faults", file}, 1), HasSubstr("cannot read " + file));
  WriteFile(file, R"({"faults": [{"kind": "close"}]})");
  EXPECT_THAT(WordsOfFailure({"serve", shop, "--faults", file}, 1),
              HasSubstr(file + ": faults[0]: \"bytes\" is missing"));
}

TEST_F(Serving, FolderInPlaceOfAFileIsToldInWords) {
  EXPECT_THAT(WordsOfFailure({"serve", shop, "--faults", shop}, 1),
              HasSubstr("cannot read " + shop + ": Is a directory"));
  for (const char* name : {"/catalogue.json", "/public.key", "/private.key"}) {
    std::filesystem::remove(shop + name);
    std::filesystem::create_directory(shop + name);
    EXPECT_THAT(WordsOfFailure({"serve", shop}, 1), HasSubstr("cannot read " + shop + name + ": Is a directory"));
  }
}

TEST_F(Program, FileOfManyPiecesIsReadWhole) {
  WriteFile(folder / "file", std::string(4096, 'a') + std::string(10000, 'b') + "c");
  EXPECT_EQ(sandbox::ReadFile(folder / "file"), FileText(folder / "file"));
  WriteFile(folder / "file", "");
  EXPECT_EQ(sandbox::ReadFile(folder / "file"), "");
}

TEST_F(Serving, CatalogueFaultIsToldWithFileAndPlace) {
  WriteFile(shop + "/catalogue.json", R"({"applications": [{"guid": "g", "products": [{"SKU": 1, "Name": "a^b"}]}]})");
  const std::string words = WordsOfFailure({"serve", shop}, 1);
  EXPECT_THAT(words, HasSubstr(shop + "/catalogue.json: applications[0].products[0].Name: "));
}

TEST_F(Serving, CatalogueThatIsGoneIsToldInWords) {
  std::filesystem::remove(shop + "/catalogue.json");
  EXPECT_THAT(WordsOfFailure({"serve", shop}, 1), HasSubstr("cannot read " + shop + "/catalogue.json: No such file"));
}

TEST_F(Serving, PrivateKeyThatIsNoneIsToldInWords) {
  WriteFile(shop + "/private.key", "nothing");
  EXPECT_THAT(WordsOfFailure({"serve", shop}, 1), HasSubstr("/private.key cannot be used: "));
}

TEST_F(Serving, PublicKeyOfAnotherPairIsToldInWords) {
  WriteFile(shop + "/public.key", "AAAA\n");
  EXPECT_THAT(WordsOfFailure({"serve", shop}, 1), HasSubstr("does not belong to private.key"));
}

}  // namespace
}  // namespace sandboxtest
