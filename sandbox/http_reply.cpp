#include "http_reply.h"

#include <algorithm>

namespace sandbox {
namespace {

std::string WriteHead(const HttpReply& reply, const Fault* fault) {
  std::string length = std::to_string(reply.body.size());
  if (fault && fault->kind == FaultKind::ContentLength) length = fault->value.value_or("");
  std::string head = "HTTP/1.0 " + std::to_string(reply.status) + " " + reply.reason + "\r\n" + reply.fields +
                     "Content-Type: text/plain\r\nContent-Length: " + length + "\r\n";
  if (fault && fault->kind == FaultKind::Headers) {
    for (const std::string& line : fault->lines) head.append(line).append("\r\n");
  }
  return head + "\r\n";
}

}  // namespace

ReplyBytes WriteReply(HttpReply reply, const Fault* fault) {
  ReplyBytes bytes = {WriteHead(reply, fault), std::move(reply.body)};
  if (fault && fault->kind == FaultKind::CutBody) bytes.body.resize(std::min(fault->bytes, bytes.body.size()));
  if (fault && fault->kind == FaultKind::Close) {
    const std::size_t ofHead = std::min(fault->bytes, bytes.head.size());
    bytes.body.resize(std::min(fault->bytes - ofHead, bytes.body.size()));
    bytes.head.resize(ofHead);
  }
  return bytes;
}

}  // namespace sandbox
