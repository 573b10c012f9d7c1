#include "refusal.h"

namespace sandbox {
namespace {

struct Row {
  Refusal refusal;
  int status;
  const char* reason;
};

// 400: what stands outside the seal is malformed. 403: the seal does not hold. 422: the seal holds, and what it covers
// is not what a client owes. None of them is a status that makes a client try again but 408.
constexpr Row rows[] = {
    {Refusal::RequestLine, 400, "the request line is not method, target and version with one space between them"},
    {Refusal::Target, 400, "the target is neither a path nor an absolute http URL with a path"},
    {Refusal::TargetCharacter, 400, "the target holds a control character"},
    {Refusal::Method, 405, "the method is not GET"},
    {Refusal::HttpVersion, 505, "the version is not HTTP/1.0"},
    {Refusal::HeaderLine, 400, "a header line is not a name, a colon, one space and a value, ended by CR LF"},
    {Refusal::HeaderOrder, 400,
     "the header fields are not Accept, Host, Content-Length, Proxy-Connection and, at most once, KEST-Auth-CID, in "
     "this order"},
    {Refusal::AcceptValue, 400, "the value of Accept is not */*"},
    {Refusal::HostValue, 400, "the value of Host is not a host name without white space and port"},
    {Refusal::LengthMissing, 411, "Content-Length is missing"},
    {Refusal::LengthValue, 400, "the value of Content-Length is not a decimal number without sign and leading zeros"},
    {Refusal::ProxyConnectionValue, 400, "the value of Proxy-Connection is not Keep-Alive"},
    {Refusal::ConnectionIdValue, 400, "the value of KEST-Auth-CID is empty"},
    {Refusal::HeadNotHttp, 400,
     "the head breaks a rule of HTTP, such as a foreign character in a name or Transfer-Encoding"},
    {Refusal::HeadTooLarge, 431, "the head is larger than the limit set by --max-head"},
    {Refusal::BodyTooLarge, 413, "the body is larger than the limit set by --max-body"},
    {Refusal::BodiesTooLarge, 503, "the bodies that are open are larger together than four times --max-body allows"},
    {Refusal::RepliesTooLarge, 503, "the replies that wait to be taken are larger together than 64 MB"},
    {Refusal::BodyTooLong, 400, "more bytes follow the head than Content-Length announces"},
    {Refusal::CutShort, 400, "the connection ended before the whole request had arrived"},
    {Refusal::TooSlow, 408, "the request did not arrive whole within the time set by --client-seconds"},
    {Refusal::BodyNotBase64, 400, "the body is not base64 with the standard alphabet, = padding and no line breaks"},
    {Refusal::HandshakePath, 400,
     "the path of the handshake is not / and the name of a service, of 255 bytes at most and without a query"},
    {Refusal::RsaLength, 400, "the handshake is not a whole number of blocks as long as the server key's modulus"},
    {Refusal::RsaTooLong, 413, "the handshake is longer than 4096 bytes, several times what one holds"},
    {Refusal::RsaBlock, 403, "a handshake block does not decipher to a block whose first byte is zero"},
    {Refusal::RsaEnd, 403, "the last handshake block, and no other, must hold the zero byte that ends the message"},
    {Refusal::ConnectionUnknown, 403, "KEST-Auth-CID names no connection of this server"},
    {Refusal::ConnectionUsed, 409, "KEST-Auth-CID names a connection that has served its one request"},
    {Refusal::ConnectionExpired, 410, "KEST-Auth-CID names a connection that has expired"},
    {Refusal::CipherLength, 400, "the request is not a whole number of 8-byte blocks"},
    {Refusal::CipherPadding, 403, "the padding of the deciphered request is wrong: another session key, iv or cipher"},
    {Refusal::MessageEnd, 403, "the deciphered request does not end with its only zero byte"},
    {Refusal::MessageShort, 403, "the deciphered message is shorter than its digest"},
    {Refusal::Digest, 403, "the digest does not belong to the message"},
    {Refusal::DigestWithoutZero, 403, "the digest leaves out the zero byte that ends the message"},
    {Refusal::HeaderBlock, 422, "the message is not a header block that ends with exactly one empty line"},
    {Refusal::FieldsTooMany, 422, "the message has more than 100000 fields"},
    {Refusal::HandshakeFields, 422,
     "the handshake fields are not KEST-Auth-Client-Key, KEST-Auth-Client-RAC, an empty KEST-Auth-Server-RAC and "
     "KEST-Protocol-Version, in this order"},
    {Refusal::ProtocolVersion, 422, "KEST-Protocol-Version is not 1.1"},
    {Refusal::ClientKey, 422, "KEST-Auth-Client-Key is not the base64 of an 8-byte iv and a 128-byte key"},
    {Refusal::ClientChallengeForm, 422, "KEST-Auth-Client-RAC is not the base64 of 48 bytes"},
    {Refusal::ClientChallenge, 403, "KEST-Auth-Client-RAC is not the one of the handshake"},
    {Refusal::ServerChallenge, 403, "KEST-Auth-Server-RAC is not the one that the handshake was answered with"},
    {Refusal::SessionPath, 422, "the path is not the one of the handshake"},
    {Refusal::Service, 422, "the path is not / and the value of KEST-Service"},
    {Refusal::SessionsFull, 503, "as many connections are open as --max-sessions allows"},
    {Refusal::Internal, 500, "the server failed; its log tells more"},
};

static_assert(sizeof rows / sizeof rows[0] == refusalCount, "each refusal has its row");

constexpr bool RowsStandInOrder() {
  for (int i = 0; i < refusalCount; i++) {
    if (static_cast<int>(rows[i].refusal) != i) return false;
  }
  return true;
}
static_assert(RowsStandInOrder(), "a refusal is the index of its row");

}  // namespace

int RefusalStatus(Refusal refusal) {
  return rows[static_cast<int>(refusal)].status;
}

const char* RefusalReason(Refusal refusal) {
  return rows[static_cast<int>(refusal)].reason;
}

}  // namespace sandbox
