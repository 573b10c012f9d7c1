#include "transport/rsa_sealing.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "core/exception.h"
#include "crypto/rsa_public_cipher.h"
#include "transport/server_settings.h"

namespace kest {
namespace {

// `message` laid out in blocks of `blockSize` bytes.
ByteBuffer LayOut(const ByteBuffer& message, std::uint32_t blockSize) {
  const std::uint32_t chunkSize = blockSize - 1;
  const std::uint32_t length = message.Length();
  const std::uint64_t blocks = (std::uint64_t{length} + chunkSize - 1) / chunkSize;
  if (blocks * blockSize > std::numeric_limits<std::uint32_t>::max()) throw Qor::MemoryException();
  ByteBuffer laidOut;
  laidOut.AppendCopies(0, static_cast<std::uint32_t>(blocks * blockSize));
  std::uint8_t* block = laidOut.TakeBuffer(laidOut.Length());
  for (std::uint32_t done = 0; done < length; done += chunkSize, block += blockSize) {
    std::memcpy(block + 1, message.Bytes() + done, std::min(chunkSize, length - done));
  }
  laidOut.ReturnBuffer();
  return laidOut;
}

bool EncipherBlocks(RsaPublicCipher& key, const ByteBuffer& blocks, std::uint32_t blockSize, std::uint8_t* out) {
  const std::uint32_t total = blocks.Length();
  for (std::uint32_t done = 0; done < total; done += blockSize) {
    const int written = key.EncipherUpdate(blocks.Bytes() + done, blockSize, out + done, total - done);
    if (written != static_cast<int>(blockSize)) return false;
  }
  return key.EncipherFinal(out, 0) == 0;
}

}  // namespace

ByteBuffer SealUnderServerKey(const ByteBuffer& message) {
  RsaPublicCipher key;
  if (!key.CopyKeyFrom(Settings().serverPublicKey)) return ByteBuffer();
  const int blockSize = key.BlockSize();
  // A block holds its zero byte and at least one byte of the message.
  if (blockSize < 2 || !key.BeginEncipher()) return ByteBuffer();
  const ByteBuffer blocks = LayOut(message, static_cast<std::uint32_t>(blockSize));
  ByteBuffer sealed;
  std::uint8_t* out = sealed.TakeBuffer(blocks.Length());
  const bool isSealed = EncipherBlocks(key, blocks, static_cast<std::uint32_t>(blockSize), out);
  sealed.ReturnBuffer();
  return isSealed ? sealed : ByteBuffer();
}

}  // namespace kest
