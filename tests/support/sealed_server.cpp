#include "support/sealed_server.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <optional>

#include "core/byte_buffer.h"
#include "crypto/message_digest.h"
#include "support/base64_text.h"
#include "support/rc5_message.h"

namespace kest::testing {
namespace {

constexpr std::uint32_t modulusBytes = 128;

std::string DerLength(std::size_t length) {
  if (length < 0x80) return std::string(1, static_cast<char>(length));
  if (length < 0x100) return {static_cast<char>(0x81), static_cast<char>(length)};
  return {static_cast<char>(0x82), static_cast<char>(length >> 8), static_cast<char>(length & 0xFF)};
}

std::string Der(char tag, const std::string& content) { return tag + DerLength(content.size()) + content; }

// What a sealed message says behind its digest, which must be that text's own.
std::string TextBehindDigest(const std::string& message) {
  const std::size_t digestLength = std::min<std::size_t>(28, message.size());
  const std::string text = message.substr(digestLength);
  EXPECT_EQ(SealedServer::DigestOf(text), message.substr(0, digestLength));
  return text;
}

std::string FieldOf(const std::string& text, const std::string& name) {
  const std::size_t at = text.find(name + ": ");
  if (at == std::string::npos) return {};
  const std::size_t start = at + name.size() + 2;
  return text.substr(start, text.find("\r\n", start) - start);
}

}  // namespace

SealedServer::SealedServer(os::System& target)
    : ForwardingSystem(target),
      answer([](SealedServer& server, const ServerRequest& request) { return server.AnswerHonestly(request); }) {}

std::string ServerRequest::Header(const std::string& name) const { return FieldOf(head, "\r\n" + name); }

std::string SealedServer::KeyText(std::uint32_t bytes, char last) {
  // Of full length and nothing else: nobody has to factor it.
  std::string modulus(bytes, '\x5A');
  modulus.front() = '\xC1';
  modulus.back() = last;
  const std::string key = Der(0x30, Der(0x02, std::string(1, '\0') + modulus) + Der(0x02, std::string(1, '\x01')));
  const std::string oid("\x2A\x86\x48\x86\xF7\x0D\x01\x01\x01", 9);
  const std::string algorithm = Der(0x30, Der(0x06, oid) + std::string("\x05\x00", 2));
  return ToBase64(Der(0x30, algorithm + Der(0x03, std::string(1, '\0') + key)));
}

std::string SealedServer::TextOf(const Fields& fields) {
  std::string text;
  for (const auto& field : fields) text += field.first + ": " + field.second + "\r\n";
  return text + "\r\n";
}

std::string SealedServer::DigestOf(const std::string& text) {
  String encoded;
  DigestText(String(text.data(), static_cast<std::uint32_t>(text.size())), sha1Descriptor).EncodeBase64(encoded);
  return encoded.Text();
}

std::string SealedServer::Http(const std::string& body, const std::string& statusLine) {
  return statusLine + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

std::string SealedServer::OpenHandshake(const ServerRequest& request) {
  const std::string blocks = FromBase64(request.body);
  std::string message;
  // With the exponent 1 a block enciphers to itself; its first byte is the zero that keeps it below the modulus.
  for (std::size_t at = 0; at + modulusBytes <= blocks.size(); at += modulusBytes) {
    message += blocks.substr(at + 1, modulusBytes - 1);
  }
  const std::size_t end = message.find('\0');
  EXPECT_NE(std::string::npos, end) << "the message's zero byte is sealed with it";
  EXPECT_EQ(std::string::npos, message.find_first_not_of('\0', end)) << "what follows it is zero";
  message.resize(std::min(message.size(), end));
  const std::string text = TextBehindDigest(message);
  exportedKey = FromBase64(FieldOf(text, "KEST-Auth-Client-Key"));
  clientRac = FieldOf(text, "KEST-Auth-Client-RAC");
  return text;
}

std::string SealedServer::OpenRequest(const ServerRequest& request) {
  std::string message = DecipherRc5(exportedKey, FromBase64(request.body));
  EXPECT_EQ(message.size() - 1, message.find('\0')) << "the message's zero byte is enciphered with it, and ends it";
  if (!message.empty()) message.pop_back();
  return TextBehindDigest(message);
}

std::string SealedServer::Seal(const std::string& message) { return Http(ToBase64(EncipherRc5(exportedKey, message))); }

std::string SealedServer::Reply(const Fields& fields, const std::function<void(std::string&)>& edit) {
  const std::string text = TextOf(fields);
  std::string message = DigestOf(text) + text;
  if (edit) edit(message);
  return Seal(message + '\0');
}

std::string SealedServer::AnswerHonestly(const ServerRequest& request) {
  const bool isHandshake = IsHandshake(request);
  if (isHandshake) OpenHandshake(request);
  Fields fields = {{"KEST-Auth-Client-RAC", clientRac}, {"KEST-Auth-Server-RAC", serverRac}};
  if (isHandshake) fields.emplace_back("KEST-Auth-CID", connectionId);
  for (const auto& added : isHandshake ? handshakeFields : replyFields) {
    const auto same = [&added](const auto& field) { return field.first == added.first; };
    const auto found = isHandshake ? std::find_if(fields.begin(), fields.end(), same) : fields.end();
    if (found != fields.end()) {
      found->second = added.second;
    } else {
      fields.push_back(added);
    }
  }
  return Reply(fields);
}

os::Socket SealedServer::socket(int, int, int) {
  conversations[nextSocket] = Conversation();
  return nextSocket++;
}

int SealedServer::connect(os::Socket socket, const os::SocketAddress* address, int) {
  if (address->address == 0xFFFFFFFF) return -1;  // what no address turns into; nobody answers there
  std::uint8_t bytes[4];
  std::memcpy(bytes, &address->address, sizeof bytes);
  Conversation& conversation = conversations.at(socket);
  for (int i = 0; i < 4; ++i) conversation.host += (i != 0 ? "." : "") + std::to_string(bytes[i]);
  std::uint8_t port[2];
  std::memcpy(port, &address->port, sizeof port);
  conversation.port = static_cast<std::uint16_t>(port[0] << 8 | port[1]);
  return 0;
}

int SealedServer::send(os::Socket socket, const void* bytes, int length, int) {
  Conversation& conversation = conversations.at(socket);
  conversation.received.append(static_cast<const char*>(bytes), static_cast<std::size_t>(length));
  return length;
}

int SealedServer::recv(os::Socket socket, void* bytes, int capacity, int) {
  Conversation& conversation = conversations.at(socket);
  if (!conversation.isAnswered) Answer(conversation);
  const std::size_t count = std::min({static_cast<std::size_t>(capacity), pieceSize,
                                      conversation.reply.size() - conversation.sent});
  std::memcpy(bytes, conversation.reply.data() + conversation.sent, count);
  conversation.sent += count;
  return static_cast<int>(count);
}

void SealedServer::Answer(Conversation& conversation) {
  conversation.isAnswered = true;
  const std::size_t end = conversation.received.find("\r\n\r\n");
  if (end == std::string::npos) return;
  ServerRequest request;
  request.head = conversation.received.substr(0, end + 4);
  request.body = conversation.received.substr(end + 4);
  request.host = conversation.host;
  request.port = conversation.port;
  request.number = static_cast<int>(requests.size()) + 1;
  requests.push_back(request);
  // What the server itself takes is no part of what is counted or failed in the library.
  std::optional<SystemInForce> own;
  if (isAlone) own.emplace(os::Native());
  conversation.reply = answer(*this, request);
}

int SealedServer::setsockopt(os::Socket, int, int, const void*, int) { return 0; }

int SealedServer::closesocket(os::Socket socket) {
  if (conversations.erase(socket) == 1) return 0;
  ++wrongCloses;
  return -1;
}

const os::HostEntry* SealedServer::gethostbyname(const char* name) {
  lookedUp.push_back(name);
  addresses[1] = addressCount > 1 ? secondAddress : nullptr;
  return &hostEntry;
}

}  // namespace kest::testing
