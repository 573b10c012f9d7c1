#include "transport/server_settings.h"

#include "transport/socket_startup.h"

namespace kest {
namespace {

ServerSettings settings;

}  // namespace

const ServerSettings& Settings() { return settings; }

bool SetServer(const char* host, std::uint16_t port, const char* keyText) {
  settings.serverPublicKey.Clear();
  // Without sockets every request fails; whether the key is good is another question.
  SocketStartup();
  settings.server.host = host;
  settings.server.port = port;
  return LoadServerPublicKey(keyText);
}

bool LoadServerPublicKey(const String& keyText) {
  settings.serverPublicKey.Clear();
  ByteBuffer der;
  return der.DecodeBase64(keyText) && settings.serverPublicKey.LoadPublicKey(der);
}

void SetProxy(const String& host, std::uint16_t port) {
  settings.proxy.host = host;
  settings.proxy.port = port;
}

}  // namespace kest
