// One HTTP exchange after another with a server or through a proxy: sending a request, reading the reply's head,
// keeping the connection or not, and the further attempts that redirects and retry codes ask for. It owns its socket
// and closes it when it is destroyed. An HttpConnection belongs to one thread at a time; it blocks without a time-out.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/memory.h"
#include "core/string.h"
#include "transport/body_source.h"
#include "transport/character_reader.h"
#include "transport/http_reply.h"
#include "transport/http_request.h"
#include "transport/socket_connection.h"

namespace kest {

class HttpConnection {
 public:
  HttpConnection() = default;
  HttpConnection(const HttpConnection&) = delete;
  HttpConnection& operator=(const HttpConnection&) = delete;

  // The virtual operations stand in the order of their slots.

  // Closes the socket as the system does it by itself; no later exchange reuses it. The destructor does the same.
  virtual void Close();
  virtual ~HttpConnection();

  static void* operator new(std::size_t bytes) { return Allocate(bytes); }
  static void operator delete(void* block) noexcept { Release(block); }

  // Sends `request` with `body` and reads the head of the reply into `reply`, whose flags `handleStatus` and `noReply`
  // the caller may set before. True when a head was read (or none was wanted) and no step failed; the status is then in
  // `reply`, whatever it is, and the body is still to be read. False, and closed, when connecting, sending or reading
  // failed. `request` is changed by what further attempts called for: its URL by redirects, its "Content-Length" by a
  // 411; its proxy is set from proxyHost and proxyPort, and by a 305 for this run only. A server may ask for the next
  // attempt without end by 411 or 305: only redirects and time-outs are counted, five of each. A redirect to another
  // scheme is fetched by plain HTTP too. Throws
  // Qor::MemoryException, and is closed, when there is no memory.
  bool Run(HttpRequest& request, BodySource& body);

  // Reads the body of the last reply, by its "Content-Length": empty when there is none, when it was read before or
  // when it cannot be read whole. Throws Qor::MemoryException, and is closed, when there is no memory.
  String ReadBody();

  HttpReply reply;
  String proxyHost;             // empty: direct
  std::uint16_t proxyPort = 0;  // 0 means 80

 private:
  bool RunAttempts(HttpRequest& request, BodySource& body);
  bool Open(const HttpRequest& request);
  bool SendHead(const HttpRequest& request);
  bool ReadHead(const HttpRequest& request);

  SocketConnection socket;
  ConnectionReader reader{socket};
  String connectedHost;
  std::uint16_t connectedPort = 0;
  bool hasUnreadBody = false;
};

}  // namespace kest
