// Is everything that a client can get wrong refused, with the right status, the reason in the reply and in the log?
// Each row gets one thing wrong. The statuses stand here a second time, so that the server's table is checked against
// them.
#include "refusal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "sandbox/socket.h"
#include "sandbox/test_client.h"
#include "sandbox/test_server.h"

namespace sandboxtest {
namespace {

using sandbox::Refusal;

struct Case {
  const char* name;
  Refusal refusal;
  int status;
  HttpReply (*send)(TestClient& client, TestServer& server);
  TestServerOptions options = {};
};

void PrintTo(const Case& one, std::ostream* stream) {
  *stream << one.name;
}

std::string Replaced(std::string text, const std::string& what, const std::string& with) {
  return text.replace(text.find(what), what.size(), with);
}

HttpReply SendHead(TestClient& client, const std::string& what, const std::string& with) {
  const std::string body = client.HandshakeBody(client.HandshakeFields());
  return client.Send(Replaced(client.Head("/GetProductList", body.size()), what, with) + body);
}

HttpReply SendBody(TestClient& client, const std::string& body) {
  return client.Send(client.Head("/GetProductList", body.size()) + body);
}

HttpReply SendHandshake(TestClient& client, const std::string& fieldName, const std::string& value) {
  Fields fields = client.HandshakeFields();
  Replace(fields, fieldName, value);
  return SendBody(client, client.HandshakeBody(fields));
}

HttpReply SendHandshakeMessage(TestClient& client, const std::string& message) {
  return SendBody(client, client.SealForServer(message + '\0'));
}

HttpReply SendRequest(TestClient& client, const std::string& fieldName, const std::string& value) {
  if (!client.Handshake()) return {};
  Fields fields = client.RequestFields("GetProductList", {{"GUID", testGuid}});
  Replace(fields, fieldName, value);
  return SendBody(client, client.RequestBody(fields));
}

HttpReply SendRequestBytes(TestClient& client, const std::string& messageWithZero) {
  if (!client.Handshake()) return {};
  return SendBody(client, client.SealForSession(messageWithZero));
}

// Sends one block that deciphers to these 8 bytes: the sealing puts a block of padding behind them, which is cut off.
HttpReply SendLastBlock(TestClient& client, const std::string& plain) {
  if (!client.Handshake()) return {};
  return SendBody(client, Base64(FromBase64(client.SealForSession(plain)).value().substr(0, 8)));
}

HttpReply SendAndEnd(TestServer& server, const std::string& bytes) {
  Socket socket(server.Port());
  socket.Send(bytes);
  socket.EndSending();
  return ReadReply(socket);
}

// Sends what never comes to its end. When the first bytes arrive too late for a short limit of time the connection ends
// without a word, as one that was only a probe; a slow machine then gets another try.
HttpReply SendAndWait(TestClient& client, const std::string& bytes) {
  HttpReply reply;
  for (int tries = 0; tries < 50 && reply.status == -1; tries++) reply = client.Send(bytes);
  return reply;
}

std::string GoodText(const TestClient& client) {
  return TestClient::HeaderBlock(client.RequestFields("GetProductList", {{"GUID", testGuid}}));
}

TestServerOptions With(void (*change)(TestServerOptions&)) {
  TestServerOptions options;
  change(options);
  return options;
}

const Case cases[] = {
    {"RequestLineWithTwoSpaces", Refusal::RequestLine, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "GET /", "GET  /"); }},
    {"RequestLineWithoutMethod", Refusal::RequestLine, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "GET /", " /"); }},
    {"RequestLineWithoutVersion", Refusal::RequestLine, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, " HTTP/1.0", ""); }},
    {"TargetWithoutSlash", Refusal::Target, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "GET /Get", "GET Get"); }},
    {"TargetOfAnotherScheme", Refusal::Target, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "GET /", "GET ftp://host/"); }},
    {"TargetWithATab", Refusal::TargetCharacter, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "/Get", "/\tGet"); }},
    {"TargetWithADelete", Refusal::TargetCharacter, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "/Get", "/\x7FGet"); }},
    {"MethodPost", Refusal::Method, 405, [](TestClient& c, TestServer&) { return SendHead(c, "GET", "POST"); }},
    {"MethodInLowerCase", Refusal::Method, 405, [](TestClient& c, TestServer&) { return SendHead(c, "GET", "get"); }},
    {"Http11", Refusal::HttpVersion, 505,
     [](TestClient& c, TestServer&) { return SendHead(c, "HTTP/1.0", "HTTP/1.1"); }},
    {"HeaderLineWithoutSpace", Refusal::HeaderLine, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "Accept: ", "Accept:"); }},
    {"HeaderLineWithTwoSpaces", Refusal::HeaderLine, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "Accept: ", "Accept:  "); }},
    {"HeaderNameWithABlank", Refusal::HeaderLine, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "Accept: ", "Acc ept: "); }},
    {"HeaderNameWithATab", Refusal::HeaderLine, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "Accept: ", "Accept\t: "); }},
    {"HeaderNameWithAColon", Refusal::HeaderLine, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "Accept: ", "Acc:ept: "); }},
    {"HeaderValueBehindATab", Refusal::HeaderLine, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "Accept: ", "Accept: \t"); }},
    {"HeaderValueBeforeABlank", Refusal::HeaderLine, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "*/*\r\n", "*/* \r\n"); }},
    {"HeaderValueBeforeATab", Refusal::HeaderLine, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "*/*\r\n", "*/*\t\r\n"); }},
    {"HeaderLineFolded", Refusal::HeaderLine, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "Keep-Alive\r\n", "Keep-\r\n Alive\r\n"); }},
    {"HeaderLineEndedByLineFeedAlone", Refusal::HeaderLine, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "*/*\r\n", "*/*\n"); }},
    {"HeaderFieldsInAnotherOrder", Refusal::HeaderOrder, 400,
     [](TestClient& c, TestServer&) {
       return SendHead(c, "Accept: */*\r\nHost: 127.0.0.1\r\n", "Host: 127.0.0.1\r\nAccept: */*\r\n");
     }},
    {"HeaderNameInLowerCase", Refusal::HeaderOrder, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "Accept", "accept"); }},
    {"HeaderFieldMissing", Refusal::HeaderOrder, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "Proxy-Connection: Keep-Alive\r\n", ""); }},
    {"HeaderFieldTooMany", Refusal::HeaderOrder, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "\r\n\r\n", "\r\nUser-Agent: x\r\n\r\n"); }},
    {"ConnectionIdTwice", Refusal::HeaderOrder, 400,
     [](TestClient& c, TestServer&) {
       return SendHead(c, "\r\n\r\n", "\r\nKEST-Auth-CID: a\r\nKEST-Auth-CID: a\r\n\r\n");
     }},
    {"AcceptOfSomethingElse", Refusal::AcceptValue, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "*/*", "text/*"); }},
    {"HostWithPort", Refusal::HostValue, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "Host: 127.0.0.1", "Host: 127.0.0.1:80"); }},
    {"HostWithABlankInside", Refusal::HostValue, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "Host: 127.0.0.1", "Host: 127.0.0.1 x"); }},
    {"HostWithATabInside", Refusal::HostValue, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "Host: 127.0.0.1", "Host: 127.0.0.1\tx"); }},
    {"HostEmpty", Refusal::HostValue, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "Host: 127.0.0.1", "Host: "); }},
    {"LengthMissing", Refusal::LengthMissing, 411,
     [](TestClient& c, TestServer&) { return SendHead(c, "Content-Length: ", "Content-Lengths: "); }},
    {"LengthNegative", Refusal::LengthValue, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "Content-Length: ", "Content-Length: -"); }},
    {"LengthWithALeadingZero", Refusal::LengthValue, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "Content-Length: ", "Content-Length: 0"); }},
    {"LengthNotANumber", Refusal::LengthValue, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "Content-Length: ", "Content-Length: x"); }},
    {"ProxyConnectionOfClose", Refusal::ProxyConnectionValue, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "Keep-Alive", "Close"); }},
    {"ConnectionIdEmpty", Refusal::ConnectionIdValue, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "\r\n\r\n", "\r\nKEST-Auth-CID: \r\n\r\n"); }},
    {"HeadWithTransferEncodingBehindAProxy", Refusal::HeadNotHttp, 400,
     [](TestClient& c, TestServer&) {
       return SendHead(c, "\r\n\r\n", "\r\nVia: 1.1 proxy\r\nTransfer-Encoding: chunked\r\n\r\n");
     }},
    {"HeadWithAForeignCharacterInANameBehindAProxy", Refusal::HeadNotHttp, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "\r\n\r\n", "\r\nVia: 1.1 proxy\r\nX(: 1\r\n\r\n"); }},
    {"HeadLongerThanTheLimit", Refusal::HeadTooLarge, 431,
     [](TestClient& c, TestServer&) { return SendHead(c, "/Get", "/" + std::string(300, 'x') + "Get"); },
     With([](TestServerOptions& o) { o.http.maxHead = 256; })},
    {"BodyLongerThanTheLimit", Refusal::BodyTooLarge, 413,
     [](TestClient& c, TestServer&) { return SendBody(c, std::string(101, 'A')); },
     With([](TestServerOptions& o) { o.http.maxBody = 100; })},
    {"BodyAnnouncedBeyondAllMeasure", Refusal::BodyTooLarge, 413,
     [](TestClient& c, TestServer& s) { return SendAndEnd(s, c.Head("/GetProductList", 999999999999999999)); }},
    {"BodyBesideFourOpenOnesOfTheLimit", Refusal::BodiesTooLarge, 503,
     [](TestClient& c, TestServer& s) {
       Socket open[] = {Socket(s.Port()), Socket(s.Port()), Socket(s.Port()), Socket(s.Port())};
       for (Socket& socket : open) socket.Send(c.Head("/GetProductList", 20000));
       // What is answered shows that those before it are known.
       return c.Handshake() ? SendBody(c, std::string(16388, 'A')) : HttpReply();
     },
     With([](TestServerOptions& o) { o.http.maxBody = 20000; })},
    {"RequestBesideALargeReplyThatIsNotTaken", Refusal::RepliesTooLarge, 503,
     [](TestClient& c, TestServer& s) {
       Socket holding(s.Port());
       holding.TakeLittle();
       if (!c.Handshake()) return HttpReply();
       const std::string body = c.RequestBody(c.RequestFields("GetProductList", {{"GUID", testGuid}}));
       if (!holding.Send(c.Head("/GetProductList", body.size()) + body)) return HttpReply();
       if (!holding.AnswersWithin(20000)) return HttpReply();
       c.NewSession();
       return c.Handshake() ? c.Request("GetProductList") : HttpReply();
     },
     With([](TestServerOptions& o) {
       o.catalogue = LargeCatalogue();
       o.http.maxReplies = 1000000;
     })},
    {"BodyLongerThanAnnounced", Refusal::BodyTooLong, 400,
     [](TestClient& c, TestServer&) {
       const std::string body = c.HandshakeBody(c.HandshakeFields());
       return c.Send(c.Head("/GetProductList", body.size()) + body + "A");
     }},
    {"BodyWhereNoneIsAnnounced", Refusal::BodyTooLong, 400,
     [](TestClient& c, TestServer&) { return c.Send(c.Head("/GetProductList", 0) + "AAAA"); }},
    {"HeadCutShort", Refusal::CutShort, 400,
     [](TestClient&, TestServer& s) { return SendAndEnd(s, "GET /GetProductList HT"); }},
    {"BodyCutShort", Refusal::CutShort, 400,
     [](TestClient& c, TestServer& s) { return SendAndEnd(s, c.Head("/GetProductList", 100) + "AAAA"); }},
    {"HeadThatDoesNotComeToItsEnd", Refusal::TooSlow, 408,
     [](TestClient& c, TestServer&) { return SendAndWait(c, "GET /GetProductList HTTP/1.0\r\n"); },
     With([](TestServerOptions& o) { o.http.clientTime = std::chrono::milliseconds(100); })},
    {"BodyThatDoesNotComeToItsEnd", Refusal::TooSlow, 408,
     [](TestClient& c, TestServer&) { return SendAndWait(c, c.Head("/GetProductList", 100) + "AAAA"); },
     With([](TestServerOptions& o) { o.http.clientTime = std::chrono::milliseconds(100); })},
    {"HandshakeWithForeignCharacter", Refusal::BodyNotBase64, 400,
     [](TestClient& c, TestServer&) {
       return SendBody(c, c.HandshakeBody(c.HandshakeFields()).replace(4, 1, "!"));
     }},
    {"HandshakeWithLineBreaks", Refusal::BodyNotBase64, 400,
     [](TestClient& c, TestServer&) {
       return SendBody(c, c.HandshakeBody(c.HandshakeFields()).insert(64, "\r\n"));
     }},
    {"HandshakeThatEndsInsideAGroup", Refusal::BodyNotBase64, 400,
     [](TestClient& c, TestServer&) {
       std::string body = c.HandshakeBody(c.HandshakeFields());
       body.pop_back();
       return SendBody(c, body);
     }},
    {"HandshakeEmpty", Refusal::RsaLength, 400, [](TestClient& c, TestServer&) { return SendBody(c, ""); }},
    {"HandshakeOfHalfABlock", Refusal::RsaLength, 400,
     [](TestClient& c, TestServer&) { return SendBody(c, Base64(std::string(64, 'x'))); }},
    {"HandshakeOfManyBlocks", Refusal::RsaTooLong, 413,
     [](TestClient& c, TestServer&) { return SendBody(c, Base64(std::string(4096 + 128, '\0'))); }},
    {"HandshakeBlockNotBelowTheModulus", Refusal::RsaBlock, 403,
     [](TestClient& c, TestServer&) { return SendBody(c, Base64(std::string(128, '\xff'))); }},
    {"HandshakeUnderAnotherKey", Refusal::RsaBlock, 403,
     [](TestClient& c, TestServer& s) {
       const TestClient other(s.Port(), sandbox::KeyPair::Generate(1024).PublicText());
       return SendBody(c, other.HandshakeBody(c.HandshakeFields()));
     }},
    {"HandshakeWithoutItsZeroByte", Refusal::RsaEnd, 403,
     [](TestClient& c, TestServer&) { return SendBody(c, c.SealForServer(std::string(127 * 2, 'x'))); }},
    {"HandshakeWithABlockBehindItsEnd", Refusal::RsaEnd, 403,
     [](TestClient& c, TestServer&) {
       return SendHandshakeMessage(c, c.WithDigest(c.HeaderBlock(c.HandshakeFields())) + std::string(127, '\0'));
     }},
    {"HandshakeShorterThanADigest", Refusal::MessageShort, 403,
     [](TestClient& c, TestServer&) { return SendHandshakeMessage(c, "short"); }},
    {"HandshakeOfNothingButItsDigest", Refusal::HeaderBlock, 422,
     [](TestClient& c, TestServer&) { return SendHandshakeMessage(c, c.WithDigest("")); }},
    {"HandshakeWithAWrongDigest", Refusal::Digest, 403,
     [](TestClient& c, TestServer&) {
       return SendHandshakeMessage(c, std::string(28, 'A') + c.HeaderBlock(c.HandshakeFields()));
     }},
    {"HandshakeWithAChangedText", Refusal::Digest, 403,
     [](TestClient& c, TestServer&) {
       return SendHandshakeMessage(c, Replaced(c.WithDigest(c.HeaderBlock(c.HandshakeFields())), "RAC", "RAD"));
     }},
    {"RequestOfManyEmptyFields", Refusal::FieldsTooMany, 422,
     [](TestClient& c, TestServer&) {
       std::string text;
       for (int i = 0; i < 100001; i++) text += "a: \r\n";
       return SendRequestBytes(c, c.WithDigest(text + "\r\n") + '\0');
     }},
    {"HandshakeFieldMissing", Refusal::HandshakeFields, 422,
     [](TestClient& c, TestServer&) {
       Fields fields = c.HandshakeFields();
       fields.erase(fields.begin() + 2);
       return SendBody(c, c.HandshakeBody(fields));
     }},
    {"HandshakeFieldsInAnotherOrder", Refusal::HandshakeFields, 422,
     [](TestClient& c, TestServer&) {
       Fields fields = c.HandshakeFields();
       std::swap(fields[0], fields[1]);
       return SendBody(c, c.HandshakeBody(fields));
     }},
    {"HandshakeWithAServerChallenge", Refusal::HandshakeFields, 422,
     [](TestClient& c, TestServer&) { return SendHandshake(c, "KEST-Auth-Server-RAC", "x"); }},
    {"HandshakeOfAnotherProtocolVersion", Refusal::ProtocolVersion, 422,
     [](TestClient& c, TestServer&) { return SendHandshake(c, "KEST-Protocol-Version", "1.0"); }},
    {"HandshakeWithAShortKey", Refusal::ClientKey, 422,
     [](TestClient& c, TestServer&) { return SendHandshake(c, "KEST-Auth-Client-Key", Base64(c.iv + c.key.substr(1))); }},
    {"HandshakeWithAKeyThatIsNotBase64", Refusal::ClientKey, 422,
     [](TestClient& c, TestServer&) { return SendHandshake(c, "KEST-Auth-Client-Key", "key"); }},
    {"HandshakeWithAShortChallenge", Refusal::ClientChallengeForm, 422,
     [](TestClient& c, TestServer&) { return SendHandshake(c, "KEST-Auth-Client-RAC", Base64(std::string(47, 'x'))); }},
    {"SecondSessionWhereOneIsAllowed", Refusal::SessionsFull, 503,
     [](TestClient& c, TestServer&) {
       if (!c.Handshake()) return HttpReply();
       c.NewSession();
       return SendBody(c, c.HandshakeBody(c.HandshakeFields()));
     },
     With([](TestServerOptions& o) { o.sessions.most = 1; })},
    {"ServerWithoutRandomness", Refusal::Internal, 500,
     [](TestClient& c, TestServer&) { return SendBody(c, c.HandshakeBody(c.HandshakeFields())); },
     With([](TestServerOptions& o) { o.randomFails = true; })},
    {"ConnectionThatNeverWas", Refusal::ConnectionUnknown, 403,
     [](TestClient& c, TestServer&) {
       c.connectionId = "00112233445566778899aabbccddeeff";
       return c.Request("GetProductList");
     }},
    {"RequestReplayed", Refusal::ConnectionUsed, 409,
     [](TestClient& c, TestServer&) {
       if (!c.Handshake() || c.Request("GetProductList").status != 200) return HttpReply();
       return c.Request("GetProductList");
     }},
    {"RequestAfterARefusedOne", Refusal::ConnectionUsed, 409,
     [](TestClient& c, TestServer&) {
       if (SendRequest(c, "KEST-Auth-Client-RAC", "x").status != 403) return HttpReply();
       return c.Request("GetProductList");
     }},
    {"RequestInAnExpiredSession", Refusal::ConnectionExpired, 410,
     [](TestClient& c, TestServer& s) {
       if (!c.Handshake()) return HttpReply();
       s.PassSeconds(300);
       return c.Request("GetProductList");
     }},
    {"RequestWithForeignCharacter", Refusal::BodyNotBase64, 400,
     [](TestClient& c, TestServer&) {
       if (!c.Handshake()) return HttpReply();
       return SendBody(c, c.RequestBody(c.RequestFields("GetProductList")).replace(0, 1, "-"));
     }},
    {"RequestEmpty", Refusal::CipherLength, 400,
     [](TestClient& c, TestServer&) { return c.Handshake() ? SendBody(c, "") : HttpReply(); }},
    {"RequestOfHalfABlock", Refusal::CipherLength, 400,
     [](TestClient& c, TestServer&) { return c.Handshake() ? SendBody(c, Base64("1234")) : HttpReply(); }},
    {"RequestPaddedWithZero", Refusal::CipherPadding, 403,
     [](TestClient& c, TestServer&) { return SendLastBlock(c, std::string("AAAAAAA\0", 8)); }},
    {"RequestPaddedWithNine", Refusal::CipherPadding, 403,
     [](TestClient& c, TestServer&) { return SendLastBlock(c, "AAAAAAA\x09"); }},
    {"RequestWithUnequalPadding", Refusal::CipherPadding, 403,
     [](TestClient& c, TestServer&) { return SendLastBlock(c, "AAAAAA\x01\x02"); }},
    {"RequestWithoutItsZeroByte", Refusal::MessageEnd, 403,
     [](TestClient& c, TestServer&) { return SendRequestBytes(c, c.WithDigest(GoodText(c))); }},
    {"RequestWithTwoZeroBytes", Refusal::MessageEnd, 403,
     [](TestClient& c, TestServer&) { return SendRequestBytes(c, c.WithDigest(GoodText(c)) + std::string(2, '\0')); }},
    {"RequestOfNothingButPadding", Refusal::MessageEnd, 403,
     [](TestClient& c, TestServer&) { return SendRequestBytes(c, ""); }},
    {"RequestShorterThanADigest", Refusal::MessageShort, 403,
     [](TestClient& c, TestServer&) { return SendRequestBytes(c, std::string(27, 'A') + '\0'); }},
    {"RequestOfNothingButItsDigest", Refusal::HeaderBlock, 422,
     [](TestClient& c, TestServer&) { return SendRequestBytes(c, c.WithDigest("") + '\0'); }},
    {"RequestWithAWrongDigest", Refusal::Digest, 403,
     [](TestClient& c, TestServer&) { return SendRequestBytes(c, std::string(28, 'A') + GoodText(c) + '\0'); }},
    {"RequestWithADigestWithoutTheZeroByte", Refusal::DigestWithoutZero, 403,
     [](TestClient& c, TestServer&) {
       // SHA-1 of "\r\n" alone, computed elsewhere: ba8ab5a0280b953aa97435ff8946cbcbb2755a27.
       return SendRequestBytes(c, std::string("uoq1oCgLlTqpdDX/iUbLy7J1Wic=\r\n") + '\0');
     }},
    {"RequestWithTwoEmptyLines", Refusal::HeaderBlock, 422,
     [](TestClient& c, TestServer&) { return SendRequestBytes(c, c.WithDigest(GoodText(c) + "\r\n") + '\0'); }},
    {"RequestWithoutEmptyLine", Refusal::HeaderBlock, 422,
     [](TestClient& c, TestServer&) {
       const std::string text = GoodText(c);
       return SendRequestBytes(c, c.WithDigest(text.substr(0, text.size() - 2)) + '\0');
     }},
    {"RequestWithALineWithoutColon", Refusal::HeaderBlock, 422,
     [](TestClient& c, TestServer&) { return SendRequestBytes(c, c.WithDigest("nothing\r\n" + GoodText(c)) + '\0'); }},
    {"RequestOfAnotherProtocolVersion", Refusal::ProtocolVersion, 422,
     [](TestClient& c, TestServer&) { return SendRequest(c, "KEST-Protocol-Version", "1.10"); }},
    {"RequestWithAnotherClientChallenge", Refusal::ClientChallenge, 403,
     [](TestClient& c, TestServer&) { return SendRequest(c, "KEST-Auth-Client-RAC", Base64(std::string(48, 'x'))); }},
    {"RequestWithoutServerChallenge", Refusal::ServerChallenge, 403,
     [](TestClient& c, TestServer&) { return SendRequest(c, "KEST-Auth-Server-RAC", ""); }},
    {"RequestWithAnotherServerChallenge", Refusal::ServerChallenge, 403,
     [](TestClient& c, TestServer&) { return SendRequest(c, "KEST-Auth-Server-RAC", Base64(std::string(48, 'x'))); }},
    {"HandshakeForNoService", Refusal::HandshakePath, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "/GetProductList", "/"); }},
    {"HandshakeForNoServiceOfAnAbsoluteTarget", Refusal::HandshakePath, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "/GetProductList", "http://shop.test/"); }},
    {"HandshakeForAServiceOfALongName", Refusal::HandshakePath, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "/GetProductList", "/" + std::string(255, 'a')); }},
    {"HandshakeWithAQuery", Refusal::HandshakePath, 400,
     [](TestClient& c, TestServer&) { return SendHead(c, "/GetProductList", "/GetProductList?a=b"); }},
    {"RequestWithAnotherPathThanItsHandshake", Refusal::SessionPath, 422,
     [](TestClient& c, TestServer&) { return c.Handshake("GetBill") ? c.Request("GetProductList") : HttpReply(); }},
    {"RequestWithAQueryBehindThePathOfItsHandshake", Refusal::SessionPath, 422,
     [](TestClient& c, TestServer&) { return c.Handshake() ? c.Request("GetProductList?a") : HttpReply(); }},
    {"RequestForAServiceOtherThanItsPath", Refusal::Service, 422,
     [](TestClient& c, TestServer&) { return SendRequest(c, "KEST-Service", "GetBill"); }},
};

class Refusing : public ::testing::TestWithParam<Case> {};

TEST_P(Refusing, IsAnsweredByStatusAndNamedInReplyAndLog) {
  TestServer server(GetParam().options);
  TestClient client(server.Port(), server.KeyText());
  const HttpReply reply = GetParam().send(client, server);
  const std::string reason = RefusalReason(GetParam().refusal);
  EXPECT_EQ(reply.status, GetParam().status);
  EXPECT_EQ(reply.body, reason + "\n");
  EXPECT_EQ(Value(reply.headers, "Content-Type"), "text/plain");
  EXPECT_THAT(server.StopAndReadLog(),
              ::testing::HasSubstr("refused with " + std::to_string(reply.status) + ": " + reason));
}

INSTANTIATE_TEST_SUITE_P(Of, Refusing, ::testing::ValuesIn(cases), [](const auto& one) { return one.param.name; });

TEST(RefusalTable, HasATestForEachRefusal) {
  std::set<Refusal> provoked;
  for (const Case& one : cases) provoked.insert(one.refusal);
  EXPECT_EQ(provoked.size(), static_cast<std::size_t>(sandbox::refusalCount));
}

TEST(RefusalTable, NamesNoReasonTwice) {
  std::set<std::string> reasons;
  for (int i = 0; i < sandbox::refusalCount; i++) reasons.insert(RefusalReason(static_cast<Refusal>(i)));
  EXPECT_EQ(reasons.size(), static_cast<std::size_t>(sandbox::refusalCount));
}

TEST(Refusing405, NamesTheMethodThatIsAllowed) {
  TestServer server;
  TestClient client(server.Port(), server.KeyText());
  EXPECT_EQ(Value(SendHead(client, "GET", "POST").headers, "Allow"), "GET");
}

}  // namespace
}  // namespace sandboxtest
