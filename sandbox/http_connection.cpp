#include "http_connection.h"

#include <spdlog/spdlog.h>

#include <array>
#include <boost/asio/buffer.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/status.hpp>
#include <utility>

#include "log_text.h"
#include "masking.h"
#include "server_limits.h"

namespace sandbox {
namespace {

namespace asio = boost::asio;
namespace http = boost::beast::http;

constexpr std::chrono::milliseconds cancelAgain{20};

// Tells of a head that CheckHead has passed and that still fails the parser, where only the parser looks.
bool IsMalformed(const boost::system::error_code& error) {
  const bool fromParser = error.category() == make_error_code(http::error::bad_field).category();
  return fromParser && error != http::error::partial_message && error != http::error::end_of_stream;
}

std::string ReasonOf(int status) {
  const auto known = http::int_to_status(static_cast<unsigned>(status));
  const auto reason = http::obsolete_reason(known);
  return known == http::status::unknown ? "Unknown" : std::string(reason.data(), reason.size());
}

}  // namespace

HttpConnection::HttpConnection(Tcp::socket connected, ConnectionContext& shared,
                               std::function<void(HttpConnection*)> whenOver)
    : socket(std::move(connected)),
      timer(socket.get_executor()),
      delay(socket.get_executor()),
      context(shared),
      over(std::move(whenOver)),
      began(std::chrono::steady_clock::now()) {
  Error ignored;
  const Tcp::endpoint end = socket.remote_endpoint(ignored);
  peer = end.address().to_string() + ":" + std::to_string(end.port());
  if (context.requests) record.emplace();
}

HttpConnection::~HttpConnection() {
  GiveBack();
  over(this);
}

void HttpConnection::Start() {
  StartTimer(context.limits.clientTime);
  socket.async_wait(Tcp::socket::wait_read, [self = shared_from_this()](Error error) {
    if (error) return self->RefuseIncomplete(error);
    self->begun = true;
    self->ReadHead();
  });
}

void HttpConnection::CloseIfIdle() {
  Error error;
  if (begun || socket.available(error) > 0) return;
  socket.cancel(error);
}

void HttpConnection::EndDelay() {
  delay.cancel();
}

void HttpConnection::ReadHead() {
  asio::async_read_until(socket, asio::dynamic_buffer(received, context.limits.maxHead), "\r\n\r\n",
                         [self = shared_from_this()](Error error, std::size_t length) { self->OnHead(error, length); });
}

void HttpConnection::OnHead(Error error, std::size_t length) {
  if (error == asio::error::not_found) return Refuse(Refusal::HeadTooLarge);
  if (error) return RefuseIncomplete(error);
  try {
    head = CheckHead(std::string_view(received).substr(0, length));
  } catch (const Refused& refused) {
    return Refuse(refused.refusal);
  }
  if (head->contentLength > context.limits.maxBody) return Refuse(Refusal::BodyTooLarge);
  if (!HoldBody()) return Refuse(Refusal::BodiesTooLarge);
  context.log->debug("{}: head read, {} bytes of body announced", About(), head->contentLength);
  ReadBody();
}

// A body is counted by what is announced, because afterwards it would be too late to refuse it.
bool HttpConnection::HoldBody() {
  if (head->contentLength <= smallBody) return true;
  if (context.bodiesHeld + head->contentLength > bodiesAtOnce * context.limits.maxBody) return false;
  bodyHeld = head->contentLength;
  context.bodiesHeld += bodyHeld;
  return true;
}

// From here on the reply stays in memory in place of the body.
void HttpConnection::HoldReply() {
  GiveBack();
  std::string().swap(parser.get().body());
  if (reply.body.size() <= smallBody) return;
  replyHeld = reply.body.size();
  context.repliesHeld += replyHeld;
}

void HttpConnection::GiveBack() {
  context.bodiesHeld -= std::exchange(bodyHeld, 0);
  context.repliesHeld -= std::exchange(replyHeld, 0);
}

void HttpConnection::ReadBody() {
  buffer.commit(asio::buffer_copy(buffer.prepare(received.size()), asio::buffer(received)));
  parser.header_limit(static_cast<std::uint32_t>(context.limits.maxHead));
  parser.body_limit(context.limits.maxBody);
  http::async_read(socket, buffer, parser,
                   [self = shared_from_this()](Error error, std::size_t) { self->OnBody(error); });
}

void HttpConnection::OnBody(Error error) {
  if (error) return IsMalformed(error) ? Refuse(Refusal::HeadNotHttp) : RefuseIncomplete(error);
  FindFaults();
  // Before the look at what follows the body: a client that is told 411 announces no body and sends it all the same.
  const Fault* fault = plan.Main();
  if (fault && fault->kind == FaultKind::Status) return AnswerStatus(*fault);
  if (buffer.size() > 0) return Refuse(Refusal::BodyTooLong);
  // Before anything is done, since how long the reply will be is only known when a sale is made. Handshakes have short
  // ones.
  const bool handshake = head->connectionId.empty();
  if (!handshake && context.repliesHeld > context.limits.maxReplies) return Refuse(Refusal::RepliesTooLarge);
  AnswerRequest();
}

void HttpConnection::FindFaults() {
  if (!context.faults) return;
  const FaultPlace place = head->connectionId.empty() ? FaultPlace::Handshake : FaultPlace::Request;
  plan = context.faults->Find(place, std::string_view(head->path).substr(1));
}

void HttpConnection::AnswerStatus(const Fault& fault) {
  HttpReply answer;
  answer.status = fault.status;
  answer.reason = fault.reason;
  if (fault.location) answer.fields = "Location: " + *fault.location + "\r\n";
  answer.body = "a fault asked for this status\n";
  context.log->info("{}: answered with {} and not served{}", About(), fault.status, FaultsApplied());
  Reply(std::move(answer), &fault);
}

void HttpConnection::AnswerRequest() {
  const std::string& body = parser.get().body();
  try {
    SealedReply sealed = context.commerceServer.Answer(*head, body, plan.Main(), record ? &*record : nullptr);
    const auto spent = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - began);
    const auto told = sealed.failed ? spdlog::level::warn : spdlog::level::info;
    context.log->log(sealed.serverFailed ? spdlog::level::err : told,
                     "{}: answered with 200, {} bytes in, {} bytes out, {} ms: {}{}", About(), body.size(),
                     sealed.body.size(), spent.count(), sealed.summary, FaultsApplied());
    HttpReply answer;
    answer.body = std::move(sealed.body);
    Reply(std::move(answer), plan.Main());
  } catch (const Refused& refused) {
    Refuse(refused.refusal);
  } catch (const std::exception& error) {
    context.log->error("{}: the server failed: {}", About(), error.what());
    Refuse(Refusal::Internal);
  }
}

void HttpConnection::Refuse(Refusal refusal) {
  HttpReply answer;
  answer.status = RefusalStatus(refusal);
  answer.body = RefusalReason(refusal);
  context.log->warn("{}: refused with {}: {}", About(), answer.status, answer.body);
  if (record) {
    record->refusal = answer.body;
    record->reply.clear();
  }
  answer.body += "\n";
  if (refusal == Refusal::Method) answer.fields = "Allow: GET\r\n";
  plan = {};
  Reply(std::move(answer));
}

// The request did not arrive whole. Nobody is told when nothing arrived at all: that was a probe, or the server stops.
void HttpConnection::RefuseIncomplete(Error error) {
  const bool nothing = !begun || (received.empty() && !timedOut);
  if (nothing) return context.log->debug("{}: closed before a request", About());
  if (timedOut) return Refuse(Refusal::TooSlow);
  const bool ended = error == asio::error::eof || error == http::error::partial_message;
  if (ended) return Refuse(Refusal::CutShort);
  context.log->warn("{}: the connection broke before the whole request had arrived: {}", About(), error.message());
}

// What a fault asks for is remembered at once; its delay is for the client alone.
void HttpConnection::Reply(HttpReply toSend, const Fault* fault) {
  replying = true;
  if (toSend.reason.empty()) toSend.reason = ReasonOf(toSend.status);
  Remember(toSend.status);
  reply = WriteReply(std::move(toSend), fault);
  HoldReply();
  if (plan.Delay().count() == 0 || context.stopping) return Send();
  timer.expires_at(std::chrono::steady_clock::time_point::max());  // the client's time stands still
  delay.expires_after(plan.Delay());
  delay.async_wait([self = shared_from_this()](Error) { self->Send(); });
}

void HttpConnection::Send() {
  StartTimer(context.limits.clientTime);
  const std::array<asio::const_buffer, 2> bytes = {asio::buffer(reply.head), asio::buffer(reply.body)};
  asio::async_write(socket, bytes, [self = shared_from_this()](Error error, std::size_t) {
    if (error) return self->context.log->warn("{}: the reply was not taken: {}", self->About(), error.message());
    self->GiveBack();
    std::string().swap(self->reply.body);
    Error ignored;
    self->socket.shutdown(Tcp::socket::shutdown_send, ignored);
    self->StartTimer(std::min(drainTime, self->context.limits.clientTime));
    self->Drain();
  });
}

void HttpConnection::Drain() {
  received.resize(8192);
  socket.async_read_some(asio::buffer(received), [self = shared_from_this()](Error error, std::size_t) {
    if (!error) return self->Drain();
    self->timer.cancel();
  });
}

void HttpConnection::StartTimer(std::chrono::milliseconds time) {
  timer.expires_after(time);
  timer.async_wait([weak = weak_from_this()](Error error) {
    const std::shared_ptr<HttpConnection> self = weak.lock();
    if (self && !error) self->OnTimer();
  });
}

// What has arrived by then is still read and a whole request answered: it may have waited for the server, and not the
// server for it. A cancelling therefore ends only a waiting for more, and is repeated, because it may fall between two
// steps of a reading.
void HttpConnection::OnTimer() {
  if (timer.expiry() > std::chrono::steady_clock::now()) return;  // it was set anew when this call was under way
  Error ignored;
  if (replying) {
    socket.close(ignored);
    return;
  }
  timedOut = true;
  socket.cancel(ignored);
  StartTimer(cancelAgain);
}

std::string HttpConnection::About() const {
  if (!head) return peer;
  const std::string_view service = std::string_view(head->path).substr(1);
  return peer + " /" + LogText(service, Operations::Offers(service));
}

// Counts the faults of the plan as applied; returns what the log says of them.
std::string HttpConnection::FaultsApplied() {
  if (plan.faults.empty()) return "";
  context.faults->Spend(plan);
  std::string text;
  for (const std::string& kind : plan.Kinds()) text += ", fault: " + kind;
  return text;
}

void HttpConnection::Remember(int status) {
  if (!record) return;
  record->peer = peer;
  record->status = status;
  record->faults = plan.Kinds();
  if (head) {
    record->path = ShownText(head->path);
    record->kind = head->connectionId.empty() ? "handshake" : "request";
  }
  context.requests->Add(std::move(*record));
}

}  // namespace sandbox
