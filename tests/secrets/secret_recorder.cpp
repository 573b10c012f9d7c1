// Runs every scenario with an honest or dishonest server in this process and writes down what its secrets were, as
// hashes, and what the server answered, masked. The process that searches its memory runs the same calls in the same
// world, and never had these secrets but by the library's hand.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <utility>

#include "secrets/derived_secrets.h"
#include "secrets/scenarios.h"
#include "secrets/secret_windows.h"
#include "support/base64_text.h"
#include "support/memory_registry.h"
#include "support/rc5_message.h"
#include "support/sealed_server.h"
#include "transport/rsa_sealing.h"

namespace kest::testing {
namespace {

[[noreturn]] void Fail(const std::string& what) {
  std::cerr << "secret_recorder: " << what << "\n";
  std::exit(1);
}

std::string FieldOf(const std::string& text, const std::string& name) {
  const std::size_t at = text.find(name + ": ");
  if (at == std::string::npos) Fail("no field " + name);
  const std::size_t begin = at + name.size() + 2;
  return text.substr(begin, text.find("\r\n", begin) - begin);
}

std::string BodyOf(const std::string& http) { return http.substr(http.find("\r\n\r\n") + 4); }

class Recorder {
 public:
  explicit Recorder(const Scenario& recorded, std::uint64_t seed) : scenario(recorded), entropy(seed), server(entropy) {
    entropy.onDrawn = [this](bool isScreen, const void* bytes, std::uint32_t length) {
      (isScreen ? screens : systemBytes).emplace_back(static_cast<const char*>(bytes), length);
    };
    server.serverRac = "7hK2mQpX9vLwRz4tYc8nBf3jDs6gAe1uIo5PkHyWxNqTbVmCrGlJdZaFiUeMoS0E";
    server.replyFields = {{"KEST-Error", "0"},        {"KEST-TxN", "T-7"},        {"KEST-TotalAmount", "21.95"},
                          {"KEST-TaxAmount", "2.00"}, {"KEST-Merchant", "Shop"},  {"KEST-CCard-Number", "49**0016"},
                          {"KEST-User-IDEx", "me"},   {"Licence", "JQ7XW-4M2PD-9RK8T-CV3HN-6LBZF"},
                          {"KEST-Product", "Name:Tool^Price:19.95^Notes:kept apart from all the other wares"}};
    server.answer = [this](SealedServer&, const ServerRequest& request) { return Answer(request); };
  }

  void Run() {
    const SystemInForce inForce(registry);
    ConfigureServer(1);
    ConfigureProxy(scenario);
    HostCall call(scenario.call);
    const bool isDone = call.Run();
    const bool isMeantToBe = scenario.fault == Fault::none || scenario.fault == Fault::refused;
    if (isDone != isMeantToBe) Fail(std::string(scenario.name) + " had another outcome");
    AddEverything();
  }

  void Write() {
    // The names of fields are no secrets, and hosts hold some of them.
    for (const char* name : {"KEST-Auth-Client-Key", "KEST-Auth-Client-RAC", "KEST-Auth-Server-RAC", "KEST-Auth-CID",
                             "KEST-Protocol-Version"}) {
      secrets.Remove(name);
    }
    std::ofstream file(SecretsFile(scenario), std::ios::binary);
    file << replies.size() << "\n";
    for (const std::string& reply : replies) {
      file << reply.size() << "\n";
      for (std::size_t i = 0; i < reply.size(); ++i) file.put(Masked(reply[i], i));
      file << "\n";
    }
    secrets.Write(file);
    if (!file.flush()) Fail("cannot write " + SecretsFile(scenario));
  }

 private:
  std::string Answer(const ServerRequest& request) {
    const bool isHandshake = server.IsHandshake(request);
    if (isHandshake) {
      handshakeText = server.OpenHandshake(request);
      exportedKey = FromBase64(FieldOf(handshakeText, "KEST-Auth-Client-Key"));
    } else {
      requestText = server.OpenRequest(request);
      sealedRequest = request.body;
    }
    const bool isMeant = scenario.exchange == (isHandshake ? 1 : 2);
    const bool isHonest = !isMeant || scenario.road == Road::redirected;
    const bool isRedirect = isMeant && scenario.road == Road::redirected && !std::exchange(isRedirected, true);
    const std::string reply = isRedirect ? SealedServer::Http("", "HTTP/1.0 302 Found\r\nLocation: /elsewhere")
                              : isHonest ? server.Reply(FieldsOf(isHandshake), Note())
                                         : WrongReply(isHandshake);
    replies.push_back(reply);
    return reply;
  }

  Fields FieldsOf(bool isHandshake) const {
    Fields fields = {{"KEST-Auth-Client-RAC", server.clientRac}, {"KEST-Auth-Server-RAC", server.serverRac}};
    if (isHandshake) {
      fields.emplace_back("KEST-Auth-CID", server.connectionId);
    } else {
      fields.insert(fields.end(), server.replyFields.begin(), server.replyFields.end());
    }
    return fields;
  }

  // Keeps a message on its way to being sealed.
  std::function<void(std::string&)> Note() {
    return [this](std::string& message) { replyMessages.push_back(message); };
  }

  std::string WrongReply(bool isHandshake) {
    Fields fields = FieldsOf(isHandshake);
    if (scenario.fault == Fault::badClientChallenge) fields[0].second.back() ^= 1;
    if (scenario.fault == Fault::badServerChallenge) fields[1].second.back() ^= 1;
    if (scenario.fault == Fault::badDigest) {
      return server.Reply(fields, [this](std::string& message) {
        message[3] ^= 1;
        replyMessages.push_back(message);
      });
    }
    std::string reply = server.Reply(fields, Note());
    if (scenario.fault == Fault::badPadding) return server.Http(ToBase64(WithBadPadding()));
    if (scenario.fault == Fault::badCharacter) reply[reply.size() - 20] = '!';
    if (scenario.fault == Fault::cut) reply.resize(reply.size() - 100);
    if (scenario.fault == Fault::status) reply.replace(reply.find("200"), 3, "400");
    return reply;
  }

  std::string WithBadPadding() const {
    std::string message = replyMessages.back() + '\0';
    message.resize((message.size() + 8) / 8 * 8, '\0');
    return EncipherRc5(exportedKey, message).substr(0, message.size());
  }

  void AddSealed(const std::string& name, const std::string& base64) {
    secrets.Add(name + " in base64", base64);
    secrets.Add(name, FromBase64(base64));
  }

  void AddHandshake() {
    const std::string message = SealedServer::DigestOf(handshakeText) + handshakeText;
    secrets.Add("handshake text", message);
    ConfigureServer(usualExponent);
    const ByteBuffer sealed = SealUnderServerKey(ByteBuffer(message.c_str(), static_cast<std::uint32_t>(message.size() + 1)));
    AddSealed("sealed handshake", ToBase64(std::string(reinterpret_cast<const char*>(sealed.Bytes()), sealed.Length())));
    std::string blocks;
    for (std::size_t at = 0; at < message.size() + 1; at += 127) blocks += '\0' + message.substr(at, 127);
    blocks.resize((blocks.size() + 127) / 128 * 128);
    AddRsaBlocks(secrets, blocks);
    AddSha1(secrets, handshakeText + '\0');
  }

  void AddKeys() {
    secrets.Add("session key", exportedKey);
    AddKeyWords(secrets, exportedKey.substr(8));
    const std::size_t drawn[] = {136, 48, 0};
    std::string generated[3];
    for (std::size_t i = 0; i < systemBytes.size() && i < 3; ++i) {
      const auto length = static_cast<std::uint16_t>(systemBytes[i].size());
      generated[i] = AddGenerator(secrets, AddEntropy(secrets, screens[i], systemBytes[i], length), drawn[i]);
    }
    // What is looked for is what there was.
    if (exportedKey != generated[0].substr(128) + generated[0].substr(0, 128)) Fail("this is not the key's seed");
    if (server.clientRac != ToBase64(generated[1])) Fail("this is not the challenge's seed");
    secrets.Add("client challenge", generated[1]);
    secrets.Add("held: reply: client challenge", server.clientRac);
    secrets.Add("held: reply: server challenge", server.serverRac);
  }

  // The texts last: a window of theirs that is another secret's too keeps the other's name.
  void AddEverything() {
    AddKeys();
    AddHandshake();
    AddSealed("sealed request", sealedRequest);
    for (const std::string& reply : replies) AddSealed("sealed reply", BodyOf(reply));
    if (!requestText.empty()) AddSha1(secrets, requestText + '\0');
    for (const std::string& message : replyMessages) AddSha1(secrets, message.substr(28) + '\0');
    secrets.Add("held: request", SealedServer::DigestOf(requestText) + requestText);
    for (const std::string& message : replyMessages) secrets.Add("held: reply", message);
  }

  const Scenario& scenario;
  KnownEntropy entropy;
  SealedServer server;
  MemoryRegistry registry{server};
  SecretWindows secrets;
  std::vector<std::string> screens, systemBytes, replies, replyMessages;
  std::string handshakeText, exportedKey, requestText, sealedRequest;
  bool isRedirected = false;
};

}  // namespace
}  // namespace kest::testing

int main() {
  using namespace kest::testing;
  std::uint64_t seed = 0;
  for (const Scenario& scenario : Scenarios()) {
    Recorder recorder(scenario, ++seed);
    recorder.Run();
    recorder.Write();
  }
  return 0;
}
