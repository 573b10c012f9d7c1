// RC5, CBC and the padding, at the toolkit's level.
#include "crypto/rc5.h"

#include <gtest/gtest.h>

#include "support/toolkit.h"

namespace kest {
namespace {

using testing::Algorithm;
using testing::Bytes;
using testing::ForEachSplit;
using testing::ForEachVector;
using testing::Key;
using testing::Pieces;
using testing::RunPieces;
using testing::SomeBytes;
using testing::VectorRecord;

const Bytes usualKey = SomeBytes(128, 5);
const Bytes usualIv = SomeBytes(8, 6);

// One message through a fresh algorithm object.
class Rc5 {
 public:
  explicit Rc5(Direction way, const Bytes& keyBytes = usualKey, const Bytes& iv = usualIv, std::uint32_t rounds = 20)
      : direction(way), block{16, rounds, 32, iv.data()}, algorithm(rc5CbcPadDescriptor, &block) {
    const Key key(byteStringKeyDescriptor, keyBytes);
    EXPECT_EQ(algorithm.Initialise(direction, key), 0);
  }
  ResultCode Run(const Pieces& pieces, Bytes* out, std::size_t outMax = 1 << 16) {
    return RunPieces(algorithm, direction, pieces, out, outMax);
  }
  ResultCode Update(const Bytes& in, Bytes& area, std::uint32_t* written) {
    return UpdateAlgorithm(algorithm, direction, in.data(), static_cast<std::uint32_t>(in.size()), area.data(),
                           static_cast<std::uint32_t>(area.size()), written);
  }
  ResultCode Final(Bytes& area, std::uint32_t* written) {
    return FinishAlgorithm(algorithm, direction, area.data(), static_cast<std::uint32_t>(area.size()), written);
  }

 private:
  Direction direction;
  Rc5ParameterBlock block;
  Algorithm algorithm;
};

Bytes Encipher(const Bytes& plain) {
  Bytes cipher;
  EXPECT_EQ(Rc5(Direction::encipher).Run({plain}, &cipher), 0);
  return cipher;
}

// Enciphers whole blocks without padding, so that a test chooses the last bytes.
Bytes EncipherRaw(const Bytes& blocks) {
  static Rc5Key key;
  Rc5Chain chain;
  Rc5ExpandKey(key, 20, usualKey.data(), static_cast<std::uint32_t>(usualKey.size()));
  Rc5BeginChain(chain, usualIv.data());
  Bytes cipher(blocks.size());
  Rc5EncipherBlocks(key, chain, blocks.data(), cipher.data(), static_cast<std::uint32_t>(blocks.size() / 8));
  return cipher;
}

TEST(Rc5Cbc, VectorsBothWays) {
  ForEachVector("rc5_cbc.txt", [](VectorRecord& record) {
    static Rc5Key key;
    const Bytes keyBytes = record.Hex("Key"), iv = record.Hex("IV"), plain = record.Hex("Plain");
    const Bytes cipher = record.Hex("Cipher");
    Rc5ExpandKey(key, record.Number("Rounds"), keyBytes.data(), static_cast<std::uint32_t>(keyBytes.size()));
    Rc5Chain chain;
    Bytes out(plain.size());
    Rc5BeginChain(chain, iv.data());
    Rc5EncipherBlocks(key, chain, plain.data(), out.data(), static_cast<std::uint32_t>(plain.size() / 8));
    EXPECT_EQ(out, cipher);
    Rc5BeginChain(chain, iv.data());
    Rc5DecipherBlocks(key, chain, cipher.data(), out.data(), static_cast<std::uint32_t>(cipher.size() / 8));
    EXPECT_EQ(out, plain);
  });
}

TEST(Rc5Cbc, BlocksMayBeChangedInPlaceAndAnyNumberAtOnce) {
  static Rc5Key key;
  Rc5ExpandKey(key, 20, usualKey.data(), static_cast<std::uint32_t>(usualKey.size()));
  for (std::uint32_t blocks = 0; blocks <= 19; ++blocks) {
    const Bytes plain = SomeBytes(8 * blocks);
    Bytes single(plain.size()), bytes = plain;
    Rc5Chain chain;
    Rc5BeginChain(chain, usualIv.data());
    for (std::size_t at = 0; at < plain.size(); at += 8) Rc5EncipherBlocks(key, chain, &plain[at], &single[at], 1);
    Rc5BeginChain(chain, usualIv.data());
    Rc5EncipherBlocks(key, chain, bytes.data(), bytes.data(), blocks);
    EXPECT_EQ(bytes, single) << blocks;
    Rc5BeginChain(chain, usualIv.data());
    Rc5DecipherBlocks(key, chain, bytes.data(), bytes.data(), blocks);
    EXPECT_EQ(bytes, plain) << blocks;
  }
}

TEST(Rc5CbcPad, VectorsBothWaysInEverySplit) {
  ForEachVector("rc5_cbc_pad.txt", [](VectorRecord& record) {
    const Bytes key = record.Hex("Key"), iv = record.Hex("IV"), plain = record.Hex("Plain");
    const Bytes cipher = record.Hex("Cipher");
    const std::uint32_t rounds = record.Number("Rounds");
    ForEachSplit(plain, [&](const Pieces& pieces) {
      Bytes out;
      EXPECT_EQ(Rc5(Direction::encipher, key, iv, rounds).Run(pieces, &out), 0);
      EXPECT_EQ(out, cipher);
    });
    ForEachSplit(cipher, [&](const Pieces& pieces) {
      Bytes out;
      EXPECT_EQ(Rc5(Direction::decipher, key, iv, rounds).Run(pieces, &out), 0);
      EXPECT_EQ(out, plain);
    });
  });
}

TEST(Rc5CbcPad, EveryLengthComesBackInEverySplit) {
  for (std::size_t length = 0; length <= 41; ++length) {
    const Bytes plain = SomeBytes(length);
    const Bytes cipher = Encipher(plain);
    EXPECT_EQ(cipher.size(), length / 8 * 8 + 8);
    ForEachSplit(plain, [&](const Pieces& pieces) {
      Bytes out;
      ASSERT_EQ(Rc5(Direction::encipher).Run(pieces, &out), 0);
      ASSERT_EQ(out, cipher);
    });
    ForEachSplit(cipher, [&](const Pieces& pieces) {
      Bytes out;
      ASSERT_EQ(Rc5(Direction::decipher).Run(pieces, &out), 0);
      ASSERT_EQ(out, plain);
    });
  }
}

TEST(Rc5CbcPad, EveryNumberOfRoundsComesBack) {
  const Bytes plain = SomeBytes(40);
  Bytes before;
  for (std::uint32_t rounds = 0; rounds <= 255; ++rounds) {
    Bytes cipher, out;
    ASSERT_EQ(Rc5(Direction::encipher, usualKey, usualIv, rounds).Run({plain}, &cipher), 0);
    ASSERT_EQ(Rc5(Direction::decipher, usualKey, usualIv, rounds).Run({cipher}, &out), 0);
    ASSERT_EQ(out, plain) << rounds;
    ASSERT_NE(cipher, before) << rounds;
    before = cipher;
  }
}

TEST(Rc5CbcPad, EveryKeyLengthFrom0To255ComesBack) {
  const Bytes plain = SomeBytes(20);
  for (std::size_t length = 0; length <= 255; ++length) {
    const Bytes key = SomeBytes(length, 9);
    Bytes cipher, out;
    ASSERT_EQ(Rc5(Direction::encipher, key).Run({plain}, &cipher), 0);
    ASSERT_EQ(Rc5(Direction::decipher, key).Run({cipher}, &out), 0);
    ASSERT_EQ(out, plain) << length;
  }
}

TEST(Rc5CbcPad, NothingEnciphersToOneBlockOfEights) {
  EXPECT_EQ(Encipher({}), EncipherRaw(Bytes(8, 8)));
}

TEST(Rc5CbcPad, EightBytesEncipherToSixteen) {
  Bytes padded = SomeBytes(8);
  padded.insert(padded.end(), 8, 8);
  EXPECT_EQ(Encipher(SomeBytes(8)), EncipherRaw(padded));
}

TEST(Rc5CbcPad, LastByteOutside1To8Gives524) {
  for (int last = 0; last < 256; ++last) {
    Bytes block(16, static_cast<std::uint8_t>(last));
    Bytes out;
    const ResultCode code = Rc5(Direction::decipher).Run({EncipherRaw(block)}, &out);
    EXPECT_EQ(code, last >= 1 && last <= 8 ? 0 : 524) << last;
  }
}

TEST(Rc5CbcPad, AnyWrongPaddingByteGives524AndNoOtherByteDoes) {
  for (std::uint8_t padding = 1; padding <= 8; ++padding) {
    for (std::size_t at = 0; at < 7; ++at) {
      Bytes block = SomeBytes(8, 3);
      for (std::size_t i = 8 - padding; i < 8; ++i) block[i] = padding;
      block[at] = static_cast<std::uint8_t>(block[at] ^ 0x80);
      Bytes out;
      const ResultCode code = Rc5(Direction::decipher).Run({EncipherRaw(block)}, &out);
      EXPECT_EQ(code, at >= 8U - padding ? 524 : 0) << int{padding} << " " << at;
      if (code == 0) {
        EXPECT_EQ(out, Bytes(block.begin(), block.end() - padding));
      }
    }
  }
}

TEST(Rc5CbcPad, PartOfABlockAndNothingGive525) {
  const Bytes cipher = Encipher(SomeBytes(20));
  for (std::size_t length = 0; length < cipher.size(); ++length) {
    if (length % 8 == 0 && length != 0) continue;
    Bytes out;
    const Bytes part(cipher.begin(), cipher.begin() + static_cast<std::ptrdiff_t>(length));
    EXPECT_EQ(Rc5(Direction::decipher).Run({part}, &out), 525) << length;
  }
}

TEST(Rc5CbcPad, OutputBelowThePromisedBlocksGives536BeforeAnythingIsWritten) {
  Rc5 cipher(Direction::encipher);
  Bytes area(15, 0xEE);
  std::uint32_t written = 9;
  ASSERT_EQ(cipher.Update(SomeBytes(3), area, &written), 0);
  EXPECT_EQ(written, 0U);
  EXPECT_EQ(cipher.Update(SomeBytes(13), area, &written), 536);
  EXPECT_EQ(written, 0U);
  EXPECT_EQ(area, Bytes(15, 0xEE));
  Bytes room(16);
  EXPECT_EQ(cipher.Update(SomeBytes(13), room, &written), 0);
  EXPECT_EQ(written, 16U);
  Bytes seven(7);
  EXPECT_EQ(cipher.Final(seven, &written), 536);
  EXPECT_EQ(cipher.Final(room, &written), 0);
}

TEST(Rc5CbcPad, UnpaddedBytesThatDoNotFitGive536) {
  const Bytes plain = SomeBytes(13), cipher = Encipher(plain);
  Bytes out;
  EXPECT_EQ(Rc5(Direction::decipher).Run({cipher}, &out, 12), 536);
  EXPECT_EQ(Rc5(Direction::decipher).Run({cipher}, &out, 7), 536);
  EXPECT_EQ(Rc5(Direction::decipher).Run({cipher}, &out, 13), 0);
  EXPECT_EQ(out, plain);
}

TEST(Rc5CbcPad, DecipheringKeepsTheLastBlockBack) {
  const Bytes cipher = Encipher(SomeBytes(20));
  Rc5 decipher(Direction::decipher);
  Bytes area(64);
  std::uint32_t written;
  ASSERT_EQ(decipher.Update(Bytes(cipher.begin(), cipher.begin() + 8), area, &written), 0);
  EXPECT_EQ(written, 0U);
  ASSERT_EQ(decipher.Update({cipher[8]}, area, &written), 0);
  EXPECT_EQ(written, 8U);
  ASSERT_EQ(decipher.Update({}, area, &written), 0);
  EXPECT_EQ(written, 0U);
}

TEST(Rc5CbcPad, FinalBeginsTheNextMessage) {
  Rc5 cipher(Direction::encipher);
  Bytes first, second;
  ASSERT_EQ(cipher.Run({SomeBytes(11)}, &first), 0);
  ASSERT_EQ(cipher.Run({SomeBytes(11)}, &second), 0);
  EXPECT_EQ(first, second);
  Rc5 decipher(Direction::decipher);
  Bytes plain;
  ASSERT_EQ(decipher.Run({first}, &plain), 0);
  plain.clear();
  ASSERT_EQ(decipher.Run({second}, &plain), 0);
  EXPECT_EQ(plain, SomeBytes(11));
}

}  // namespace
}  // namespace kest
