#include "crypto/base64.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "core/byte_buffer.h"
#include "support/toolkit.h"

namespace kest {
namespace {

using testing::Algorithm;
using testing::Bytes;
using testing::BytesOf;
using testing::ForEachSplit;
using testing::ForEachVector;
using testing::Pieces;
using testing::RunPieces;
using testing::SomeBytes;
using testing::VectorRecord;

std::string TextOf(const Bytes& bytes) {
  return std::string(bytes.begin(), bytes.end());
}

std::string Encode(const Pieces& pieces) {
  Algorithm algorithm(base64Descriptor);
  Bytes out;
  EXPECT_EQ(algorithm.Initialise(Direction::encipher), 0);
  EXPECT_EQ(RunPieces(algorithm, Direction::encipher, pieces, &out), 0);
  return TextOf(out);
}

ResultCode Decode(const Pieces& pieces, Bytes* out, std::size_t outMax = 1 << 16) {
  Algorithm algorithm(base64Descriptor);
  EXPECT_EQ(algorithm.Initialise(Direction::decipher), 0);
  return RunPieces(algorithm, Direction::decipher, pieces, out, outMax);
}

// Decodes in every split and expects the same each time.
void ExpectDecoded(const std::string& text, const Bytes& expected) {
  ForEachSplit(BytesOf(text), [&](const Pieces& pieces) {
    Bytes out;
    EXPECT_EQ(Decode(pieces, &out), 0) << text;
    EXPECT_EQ(out, expected) << text;
  });
}

void ExpectRefused(const std::string& text, int code) {
  ForEachSplit(BytesOf(text), [&](const Pieces& pieces) {
    Bytes out;
    EXPECT_EQ(Decode(pieces, &out), code) << text;
  });
}

TEST(Base64, VectorsBothWaysInEverySplit) {
  ForEachVector("base64.txt", [](VectorRecord& record) {
    const std::string text = record.Text("Text"), base64 = record.Text("Base64");
    ForEachSplit(BytesOf(text), [&](const Pieces& pieces) { EXPECT_EQ(Encode(pieces), base64); });
    ExpectDecoded(base64, BytesOf(text));
  });
}

TEST(Base64, EveryLengthComesBackInEverySplit) {
  for (std::size_t length = 0; length <= 50; ++length) {
    const Bytes in = SomeBytes(length);
    const std::string text = Encode({in});
    EXPECT_EQ(text.size(), (length + 2) / 3 * 4);
    ForEachSplit(in, [&](const Pieces& pieces) { ASSERT_EQ(Encode(pieces), text); });
    ExpectDecoded(text, in);
  }
}

TEST(Base64, AlphabetHasItsOrder) {
  Bytes in;
  for (int i = 0; i < 64; i += 4) {
    const int group = i << 18 | (i + 1) << 12 | (i + 2) << 6 | (i + 3);
    for (const int shift : {16, 8, 0}) in.push_back(static_cast<std::uint8_t>(group >> shift));
  }
  EXPECT_EQ(Encode({in}), "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");
}

TEST(Base64Encoder, TwentyBytesGive28CharactersAnd48Give64WithoutPad) {
  const std::string twenty = Encode({SomeBytes(20)}), fortyEight = Encode({SomeBytes(48)});
  EXPECT_EQ(twenty.size(), 28U);
  EXPECT_EQ(twenty.substr(27), "=");
  EXPECT_EQ(fortyEight.size(), 64U);
  EXPECT_EQ(fortyEight.find('='), std::string::npos);
}

TEST(Base64Encoder, TooSmallOutputGives536BeforeAnythingIsWrittenOrTaken) {
  Base64Context context{};
  std::string area(8, '?');
  std::uint32_t length = 9;
  const Bytes in = BytesOf("foobar");
  ASSERT_EQ(Base64EncodeUpdate(context, area.data(), &length, 0, in.data(), 2), 0);
  EXPECT_EQ(length, 0U);
  length = 9;
  EXPECT_EQ(Base64EncodeUpdate(context, area.data(), &length, 7, in.data() + 2, 4), 536);
  EXPECT_EQ(length, 0U);
  EXPECT_EQ(area, "????????");
  EXPECT_EQ(Base64EncodeUpdate(context, area.data(), &length, 8, in.data() + 2, 4), 0);
  EXPECT_EQ(area, "Zm9vYmFy");
}

TEST(Base64Encoder, FinalWithLessThan4CharactersOfRoomGives536) {
  Base64Context context{};
  char area[4];
  std::uint32_t length;
  const std::uint8_t byte = 'f';
  ASSERT_EQ(Base64EncodeUpdate(context, area, &length, 0, &byte, 1), 0);
  EXPECT_EQ(Base64EncodeFinal(context, area, &length, 3), 536);
  EXPECT_EQ(Base64EncodeFinal(context, area, &length, 4), 0);
  EXPECT_EQ(std::string(area, 4), "Zg==");
  EXPECT_EQ(Base64EncodeFinal(context, area, &length, 0), 0) << "nothing is held any more";
  EXPECT_EQ(length, 0U);
}

TEST(Base64Decoder, BreaksAndBlanksAreSkipped) {
  ExpectDecoded("Zm9v\r\nYmFy\r\n", BytesOf("foobar"));
  ExpectDecoded(" Z\tm 9\nv\rY m F y ", BytesOf("foobar"));
  ExpectDecoded("Zg\r\n= =\r\n", BytesOf("f"));
  ExpectDecoded("\r\n\t ", {});
}

TEST(Base64Decoder, LongTextInLinesGivesTheSameBytes) {
  const Bytes in = SomeBytes(3000);
  const std::string text = Encode({in});
  std::string lines;
  for (std::size_t at = 0; at < text.size(); at += 76) lines += text.substr(at, 76) + "\r\n";
  Bytes out;
  EXPECT_EQ(Decode({BytesOf(lines)}, &out), 0);
  EXPECT_EQ(out, in);
}

TEST(Base64Decoder, PadInThirdPlaceGivesOneByteWhateverFollows) {
  ExpectDecoded("QQ==", {0x41});
  ExpectDecoded("QQ=x", {0x41});
  ExpectDecoded("QQ=Q", {0x41});
}

TEST(Base64Decoder, PadInFourthPlaceGivesTwoBytes) {
  ExpectDecoded("QUI=", {0x41, 0x42});
}

TEST(Base64Decoder, BitsBelowThePadAreNotLookedAt) {
  ExpectDecoded("QR==", {0x41});
  ExpectDecoded("QUJ=", {0x41, 0x42});
}

TEST(Base64Decoder, PadInFirstOrSecondPlaceGives524) {
  ExpectRefused("=QQQ", 524);
  ExpectRefused("Q=QQ", 524);
  ExpectRefused("====", 524);
}

TEST(Base64Decoder, PadInsideTheDataGives524) {
  ExpectRefused("QQ==QUJD", 524);
  ExpectRefused("QUI=QUJD", 524);
  ExpectRefused("QQ=QQUJD", 524);
  ExpectRefused("Q=QQQUJD", 524);
  ExpectRefused("=QQQQUJD", 524);
  ExpectRefused("QUJDQQ==QUJDQUJD", 524);
}

TEST(Base64Decoder, EndInsideAGroupGives525) {
  ExpectRefused("Q", 525);
  ExpectRefused("QU", 525);
  ExpectRefused("QUJ", 525);
  ExpectRefused("QUJDQ", 525);
  ExpectRefused("QUJDQUJDQUJ\r\n", 525);
}

TEST(Base64Decoder, EveryForeignCharacterGives524InEveryPlace) {
  const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=\r\n \t";
  for (int code = 0; code < 256; ++code) {
    const char character = static_cast<char>(code);
    if (alphabet.find(character) != std::string::npos) continue;
    for (const std::size_t at : {0, 1, 3, 4, 9, 15}) {
      std::string text = "QUJDQUJDQUJDQUJD";
      text[at] = character;
      Bytes out;
      EXPECT_EQ(Decode({BytesOf(text)}, &out), 524) << code << " " << at;
    }
  }
}

TEST(Base64Decoder, OutputThatDoesNotFitGives536) {
  const std::string text = Encode({SomeBytes(14)});
  for (std::size_t room = 0; room < 14; ++room) {
    Bytes out;
    EXPECT_EQ(Decode({BytesOf(text)}, &out, room), 536) << room;
  }
  Bytes out;
  EXPECT_EQ(Decode({BytesOf(text)}, &out, 14), 0);
}

// A context in a block of its own, so that a sanitizer sees what is written behind it.
struct HeapContext {
  std::unique_ptr<Base64Context> context = std::make_unique<Base64Context>();

  ResultCode Update(const Bytes& in, Bytes* out, std::uint32_t room) {
    Bytes area(room);
    std::uint32_t length = 99;
    const ResultCode code =
        Base64DecodeUpdate(*context, area.data(), &length, room, reinterpret_cast<const char*>(in.data()),
                           static_cast<std::uint32_t>(in.size()));
    EXPECT_LE(length, room);
    EXPECT_LE(context->count, 4U);
    out->insert(out->end(), area.begin(), area.begin() + length);
    return code;
  }
  ResultCode Final(Bytes* out) {
    Bytes area(3);
    std::uint32_t length = 99;
    const ResultCode code = Base64DecodeFinal(*context, area.data(), &length, 3);
    EXPECT_LE(length, 3U);
    out->insert(out->end(), area.begin(), area.begin() + length);
    return code;
  }
};

TEST(Base64Decoder, UpdateAfter536GoesOnWithTheCharacterThatFailed) {
  const Bytes plain = BytesOf("foobarbazqux!");
  const Bytes rest = BytesOf(Encode({plain}).substr(4));
  ForEachSplit(rest, [&](const Pieces& pieces) {
    HeapContext decoder;
    Bytes out;
    ASSERT_EQ(decoder.Update(BytesOf("Zm9v"), &out, 0), 0);
    for (const std::uint32_t room : {0, 2, 1}) EXPECT_EQ(decoder.Update(rest, &out, room), 536) << room;
    EXPECT_TRUE(out.empty());
    for (const Bytes& piece : pieces) ASSERT_EQ(decoder.Update(piece, &out, 64), 0);
    ASSERT_EQ(decoder.Final(&out), 0);
    EXPECT_EQ(out, plain);
  });
}

TEST(Base64Decoder, UpdatesAfter524ForAPadKeepFailing) {
  const Bytes rest = BytesOf("QUJDQUJDQUJDQUJD");
  for (const char* group : {"QQ==", "QUI=", "QQ=Q", "Q=QQ", "=QQQ"}) {
    ForEachSplit(rest, [&](const Pieces& pieces) {
      HeapContext decoder;
      Bytes out;
      ASSERT_EQ(decoder.Update(BytesOf(group), &out, 64), 0);
      EXPECT_EQ(decoder.Update(BytesOf("Q"), &out, 64), 524) << group;
      for (const Bytes& piece : pieces) EXPECT_EQ(decoder.Update(piece, &out, 64), piece.empty() ? 0 : 524) << group;
      EXPECT_TRUE(out.empty()) << group;
    });
  }
}

TEST(Base64Decoder, LastCompleteGroupWaitsForTheFinalCall) {
  Base64Context context{};
  Bytes out(16);
  std::uint32_t length;
  ASSERT_EQ(Base64DecodeUpdate(context, out.data(), &length, 16, "QUJDQUJD", 8), 0);
  EXPECT_EQ(length, 3U);
  ASSERT_EQ(Base64DecodeFinal(context, out.data() + 3, &length, 13), 0);
  EXPECT_EQ(length, 3U);
}

TEST(Base64Decoder, AGroupFillsTheRoomThatIsLeft) {
  // With and without four characters behind it.
  for (const char* text : {"QUJDQ", "QUJDQUJD"}) {
    Base64Context context{};
    Bytes out(3);
    std::uint32_t length;
    EXPECT_EQ(Base64DecodeUpdate(context, out.data(), &length, 3, text, static_cast<std::uint32_t>(std::strlen(text))), 0);
    EXPECT_EQ(length, 3U);
    EXPECT_EQ(out, BytesOf("ABC"));
  }
}

TEST(Base64Decoder, FinalLeavesTheContextReadyForTheNextMessage) {
  for (const char* text : {"QUJD", "QUI=", "QQ=="}) {
    HeapContext decoder;
    Bytes out;
    for (int message = 0; message < 2; ++message) {
      ASSERT_EQ(decoder.Update(BytesOf(text), &out, 0), 0) << text;
      ASSERT_EQ(decoder.Final(&out), 0) << text;
      EXPECT_EQ(decoder.context->count, 0U) << text;
    }
    EXPECT_EQ(decoder.Final(&out), 0) << "nothing is held any more";
    const Bytes once(out.begin(), out.begin() + static_cast<std::ptrdiff_t>(out.size() / 2));
    EXPECT_EQ(Bytes(out.begin() + static_cast<std::ptrdiff_t>(once.size()), out.end()), once) << text;
  }
}

TEST(Base64Decoder, FinalWithNothingHeldWritesNothing) {
  Base64Context context{};
  std::uint32_t length = 9;
  EXPECT_EQ(Base64DecodeFinal(context, nullptr, &length, 0), 0);
  EXPECT_EQ(length, 0U);
}

TEST(ByteBufferBase64, EncodesAndDecodes) {
  const Bytes in = SomeBytes(136);
  ByteBuffer buffer(in.data(), 136);
  String text("old");
  ASSERT_TRUE(buffer.EncodeBase64(text));
  EXPECT_EQ(std::string(text.Text()), Encode({in}));
  EXPECT_EQ(text.Length(), std::string(text.Text()).size());
  ByteBuffer decoded("other", 5);
  ASSERT_TRUE(decoded.DecodeBase64(text));
  EXPECT_EQ(decoded, buffer);
}

TEST(ByteBufferBase64, EveryLengthComesBack) {
  for (std::uint32_t length = 0; length < 200; ++length) {
    const Bytes in = SomeBytes(length);
    const ByteBuffer buffer(in.data(), length);
    String text;
    ByteBuffer decoded;
    ASSERT_TRUE(buffer.EncodeBase64(text));
    ASSERT_TRUE(decoded.DecodeBase64(text));
    ASSERT_EQ(decoded, buffer) << length;
  }
}

TEST(ByteBufferBase64, TextIsReservedAtOnce) {
  const ByteBuffer buffer(SomeBytes(300).data(), 300);
  String text;
  ASSERT_TRUE(buffer.EncodeBase64(text));
  EXPECT_EQ(text.Length(), 400U);
  EXPECT_EQ(text.Storage().Capacity(), 450U) << "room for 300 / 3 * 4 + 8 characters, in steps of 50";
}

TEST(ByteBufferBase64, NothingIsAnEmptyText) {
  String text("old");
  EXPECT_TRUE(ByteBuffer().EncodeBase64(text));
  EXPECT_TRUE(text.IsEmpty());
  ByteBuffer buffer("old", 3);
  EXPECT_TRUE(buffer.DecodeBase64(String()));
  EXPECT_TRUE(buffer.IsEmpty());
}

TEST(ByteBufferBase64, BadTextEmptiesTheBuffer) {
  for (const char* text : {"QUJ", "QQ==QUJD", "Q*==", "===="}) {
    ByteBuffer buffer("old", 3);
    EXPECT_FALSE(buffer.DecodeBase64(text)) << text;
    EXPECT_TRUE(buffer.IsEmpty()) << text;
  }
}

TEST(ByteBufferBase64, DecodingLeavesSharersAlone) {
  ByteBuffer buffer("old", 3);
  const ByteBuffer sharer(buffer);
  EXPECT_TRUE(buffer.DecodeBase64("QUJD"));
  EXPECT_EQ(sharer, ByteBuffer("old", 3));
}

TEST(ByteBufferBase64, LentMemoryIsWrittenWhenTheBytesFit) {
  std::uint8_t memory[7];
  ByteBuffer buffer = ByteBuffer::External(memory, 6);
  memory[6] = 0xEE;
  EXPECT_TRUE(buffer.DecodeBase64("Zm9vYmFy"));
  EXPECT_EQ(buffer, ByteBuffer("foobar", 6));
  EXPECT_EQ(memory[6], 0xEE);
  EXPECT_FALSE(buffer.DecodeBase64("Zm9vYmFyIQ=="));
  EXPECT_TRUE(buffer.IsEmpty());
  EXPECT_EQ(memory[6], 0xEE);
}

}  // namespace
}  // namespace kest
