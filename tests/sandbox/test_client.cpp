#include "sandbox/test_client.h"

#include <cryptopp/base64.h>
#include <cryptopp/filters.h>
#include <cryptopp/modes.h>
#include <cryptopp/osrng.h>
#include <cryptopp/rc5.h>
#include <cryptopp/rsa.h>
#include <cryptopp/sha.h>

namespace sandboxtest {
namespace {

using Rc5Cbc = CryptoPP::CBC_Mode<CryptoPP::RC5>;
using Filter = CryptoPP::StreamTransformationFilter;
using Padding = CryptoPP::BlockPaddingSchemeDef::BlockPaddingScheme;

const unsigned char* Bytes(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

template <typename Direction>
std::string RunRc5(const std::string& input, const std::string& key, const std::string& iv,
                   Padding padding = Padding::PKCS_PADDING) {
  Direction cipher;
  const CryptoPP::ConstByteArrayParameter ivParameter(Bytes(iv), iv.size());
  cipher.SetKey(Bytes(key), key.size(),
                CryptoPP::MakeParameters(CryptoPP::Name::Rounds(), 20)(CryptoPP::Name::IV(), ivParameter));
  std::string output;
  CryptoPP::StringSource source(input, true, new Filter(cipher, new CryptoPP::StringSink(output), padding));
  return output;
}

Fields ParseFields(const std::string& text) {
  Fields fields;
  std::size_t at = 0;
  for (std::size_t end = text.find("\r\n"); end != std::string::npos && end > at; end = text.find("\r\n", at)) {
    const std::string line = text.substr(at, end - at);
    const std::size_t colon = line.find(": ");
    fields.emplace_back(line.substr(0, colon), colon == std::string::npos ? "" : line.substr(colon + 2));
    at = end + 2;
  }
  return fields;
}

}  // namespace

std::string Base64(const std::string& bytes) {
  std::string text;
  CryptoPP::StringSource source(bytes, true, new CryptoPP::Base64Encoder(new CryptoPP::StringSink(text), false));
  return text;
}

std::optional<std::string> FromBase64(const std::string& text) {
  constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";
  if (text.find_first_not_of(alphabet) != std::string::npos || text.size() % 4 != 0) return std::nullopt;
  std::string bytes;
  CryptoPP::StringSource source(text, true, new CryptoPP::Base64Decoder(new CryptoPP::StringSink(bytes)));
  return bytes;
}

std::string Sha1(const std::string& bytes) {
  std::string digest(20, '\0');
  CryptoPP::SHA1().CalculateDigest(reinterpret_cast<unsigned char*>(digest.data()), Bytes(bytes), bytes.size());
  return digest;
}

std::string RandomBytes(std::size_t length) {
  std::string bytes(length, '\0');
  CryptoPP::OS_GenerateRandomBlock(false, reinterpret_cast<unsigned char*>(bytes.data()), length);
  return bytes;
}

std::string Value(const Fields& fields, const std::string& name) {
  for (const auto& [fieldName, value] : fields) {
    if (fieldName == name) return value;
  }
  return "(absent)";
}

void Replace(Fields& fields, const std::string& name, const std::string& value) {
  for (auto& [fieldName, fieldValue] : fields) {
    if (fieldName == name) fieldValue = value;
  }
}

HttpReply ReadReply(Socket& socket) {
  bool orderly = false;
  const std::string bytes = socket.ReadToEnd(orderly);
  HttpReply reply;
  const std::size_t head = bytes.find("\r\n\r\n");
  const std::size_t line = bytes.find("\r\n");
  if (!orderly || head == std::string::npos || bytes.rfind("HTTP/1.0 ", 0) != 0) return reply;
  reply.statusLine = bytes.substr(0, line);
  reply.headers = line == head ? Fields() : ParseFields(bytes.substr(line + 2, head - line));
  reply.body = bytes.substr(head + 4);
  if (Value(reply.headers, "Content-Length") == std::to_string(reply.body.size())) {
    reply.status = std::stoi(reply.statusLine.substr(9));
  }
  return reply;
}

TestClient::TestClient(std::uint16_t serverPort, const std::string& keyText)
    : port(serverPort), publicKey(FromBase64(keyText).value()) {
  NewSession();
}

void TestClient::NewSession() {
  iv = RandomBytes(8);
  key = RandomBytes(128);
  clientRac = Base64(RandomBytes(48));
  serverRac.clear();
  connectionId.clear();
}

Fields TestClient::HandshakeFields() const {
  return {{"KEST-Auth-Client-Key", Base64(iv + key)},
          {"KEST-Auth-Client-RAC", clientRac},
          {"KEST-Auth-Server-RAC", ""},
          {"KEST-Protocol-Version", "1.1"}};
}

Fields TestClient::RequestFields(const std::string& service, const Fields& own) const {
  Fields fields = own;
  fields.emplace_back("KEST-Service", service);
  fields.emplace_back("KEST-Auth-Client-RAC", clientRac);
  fields.emplace_back("KEST-Auth-Server-RAC", serverRac);
  fields.emplace_back("KEST-Protocol-Version", "1.1");
  return fields;
}

std::string TestClient::HeaderBlock(const Fields& fields) {
  std::string text;
  for (const auto& [name, value] : fields) text += name + ": " + value + "\r\n";
  return text + "\r\n";
}

std::string TestClient::WithDigest(const std::string& text) {
  const std::string digested = text + '\0';
  return Base64(Sha1(digested)) + text;
}

std::string TestClient::SealForServer(const std::string& messageWithZero) const {
  CryptoPP::RSA::PublicKey rsa;
  CryptoPP::StringSource source(publicKey, true);
  rsa.Load(source);
  const std::size_t length = rsa.GetModulus().ByteCount();
  std::string sealed;
  for (std::size_t at = 0; at < messageWithZero.size(); at += length - 1) {
    std::string block = '\0' + messageWithZero.substr(at, length - 1);
    block.resize(length, '\0');
    std::string result(length, '\0');
    rsa.ApplyFunction(CryptoPP::Integer(Bytes(block), length))
        .Encode(reinterpret_cast<unsigned char*>(result.data()), length);
    sealed += result;
  }
  return Base64(sealed);
}

std::string TestClient::SealForSession(const std::string& messageWithZero) const {
  return Base64(RunRc5<Rc5Cbc::Encryption>(messageWithZero, key, iv));
}

std::string TestClient::HandshakeBody(const Fields& fields) const {
  return SealForServer(WithDigest(HeaderBlock(fields)) + '\0');
}

std::string TestClient::RequestBody(const Fields& fields) const {
  return SealForSession(WithDigest(HeaderBlock(fields)) + '\0');
}

std::string TestClient::Head(const std::string& path, std::size_t bodyLength) const {
  std::string head = "GET " + path +
                     " HTTP/1.0\r\nAccept: */*\r\nHost: 127.0.0.1\r\nContent-Length: " + std::to_string(bodyLength) +
                     "\r\nProxy-Connection: Keep-Alive\r\n";
  if (!connectionId.empty()) head += "KEST-Auth-CID: " + connectionId + "\r\n";
  return head + "\r\n";
}

HttpReply TestClient::Send(const std::string& bytes) const {
  Socket socket(port);
  if (!socket.Connected()) return {};
  // A server that refuses early may stop reading, so a send that fails is no failure while the reply arrives.
  socket.Send(bytes);
  return ReadReply(socket);
}

std::string TestClient::Decipher(const std::string& body) const {
  return RunRc5<Rc5Cbc::Decryption>(FromBase64(body).value(), key, iv);
}

std::string TestClient::DecipherBlocks(const std::string& body) const {
  return RunRc5<Rc5Cbc::Decryption>(FromBase64(body).value(), key, iv, Padding::NO_PADDING);
}

std::optional<Fields> TestClient::Open(const std::string& body) const {
  const std::optional<std::string> sealed = FromBase64(body);
  if (!sealed || sealed->empty() || sealed->size() % 8 != 0) return std::nullopt;
  std::string message;
  try {
    message = RunRc5<Rc5Cbc::Decryption>(*sealed, key, iv);
  } catch (const CryptoPP::InvalidCiphertext&) {
    return std::nullopt;
  }
  if (message.size() < 29 || message.find('\0') != message.size() - 1) return std::nullopt;
  const std::string text = message.substr(28, message.size() - 29);
  if (WithDigest(text) + '\0' != message) return std::nullopt;
  return ParseFields(text);
}

bool TestClient::Handshake(const std::string& service) {
  const std::string body = HandshakeBody(HandshakeFields());
  const HttpReply reply = Send(Head("/" + service, body.size()) + body);
  if (reply.status != 200) return false;
  const std::optional<Fields> fields = Open(reply.body);
  if (!fields || Value(*fields, "KEST-Auth-Client-RAC") != clientRac) return false;
  serverRac = Value(*fields, "KEST-Auth-Server-RAC");
  connectionId = Value(*fields, "KEST-Auth-CID");
  return serverRac.size() == 64 && connectionId != "(absent)" && !connectionId.empty();
}

HttpReply TestClient::Request(const std::string& service, const Fields& own) const {
  const std::string body = RequestBody(RequestFields(service, own));
  return Send(Head("/" + service, body.size()) + body);
}

std::optional<Fields> TestClient::Call(const std::string& service, const Fields& own) {
  NewSession();
  if (!Handshake(service)) return std::nullopt;
  const HttpReply reply = Request(service, own);
  if (reply.status != 200) return std::nullopt;
  const std::optional<Fields> fields = Open(reply.body);
  if (!fields || Value(*fields, "KEST-Auth-Client-RAC") != clientRac) return std::nullopt;
  if (Value(*fields, "KEST-Auth-Server-RAC") != serverRac) return std::nullopt;
  return fields;
}

}  // namespace sandboxtest
