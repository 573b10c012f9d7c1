#include "transport/secure_exchange.h"

#include "transport/auth_session.h"
#include "transport/body_source.h"
#include "transport/http_connection.h"
#include "transport/http_request.h"
#include "transport/server_settings.h"

namespace kest {
namespace {

constexpr char connectionIdName[] = "KEST-Auth-CID";
constexpr std::uint16_t statusOk = 200;

// What the messages of one exchange have in common.
struct Exchange {
  AuthSession session;
  HttpUrl url;  // its host is the current one: a reply's "KEST-Host" replaces it
};

HttpRequest BuildRequest(const Exchange& exchange, const String& sealed) {
  String length;
  length.AppendUnsigned(sealed.Length());
  HttpRequest request;  // "GET", deliberately: it carries a body all the same
  request.url = exchange.url;
  request.headers.Add("Accept", "*/*");
  request.headers.Add("Host", exchange.url.host);
  request.headers.Add("Content-Length", length);
  request.headers.Add("Proxy-Connection", "Keep-Alive");
  if (!exchange.session.ConnectionId().IsEmpty()) {
    request.headers.Set(connectionIdName, exchange.session.ConnectionId());
  }
  return request;
}

// Sends a sealed text and reads the body of the answer. Empty on any failure; the connection is closed either way.
String Send(const Exchange& exchange, const String& sealed) {
  HttpRequest request = BuildRequest(exchange, sealed);
  TextSource source(sealed);
  HttpConnection connection;
  connection.proxyHost = Settings().proxy.host;
  connection.proxyPort = Settings().proxy.port;
  String body;
  if (connection.Run(request, source) && connection.reply.status == statusOk) body = connection.ReadBody();
  connection.Close();
  return body;
}

// Seals and sends one message and opens its reply.
bool Converse(Exchange& exchange, NameValueList& fields, bool isHandshake, NameValueList& reply) {
  const String sealed = exchange.session.SealMessage(fields, isHandshake);
  if (sealed.IsEmpty()) return false;
  const String body = Send(exchange, sealed);
  if (body.IsEmpty() || !exchange.session.OpenMessage(body, reply)) return false;
  const String host = reply.Get("KEST-Host");
  if (!host.IsEmpty()) exchange.url.host = host;
  return true;
}

bool Handshake(Exchange& exchange) {
  exchange.session.SetConnectionId(String());
  const String key = exchange.session.ExportedKey();
  if (key.IsEmpty()) return false;
  NameValueList fields;
  fields.Add("KEST-Auth-Client-Key", key);
  NameValueList reply;
  if (!Converse(exchange, fields, true, reply)) return false;
  exchange.session.SetConnectionId(reply.Get(connectionIdName));
  return true;
}

}  // namespace

bool SecureExchange(const String& serviceName, NameValueList& request, NameValueList& reply) {
  Exchange exchange;
  exchange.url = Settings().server;
  exchange.url.path = "/";
  exchange.url.path.Append(serviceName);
  if (!exchange.session.Begin()) return false;
  return Handshake(exchange) && Converse(exchange, request, false, reply);
}

}  // namespace kest
