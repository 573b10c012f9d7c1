#include "fault.h"

#include <iterator>

namespace sandbox {

const FaultKindRow faultKinds[] = {
    {FaultKind::Delay, "delay", "`milliseconds`: 0 to 600000",
     "the reply waits; the next matching fault applies as well"},
    {FaultKind::Close, "close", "`bytes`",
     "the reply ends after so many bytes, its head counted, and the connection too"},
    {FaultKind::WrongDigest, "wrong-digest", "", "the digest belongs to another text"},
    {FaultKind::DigestWithoutZero, "digest-without-zero", "", "the digest leaves out the zero byte that ends the text"},
    {FaultKind::WrongClientChallenge, "wrong-client-challenge", "",
     "KEST-Auth-Client-RAC is not the one that the client sent"},
    {FaultKind::ChangedServerChallenge, "changed-server-challenge", "",
     "KEST-Auth-Server-RAC is not the one of the session"},
    {FaultKind::BadPadding, "bad-padding", "", "the deciphered reply ends with the byte 9, which no padding has"},
    {FaultKind::BadBase64, "bad-base64", "", "the character in the middle of the body is a *"},
    {FaultKind::CutBody, "cut-body", "`bytes`", "the body ends after so many bytes; Content-Length tells the whole"},
    {FaultKind::ContentLength, "content-length", "`value`: text", "Content-Length has this value; the body is whole"},
    {FaultKind::Status, "status", "`code`: 100 to 999; `location`, `reason`: text, may be left out",
     "this status is answered and the request is not served; its session stays open"},
    {FaultKind::Field, "field", "`name`: text; `value`: text or null",
     "the sealed reply has this field with this value, or, with null, does not have it"},
    {FaultKind::Headers, "headers", "`lines`: texts", "the head of the reply has these lines too, as they stand"},
};

const std::size_t faultKindCount = std::size(faultKinds);

const char* FaultKindName(FaultKind kind) {
  for (const FaultKindRow& row : faultKinds) {
    if (row.kind == kind) return row.name;
  }
  return "";
}

}  // namespace sandbox
