#include "crypto/base64.h"

#include <initializer_list>

#include "crypto/operations.h"

namespace kest {
namespace {

constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";
constexpr std::uint8_t pad = 64;
// What is no value of a character; all of these and the pad have one of the two top bits set.
constexpr std::uint8_t skipped = 0x80;
constexpr std::uint8_t foreign = 0xFF;
constexpr std::uint32_t noDataBits = 0xC0;

struct DecodeTable {
  std::uint8_t values[256];
};

constexpr DecodeTable MakeDecodeTable() {
  DecodeTable table{};
  for (std::uint8_t& value : table.values) value = foreign;
  for (std::uint8_t i = 0; i <= pad; ++i) table.values[static_cast<std::uint8_t>(alphabet[i])] = i;
  for (const char space : {'\r', '\n', ' ', '\t'}) table.values[static_cast<std::uint8_t>(space)] = skipped;
  return table;
}

constexpr DecodeTable decodeTable = MakeDecodeTable();

std::uint8_t ValueOf(char character) {
  return decodeTable.values[static_cast<std::uint8_t>(character)];
}

void EncodeGroup(std::uint8_t first, std::uint8_t second, std::uint8_t third, char* out) {
  out[0] = alphabet[first >> 2];
  out[1] = alphabet[(first << 4 & 0x30) | second >> 4];
  out[2] = alphabet[(second << 2 & 0x3C) | third >> 6];
  out[3] = alphabet[third & 0x3F];
}

std::uint32_t Join(const std::uint8_t* values) {
  return std::uint32_t{values[0]} << 18 | std::uint32_t{values[1]} << 12 | std::uint32_t{values[2]} << 6 | values[3];
}

void StoreGroup(std::uint32_t group, std::uint8_t* out) {
  out[0] = static_cast<std::uint8_t>(group >> 16);
  out[1] = static_cast<std::uint8_t>(group >> 8);
  out[2] = static_cast<std::uint8_t>(group);
}

bool HasNoPad(const std::uint8_t* values) {
  return ((values[0] | values[1] | values[2] | values[3]) & noDataBits) == 0;
}

int EncodeUpdate(void* memory, const std::uint8_t* in, std::uint32_t inLength, std::uint8_t* out, std::uint32_t outMax,
                 std::uint32_t* outLength) {
  auto& context = *static_cast<Base64Context*>(memory);
  *outLength = 0;
  const std::uint64_t promised = (std::uint64_t{context.count} + inLength) / 3 * 4;
  if (promised > outMax) return methodOutputTooSmall;
  *outLength = static_cast<std::uint32_t>(promised);
  char* at = reinterpret_cast<char*>(out);
  // The held bytes go first, with as many as their group lacks.
  if (context.count != 0) {
    for (; context.count < 3 && inLength != 0; --inLength) context.values[context.count++] = *in++;
    if (context.count < 3) return methodSuccess;
    EncodeGroup(context.values[0], context.values[1], context.values[2], at);
    at += 4;
    context.count = 0;
  }
  for (; inLength >= 3; inLength -= 3, in += 3, at += 4) EncodeGroup(in[0], in[1], in[2], at);
  if (inLength == 0) return methodSuccess;
  context.values[0] = in[0];
  if (inLength == 2) context.values[1] = in[1];
  context.count = inLength;
  return methodSuccess;
}

int EncodeFinal(void* memory, std::uint8_t* out, std::uint32_t outMax, std::uint32_t* outLength) {
  auto& context = *static_cast<Base64Context*>(memory);
  *outLength = 0;
  if (context.count == 0) return methodSuccess;
  if (outMax < 4) return methodOutputTooSmall;
  char* at = reinterpret_cast<char*>(out);
  const bool isOne = context.count == 1;
  EncodeGroup(context.values[0], isOne ? std::uint8_t{0} : context.values[1], 0, at);
  if (isOne) at[2] = alphabet[pad];
  at[3] = alphabet[pad];
  *outLength = 4;
  context = Base64Context{};
  return methodSuccess;
}

// Decodes while a whole group without pads is held, four plain characters follow and there is room; answers the
// characters taken. What it leaves, the careful loop takes one by one, with the same outcome.
std::uint32_t DecodeRun(Base64Context& context, const char* in, std::uint32_t inLength, std::uint8_t* out,
                        std::uint32_t room) {
  if (context.count != 4 || !HasNoPad(context.values)) return 0;
  std::uint32_t taken = 0;
  std::uint32_t held = Join(context.values);
  while (inLength - taken >= 4 && room >= 3) {
    const std::uint8_t values[4] = {ValueOf(in[taken]), ValueOf(in[taken + 1]), ValueOf(in[taken + 2]),
                                    ValueOf(in[taken + 3])};
    if (!HasNoPad(values)) break;
    StoreGroup(held, out);
    held = Join(values);
    out += 3;
    room -= 3;
    taken += 4;
  }
  for (std::uint32_t i = 0; i < 4; ++i) context.values[i] = static_cast<std::uint8_t>(held >> (18 - 6 * i) & 0x3F);
  return taken;
}

int DecodeUpdate(void* memory, const std::uint8_t* bytes, std::uint32_t inLength, std::uint8_t* out,
                 std::uint32_t outMax, std::uint32_t* outLength) {
  auto& context = *static_cast<Base64Context*>(memory);
  const char* in = reinterpret_cast<const char*>(bytes);
  std::uint32_t& written = *outLength;
  written = 0;
  for (std::uint32_t i = 0; i < inLength; ++i) {
    const std::uint32_t run = DecodeRun(context, in + i, inLength - i, out + written, outMax - written);
    written += run / 4 * 3;
    i += run;
    if (i == inLength) break;
    const std::uint8_t value = ValueOf(in[i]);
    if (value == skipped) continue;
    if (value == foreign) return methodBadData;
    // The group is judged before the value is taken: a failure leaves room for the value in every later call.
    if (context.count == 4) {
      if (!HasNoPad(context.values)) return methodBadData;
      if (outMax - written < 3) return methodOutputTooSmall;
      StoreGroup(Join(context.values), out + written);
      written += 3;
      context.count = 0;
    }
    context.values[context.count++] = value;
  }
  return methodSuccess;
}

int DecodeFinal(void* memory, std::uint8_t* out, std::uint32_t outMax, std::uint32_t* outLength) {
  auto& context = *static_cast<Base64Context*>(memory);
  *outLength = 0;
  if (context.count == 0) return methodSuccess;
  if (context.count != 4) return methodBadLength;
  std::uint8_t* values = context.values;
  if (values[0] == pad || values[1] == pad) return methodBadData;
  const std::uint32_t length = values[2] == pad ? 1 : values[3] == pad ? 2 : 3;
  if (length > outMax) return methodOutputTooSmall;
  const std::uint32_t group = Join(values);
  // The bits of a pad lie below those of the bytes that are stored, but for its own top bit, which is cut off.
  for (std::uint32_t i = 0; i < length; ++i) out[i] = static_cast<std::uint8_t>(group >> (16 - 8 * i));
  *outLength = length;
  context = Base64Context{};
  return methodSuccess;
}

// The frame hands over a zeroed context, which is one that holds nothing.
int InitMethod(void*, const AlgorithmParameters&, const KeyObject*) {
  return methodSuccess;
}

}  // namespace

const AlgorithmDescriptor base64Descriptor = {AlgorithmType::base64, 0, nullptr};
const AlgorithmOperations base64EncodeOperations = {sizeof(Base64Context), InitMethod, EncodeUpdate, EncodeFinal,
                                                    nullptr};
const AlgorithmOperations base64DecodeOperations = {sizeof(Base64Context), InitMethod, DecodeUpdate, DecodeFinal,
                                                    nullptr};

ResultCode Base64EncodeUpdate(Base64Context& context, char* out, std::uint32_t* outLength, std::uint32_t outMax,
                              const std::uint8_t* in, std::uint32_t inLength) {
  return ToResultCode(EncodeUpdate(&context, in, inLength, reinterpret_cast<std::uint8_t*>(out), outMax, outLength));
}

ResultCode Base64EncodeFinal(Base64Context& context, char* out, std::uint32_t* outLength, std::uint32_t outMax) {
  return ToResultCode(EncodeFinal(&context, reinterpret_cast<std::uint8_t*>(out), outMax, outLength));
}

ResultCode Base64DecodeUpdate(Base64Context& context, std::uint8_t* out, std::uint32_t* outLength, std::uint32_t outMax,
                              const char* in, std::uint32_t inLength) {
  return ToResultCode(
      DecodeUpdate(&context, reinterpret_cast<const std::uint8_t*>(in), inLength, out, outMax, outLength));
}

ResultCode Base64DecodeFinal(Base64Context& context, std::uint8_t* out, std::uint32_t* outLength,
                             std::uint32_t outMax) {
  return ToResultCode(DecodeFinal(&context, out, outMax, outLength));
}

}  // namespace kest
