// One connection of the HTTP server: reads a request, has it checked and answered, writes the reply, closes. It keeps
// itself alive while an operation is under way. Belongs to the thread that runs the server; included by the two files
// of the HTTP server alone, because Beast is slow to compile.
#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "http_reply.h"
#include "http_server.h"
#include "refusal.h"

namespace sandbox {

/// What the connections of a server share.
struct ConnectionContext {
  CommerceServer& commerceServer;
  HttpLimits limits;
  std::shared_ptr<spdlog::logger> log;
  FaultTable* faults;    // null: none are ever applied
  RequestLog* requests;  // null: requests are not remembered
  bool stopping = false;
  std::size_t bodiesHeld = 0;   // bytes announced in bodies that are not small and not answered yet
  std::size_t repliesHeld = 0;  // bytes of replies that are not small and not taken yet
};

class HttpConnection : public std::enable_shared_from_this<HttpConnection> {
 public:
  using Tcp = boost::asio::ip::tcp;
  using Error = boost::system::error_code;

  /// Takes the connected socket; `whenOver` is called once, when the connection is destroyed.
  HttpConnection(Tcp::socket connected, ConnectionContext& shared, std::function<void(HttpConnection*)> whenOver);
  ~HttpConnection();

  /// Begins to wait for the request.
  void Start();

  /// Closes the connection when nothing of a request has arrived on it yet.
  void CloseIfIdle();

  /// Sends a reply that a fault delays at once.
  void EndDelay();

 private:
  void ReadHead();
  void OnHead(Error error, std::size_t length);
  bool HoldBody();
  void HoldReply();
  void GiveBack();
  void ReadBody();
  void OnBody(Error error);
  void FindFaults();
  void AnswerRequest();
  void AnswerStatus(const Fault& fault);
  void Refuse(Refusal refusal);
  void RefuseIncomplete(Error error);
  void Reply(HttpReply toSend, const Fault* fault = nullptr);
  void Send();
  void Drain();
  void StartTimer(std::chrono::milliseconds time);
  void OnTimer();
  std::string About() const;
  std::string FaultsApplied();
  void Remember(int status);

  using RequestParser = boost::beast::http::request_parser<boost::beast::http::string_body>;

  Tcp::socket socket;
  boost::asio::steady_timer timer;
  boost::asio::steady_timer delay;
  ConnectionContext& context;
  const std::function<void(HttpConnection*)> over;
  const std::chrono::steady_clock::time_point began;
  std::string peer;

  std::string received;  // what the reading of the head took from the socket: the head and perhaps some of the body
  std::optional<RequestHead> head;
  boost::beast::flat_buffer buffer;
  RequestParser parser;
  FaultPlan plan;
  std::optional<RequestRecord> record;  // nothing when requests are not remembered
  ReplyBytes reply;
  std::size_t bodyHeld = 0;   // this connection's parts of the context's
  std::size_t replyHeld = 0;

  bool begun = false;     // something has arrived
  bool replying = false;  // the request is decided; from here on a timeout just closes
  bool timedOut = false;
};

}  // namespace sandbox
