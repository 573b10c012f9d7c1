// The calls after which nothing may be left, and the world in which they run: the same call in the same world makes the
// same keys, so that one process can write down what another one must not find.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <kestapi.h>

#include "support/forwarding_system.h"

namespace kest::testing {

enum class Call { products, sale, bill };

// What is wrong with a reply, or with the connection to the server.
enum class Fault {
  none,
  badPadding,
  badDigest,
  badClientChallenge,
  badServerChallenge,
  badCharacter,  // in the base64
  cut,           // a body shorter than its length
  status,
  refused,
};

// How messages come to the server.
enum class Road { direct, redirected, proxy };

struct Scenario {
  const char* name;
  Call call;
  Fault fault;
  int exchange;  // where the fault or the redirect is: 1 the handshake, 2 the request
  Road road = Road::direct;
};

const std::vector<Scenario>& Scenarios();

// Where the secrets of a scenario and its replies are written down.
std::string SecretsFile(const Scenario& scenario);

// The host's side of a call, with fields that are secrets.
class HostCall {
 public:
  explicit HostCall(Call call);
  HostCall(const HostCall&) = delete;
  HostCall& operator=(const HostCall&) = delete;
  ~HostCall();

  bool Run();

 private:
  Call kind;
  KestProductList* list = nullptr;
  KestCheckout* checkout = nullptr;
};

// Points the library at a server with this public exponent; the modulus is always the same. 1 lets a sealed handshake
// be read.
void ConfigureServer(unsigned exponent);
constexpr unsigned usualExponent = 65537;

// Sets the proxy for the scenarios that go through one, and none for others.
void ConfigureProxy(const Scenario& scenario);

// A system whose entropy follows from a number.
class KnownEntropy : public ForwardingSystem {
 public:
  explicit KnownEntropy(std::uint64_t seed, os::System& target = os::Native())
      : ForwardingSystem(target), state(seed) {}

  // Is shown what went out of the screen and of the system's generator.
  std::function<void(bool isScreen, const void* bytes, std::uint32_t length)> onDrawn;

  std::uint32_t GetTickCount() override { return 0x17263544; }
  std::uint32_t GetCurrentThreadId() override { return 0x1A2B; }
  std::uint32_t GetCurrentProcessId() override { return 0x3C4D; }
  bool GetDiskFreeSpaceA(const char* root, std::uint32_t* sectors, std::uint32_t* bytes, std::uint32_t* freeClusters,
                         std::uint32_t* totalClusters) override;
  bool GetCursorPos(os::Point* position) override;
  void GetSystemTime(os::SystemTime* time) override { *time = {1999, 12, 5, 31, 23, 59, 58, 999}; }
  bool SystemTimeToFileTime(const os::SystemTime* time, os::FileTime* fileTime) override;
  void GlobalMemoryStatus(os::MemoryStatus* status) override;
  bool RtlGenRandom(void* bytes, std::uint32_t length) override;
  os::WindowHandle GetDesktopWindow() override { return this; }
  os::DeviceContext GetDC(os::WindowHandle) override { return this; }
  int ReleaseDC(os::WindowHandle, os::DeviceContext) override { return 1; }
  os::GraphicsObject CreateCompatibleBitmap(os::DeviceContext, int, int) override { return this; }
  os::DeviceContext CreateCompatibleDC(os::DeviceContext) override { return this; }
  os::GraphicsObject SelectObject(os::DeviceContext, os::GraphicsObject) override { return this; }
  bool BitBlt(os::DeviceContext, int, int, int, int, os::DeviceContext, int, int, std::uint32_t) override {
    return true;
  }
  int GetDIBits(os::DeviceContext, os::GraphicsObject, std::uint32_t, std::uint32_t, void* bits, os::BitmapInfo*,
                std::uint32_t) override;
  bool DeleteDC(os::DeviceContext) override { return true; }
  bool DeleteObject(os::GraphicsObject) override { return true; }

 private:
  void Fill(void* bytes, std::uint32_t length, bool isScreen);

  std::uint64_t state;
};

// Hides a text that is written to a file, and shows it again: byte `at` of it.
inline char Masked(char character, std::size_t at) {
  return static_cast<char>(character ^ static_cast<char>((at + 1) * 0x9E3779B1u >> 13 | 0x80));
}

}  // namespace kest::testing
