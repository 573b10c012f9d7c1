#include "secrets/scenarios.h"

#include <cstring>

#include "core/byte_buffer.h"
#include "support/public_key.h"

namespace kest::testing {
namespace {

constexpr std::uint32_t screenLength = 38400;  // bytes

void SetCustomer(KestCheckout* checkout) {
  KestAddOrderLine(checkout, 1042, 3);
  KestFieldSet* fields = KEST_FIELDS(checkout);
  KestSetField(fields, "KEST-CCard-Number", "4929871234560016");
  KestSetField(fields, "KEST-CCard-Name", "Wilhelmina Featherstonehaugh");
  KestSetField(fields, "KEST-Address", "17 Marmalade Crescent, Upper Wexbury");
  // Literals are read-only memory, which is not searched: the test leaves no copies of its own.
  KestSetField(fields, "KEST-Comment",
               "Please ring twice and leave the parcel with the neighbour whose green door stands open on most days; "
               "if nobody answers, carry it back across the bridge to the ferryman's hut before seven in the evening. "
               "Customs papers lie inside the lid, and the key for the brass lock hangs under the third flower pot.");
  KestSetField(fields, "KEST-TxN", "T-6");
}

}  // namespace

const std::vector<Scenario>& Scenarios() {
  static const std::vector<Scenario> all = {
      {"Products", Call::products, Fault::none, 0},
      {"Sale", Call::sale, Fault::none, 0},
      {"Bill", Call::bill, Fault::none, 0},
      {"HandshakeRefused", Call::products, Fault::refused, 1},
      {"HandshakeStatus", Call::products, Fault::status, 1},
      {"HandshakeBadPadding", Call::products, Fault::badPadding, 1},
      {"HandshakeBadDigest", Call::products, Fault::badDigest, 1},
      {"HandshakeBadClientChallenge", Call::products, Fault::badClientChallenge, 1},
      {"HandshakeBadCharacter", Call::products, Fault::badCharacter, 1},
      {"ProductsRefused", Call::products, Fault::refused, 2},
      {"ProductsStatus", Call::products, Fault::status, 2},
      {"ProductsCut", Call::products, Fault::cut, 2},
      {"ProductsBadPadding", Call::products, Fault::badPadding, 2},
      {"ProductsBadDigest", Call::products, Fault::badDigest, 2},
      {"ProductsBadClientChallenge", Call::products, Fault::badClientChallenge, 2},
      {"ProductsBadServerChallenge", Call::products, Fault::badServerChallenge, 2},
      {"ProductsBadCharacter", Call::products, Fault::badCharacter, 2},
      {"SaleRefused", Call::sale, Fault::refused, 2},
      {"SaleCut", Call::sale, Fault::cut, 2},
      {"SaleBadPadding", Call::sale, Fault::badPadding, 2},
      {"SaleBadDigest", Call::sale, Fault::badDigest, 2},
      {"SaleBadServerChallenge", Call::sale, Fault::badServerChallenge, 2},
      {"BillRefused", Call::bill, Fault::refused, 2},
      {"BillBadPadding", Call::bill, Fault::badPadding, 2},
      {"BillBadDigest", Call::bill, Fault::badDigest, 2},
      {"BillBadClientChallenge", Call::bill, Fault::badClientChallenge, 2},
      {"HandshakeRedirected", Call::products, Fault::none, 1, Road::redirected},
      {"ProductsRedirected", Call::products, Fault::none, 2, Road::redirected},
      {"SaleRedirected", Call::sale, Fault::none, 2, Road::redirected},
      {"BillRedirected", Call::bill, Fault::none, 2, Road::redirected},
      {"SaleThroughProxy", Call::sale, Fault::none, 0, Road::proxy},
      {"ProxyRefused", Call::sale, Fault::refused, 2, Road::proxy},
  };
  return all;
}

std::string SecretsFile(const Scenario& scenario) {
  return std::string(KEST_SECRETS) + "/" + scenario.name + ".txt";
}

HostCall::HostCall(Call call) : kind(call) {
  if (kind == Call::products) {
    list = KestCreateProductList();
  } else {
    checkout = KestCreateCheckout();
    SetCustomer(checkout);
  }
}

HostCall::~HostCall() {
  KestDestroyProductList(list);
  KestDestroyCheckout(checkout);
}

bool HostCall::Run() {
  if (kind == Call::products) return KestGetProductList(list, "version 12.3.4567 beta") != 0;
  if (kind == Call::sale) return KestBillCustomer(checkout) != nullptr;
  return KestGetBill(checkout) != nullptr;
}

void ConfigureServer(unsigned exponent) {
  Bytes modulus(128, 0x5A);
  modulus.front() = 0xC1;
  modulus.back() = 0x0F;
  Bytes power;
  for (; exponent != 0; exponent >>= 8) power.insert(power.begin(), static_cast<std::uint8_t>(exponent));
  const Bytes der = PublicKey(modulus, power);
  String text;
  ByteBuffer(der.data(), static_cast<std::uint32_t>(der.size())).EncodeBase64(text);
  KestSetServer("shop.example", 8080, text.Text());
}

void ConfigureProxy(const Scenario& scenario) {
  const bool isUsed = scenario.road == Road::proxy;
  KestSetProxy(isUsed ? "proxy.example" : "", isUsed ? 3128 : 0);
}

bool KnownEntropy::GetDiskFreeSpaceA(const char*, std::uint32_t* sectors, std::uint32_t* bytes,
                                     std::uint32_t* freeClusters, std::uint32_t* totalClusters) {
  *sectors = 8, *bytes = 512, *freeClusters = 0x31928374, *totalClusters = 0x41625384;
  return true;
}

bool KnownEntropy::GetCursorPos(os::Point* position) {
  *position = {613, 427};
  return true;
}

bool KnownEntropy::SystemTimeToFileTime(const os::SystemTime*, os::FileTime* fileTime) {
  *fileTime = {0x51726354, 0x01BF6364};
  return true;
}

void KnownEntropy::GlobalMemoryStatus(os::MemoryStatus* status) {
  *status = {status->length, 77, 0x71829374, 0x81726384, 0x91827394, 0xA1B2C3A4, 0xB1C2D3B4, 0xC1D2E3C4};
}

bool KnownEntropy::RtlGenRandom(void* bytes, std::uint32_t length) {
  Fill(bytes, length, false);
  return true;
}

int KnownEntropy::GetDIBits(os::DeviceContext, os::GraphicsObject, std::uint32_t, std::uint32_t, void* bits,
                            os::BitmapInfo*, std::uint32_t) {
  Fill(bits, screenLength, true);
  return 240;
}

void KnownEntropy::Fill(void* bytes, std::uint32_t length, bool isScreen) {
  for (std::uint32_t i = 0; i < length; ++i) {
    state += 0x9E3779B97F4A7C15;
    std::uint64_t mixed = (state ^ state >> 30) * 0xBF58476D1CE4E5B9;
    mixed = (mixed ^ mixed >> 27) * 0x94D049BB133111EB;
    static_cast<volatile std::uint8_t*>(bytes)[i] = static_cast<std::uint8_t>(mixed >> 56);
  }
  if (onDrawn) onDrawn(isScreen, bytes, length);
}

}  // namespace kest::testing
