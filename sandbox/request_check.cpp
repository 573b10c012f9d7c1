#include "request_check.h"

#include <algorithm>

#include "fields.h"
#include "refusal.h"

namespace sandbox {
namespace {

bool IsControl(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 0x20 || byte == 0x7F;
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

std::string_view TakeLine(std::string_view& head, Refusal malformed) {
  const std::size_t end = head.find("\r\n");
  if (end == std::string_view::npos) throw Refused(malformed);
  const std::string_view line = head.substr(0, end);
  if (line.find_first_of(std::string_view("\r\n\0", 3)) != std::string_view::npos) throw Refused(malformed);
  head.remove_prefix(end + 2);
  return line;
}

struct RequestLine {
  std::string_view method;
  std::string_view target;
  std::string_view version;
};

RequestLine SplitRequestLine(std::string_view line) {
  const std::size_t first = line.find(' ');
  const std::size_t last = line.rfind(' ');
  if (first == std::string_view::npos || first == last) throw Refused(Refusal::RequestLine);
  const RequestLine parts = {line.substr(0, first), line.substr(first + 1, last - first - 1), line.substr(last + 1)};
  if (parts.method.empty() || parts.target.empty() || parts.target.find(' ') != std::string_view::npos) {
    throw Refused(Refusal::RequestLine);
  }
  return parts;
}

std::string_view PathOf(std::string_view target) {
  constexpr std::string_view scheme = "http://";
  if (std::any_of(target.begin(), target.end(), IsControl)) throw Refused(Refusal::TargetCharacter);
  if (target.front() == '/') return target;
  if (!EqualIgnoringCase(target.substr(0, scheme.size()), scheme)) throw Refused(Refusal::Target);
  target.remove_prefix(scheme.size());
  const std::size_t path = target.find('/');
  if (path == 0 || path == std::string_view::npos) throw Refused(Refusal::Target);
  return target.substr(path);
}

FieldList ReadFields(std::string_view& head) {
  FieldList fields;
  for (;;) {
    const std::string_view line = TakeLine(head, Refusal::HeaderLine);
    if (line.empty()) return fields;
    const std::size_t colon = line.find(": ");
    if (colon == std::string_view::npos || colon == 0) throw Refused(Refusal::HeaderLine);
    const std::string_view name = line.substr(0, colon);
    const std::string_view value = line.substr(colon + 2);
    if (name.find_first_of(" \t:") != std::string_view::npos) throw Refused(Refusal::HeaderLine);
    const bool padded = !value.empty() &&
                        (value.front() == ' ' || value.front() == '\t' || value.back() == ' ' || value.back() == '\t');
    if (padded) throw Refused(Refusal::HeaderLine);
    fields.push_back({std::string(name), std::string(value)});
  }
}

void CheckOrder(const FieldList& fields) {
  constexpr std::string_view owed[] = {"Accept", "Host", "Content-Length", "Proxy-Connection", "KEST-Auth-CID"};
  constexpr std::size_t always = 4;
  const bool inOrder = std::equal(fields.begin(), fields.end(), owed, owed + std::min(fields.size(), std::size(owed)),
                                  [](const Field& field, std::string_view name) { return field.name == name; });
  if (!inOrder || fields.size() < always) throw Refused(Refusal::HeaderOrder);
}

void CheckNoneTwice(const FieldList& fields) {
  for (const char* name : {"Accept", "Host", "Content-Length", "Proxy-Connection", "KEST-Auth-CID"}) {
    const auto same = [&](const Field& field) { return EqualIgnoringCase(field.name, name); };
    if (std::count_if(fields.begin(), fields.end(), same) > 1) throw Refused(Refusal::HeaderOrder);
  }
}

std::size_t ReadLength(std::string_view value) {
  constexpr std::size_t mostDigits = 18;
  const bool digits = !value.empty() && value.size() <= mostDigits && std::all_of(value.begin(), value.end(), IsDigit);
  const bool leadingZero = value.size() > 1 && value.front() == '0';
  if (!digits || leadingZero) throw Refused(Refusal::LengthValue);
  std::size_t length = 0;
  for (char c : value) length = length * 10 + static_cast<std::size_t>(c - '0');
  return length;
}

void CheckValues(const FieldList& fields, bool throughProxy) {
  if (FieldOrEmpty(fields, "Accept") != "*/*") throw Refused(Refusal::AcceptValue);
  const std::string_view host = FieldOrEmpty(fields, "Host");
  const std::string_view foreign = throughProxy ? " \t" : " \t:";
  if (host.empty() || host.find_first_of(foreign) != std::string_view::npos) throw Refused(Refusal::HostValue);
  if (!throughProxy && FieldOrEmpty(fields, "Proxy-Connection") != "Keep-Alive") {
    throw Refused(Refusal::ProxyConnectionValue);
  }
}

}  // namespace

RequestHead CheckHead(std::string_view head) {
  const RequestLine line = SplitRequestLine(TakeLine(head, Refusal::RequestLine));
  const FieldList fields = ReadFields(head);
  const bool throughProxy = FindField(fields, "Via") != nullptr;
  if (line.method != "GET") throw Refused(Refusal::Method);
  if (line.version != "HTTP/1.0" && !(throughProxy && line.version == "HTTP/1.1")) throw Refused(Refusal::HttpVersion);
  const std::string_view path = PathOf(line.target);

  const std::string* length = FindField(fields, "Content-Length");
  if (!length) throw Refused(Refusal::LengthMissing);
  throughProxy ? CheckNoneTwice(fields) : CheckOrder(fields);
  CheckValues(fields, throughProxy);
  const std::string* connectionId = FindField(fields, "KEST-Auth-CID");
  if (connectionId && connectionId->empty()) throw Refused(Refusal::ConnectionIdValue);
  return {std::string(path), connectionId ? *connectionId : std::string(), ReadLength(*length)};
}

}  // namespace sandbox
