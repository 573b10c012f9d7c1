// The frame: what each object answers in each of its states, and how methods are chosen.
#include "support/toolkit.h"

#include <gtest/gtest.h>

#include "crypto/algorithm_object.h"
#include "crypto/md5.h"
#include "crypto/message_digest.h"
#include "crypto/operations.h"
#include "crypto/random_object.h"

namespace kest {
namespace {

using testing::Algorithm;
using testing::Bytes;
using testing::Key;

const std::uint8_t iv[8] = {1, 2, 3, 4, 5, 6, 7, 8};
const Rc5ParameterBlock usualParameters = {16, 20, 32, iv};

ResultCode Update(AlgorithmObject* object, Direction direction) {
  std::uint8_t out[64];
  std::uint32_t length;
  return UpdateAlgorithm(object, direction, iv, sizeof iv, out, sizeof out, &length);
}

ResultCode Final(AlgorithmObject* object, Direction direction) {
  std::uint8_t out[64];
  std::uint32_t length;
  return FinishAlgorithm(object, direction, out, sizeof out, &length);
}

void ExpectUninitialised(AlgorithmObject* object, Direction direction) {
  EXPECT_EQ(Update(object, direction), 514);
  EXPECT_EQ(Final(object, direction), 514);
}

TEST(ResultCodes, MethodResultsAreMappedByTheFixedTable) {
  const int expected[][2] = {{0, 0},     {1, 519}, {2, 520},  {3, 521},  {4, 522},  {5, 524},   {6, 525},
                             {7, 533},   {9, 535}, {10, 536}, {11, 534}, {12, 528}, {13, 527},  {15, 513},
                             {128, 518}, {8, 520}, {14, 520}, {16, 520}, {-1, 520}, {127, 520}, {129, 520}};
  for (const auto& pair : expected) EXPECT_EQ(static_cast<int>(ToResultCode(pair[0])), pair[1]) << pair[0];
}

TEST(ResultCodes, NumbersAreTheFixedOnes) {
  EXPECT_EQ(resultAlgorithmAlreadySet, 512);
  EXPECT_EQ(resultNotInitialised, 514);
  EXPECT_EQ(resultAlgorithmNotSet, 515);
  EXPECT_EQ(resultAlgorithmObjectInvalid, 516);
  EXPECT_EQ(resultOperationInvalid, 517);
  EXPECT_EQ(resultNoMemory, 518);
  EXPECT_EQ(resultBadData, 524);
  EXPECT_EQ(resultBadLength, 525);
  EXPECT_EQ(resultKeyObjectInvalid, 530);
  EXPECT_EQ(resultKeyInfoFailed, 531);
  EXPECT_EQ(resultModulusLength, 533);
  EXPECT_EQ(resultItemMissing, 535);
  EXPECT_EQ(resultOutputTooSmall, 536);
  EXPECT_EQ(resultLengthOver32767, 537);
  EXPECT_EQ(resultRandomNotInitialised, 538);
  EXPECT_EQ(resultRandomObjectInvalid, 539);
  EXPECT_EQ(resultBadParameters, 541);
  EXPECT_EQ(resultBadKeyData, 542);
  EXPECT_EQ(resultNoMethod, 545);
}

TEST(AlgorithmObject, SecondDescriptorGives512AndTheFirstStays) {
  Algorithm algorithm(sha1Descriptor);
  EXPECT_EQ(SetAlgorithmInfo(algorithm, md5Descriptor, nullptr), 512);
  EXPECT_EQ(static_cast<AlgorithmObject*>(algorithm)->descriptor, &sha1Descriptor);
}

TEST(AlgorithmObject, UpdateAndFinalBeforeInitialisationGive514) {
  Algorithm algorithm(sha1Descriptor);
  EXPECT_EQ(Update(algorithm, Direction::digest), 514);
  EXPECT_EQ(Final(algorithm, Direction::digest), 514);
}

TEST(AlgorithmObject, OperationsWithoutDescriptorGive515) {
  Algorithm algorithm;
  std::uint8_t out[20];
  std::uint32_t length;
  EXPECT_EQ(DigestInit(algorithm, libraryChooser), 515);
  EXPECT_EQ(DigestUpdate(algorithm, iv, 1), 515);
  EXPECT_EQ(DigestFinal(algorithm, out, &length, 20), 515);
  EXPECT_EQ(algorithm.Initialise(Direction::digest), 515);
  EXPECT_EQ(Update(algorithm, Direction::digest), 515);
  EXPECT_EQ(Final(algorithm, Direction::digest), 515);
}

TEST(AlgorithmObject, NullGives516) {
  EXPECT_EQ(SetAlgorithmInfo(nullptr, md5Descriptor, nullptr), 516);
  EXPECT_EQ(InitialiseAlgorithm(nullptr, Direction::digest, nullptr, libraryChooser), 516);
  EXPECT_EQ(Update(nullptr, Direction::digest), 516);
  EXPECT_EQ(Final(nullptr, Direction::digest), 516);
  EXPECT_EQ(DigestInit(nullptr, libraryChooser), 516);
}

TEST(AlgorithmObject, CopyOfAnObjectFailsTheSelfCheck) {
  Algorithm algorithm(md5Descriptor);
  ASSERT_EQ(algorithm.Initialise(Direction::digest), 0);
  AlgorithmObject copy = *static_cast<AlgorithmObject*>(algorithm);
  EXPECT_EQ(Update(&copy, Direction::digest), 516);
  EXPECT_EQ(SetAlgorithmInfo(&copy, md5Descriptor, nullptr), 516);
  EXPECT_EQ(DigestUpdate(&copy, iv, 1), 516);
  // It is not freed either: the memory is not its own.
  AlgorithmObject* dropped = &copy;
  DestroyAlgorithm(&dropped);
  EXPECT_EQ(dropped, nullptr);
}

TEST(AlgorithmObject, WrongTagGives516) {
  Algorithm algorithm(md5Descriptor);
  AlgorithmObject* object = algorithm;
  object->tag ^= 1;
  EXPECT_EQ(algorithm.Initialise(Direction::digest), 516);
  object->tag ^= 1;
  EXPECT_EQ(algorithm.Initialise(Direction::digest), 0);
}

TEST(AlgorithmObject, OtherDirectionGives517) {
  const Key key(byteStringKeyDescriptor, {1, 2, 3});
  Algorithm algorithm(rc5CbcPadDescriptor, &usualParameters);
  ASSERT_EQ(algorithm.Initialise(Direction::encipher, key), 0);
  EXPECT_EQ(Update(algorithm, Direction::decipher), 517);
  EXPECT_EQ(Final(algorithm, Direction::decipher), 517);
  EXPECT_EQ(Update(algorithm, Direction::encipher), 0);
}

TEST(AlgorithmObject, DigestOperationsOnAnotherAlgorithmGive517) {
  const Key key(byteStringKeyDescriptor, {1, 2, 3});
  Algorithm algorithm(rc5CbcPadDescriptor, &usualParameters);
  std::uint8_t out[64];
  std::uint32_t length;
  EXPECT_EQ(DigestInit(algorithm, libraryChooser), 517);
  ASSERT_EQ(algorithm.Initialise(Direction::decipher, key), 0);
  EXPECT_EQ(DigestUpdate(algorithm, iv, 8), 517);
  length = 9;
  EXPECT_EQ(DigestFinal(algorithm, out, &length, sizeof out), 517);
  EXPECT_EQ(length, 0U);
}

TEST(AlgorithmObject, RandomMethodHasNoFinalAndGives517) {
  Algorithm algorithm(md5RandomDescriptor);
  ASSERT_EQ(algorithm.Initialise(Direction::digest), 0);
  EXPECT_EQ(Update(algorithm, Direction::digest), 0);
  EXPECT_EQ(Final(algorithm, Direction::digest), 517);
}

TEST(AlgorithmObject, KeyObjectFailingItsSelfCheckGives530) {
  const Key key(byteStringKeyDescriptor, {1, 2, 3});
  const KeyObject copy = *static_cast<KeyObject*>(key);
  Algorithm algorithm(rc5CbcPadDescriptor, &usualParameters);
  EXPECT_EQ(algorithm.Initialise(Direction::encipher, &copy), 530);
}

TEST(AlgorithmObject, ParametersOfRc5AreCheckedWith541) {
  const struct {
    Rc5ParameterBlock block;
    int code;
  } cases[] = {
      {{16, 20, 32, iv}, 0},
      {{0, 20, 32, iv}, 0},
      {{16, 0, 32, iv}, 0},
      {{16, 255, 32, iv}, 0},
      {{17, 20, 32, iv}, 541},
      {{16, 256, 32, iv}, 541},
      {{16, 20, 16, iv}, 541},
      {{16, 20, 64, iv}, 541},
      {{16, 20, 32, nullptr}, 541},
      {{0xFFFFFFFF, 20, 32, iv}, 541},
      {{16, 0xFFFFFFFF, 32, iv}, 541},
  };
  for (const auto& each : cases) {
    Algorithm algorithm;
    EXPECT_EQ(SetAlgorithmInfo(algorithm, rc5CbcPadDescriptor, &each.block), each.code)
        << each.block.version << " " << each.block.rounds << " " << each.block.wordBits;
  }
  Algorithm algorithm;
  EXPECT_EQ(SetAlgorithmInfo(algorithm, rc5CbcPadDescriptor, nullptr), 541);
  // A refused block leaves the object empty.
  EXPECT_EQ(SetAlgorithmInfo(algorithm, rc5CbcPadDescriptor, &usualParameters), 0);
}

TEST(AlgorithmObject, ParametersAreCopied) {
  std::uint8_t changing[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  const Rc5ParameterBlock block = {16, 20, 32, changing};
  const Key key(byteStringKeyDescriptor, {1, 2, 3});
  Algorithm first(rc5CbcPadDescriptor, &block), second(rc5CbcPadDescriptor, &usualParameters);
  changing[0] = 99;
  ASSERT_EQ(first.Initialise(Direction::encipher, key), 0);
  ASSERT_EQ(second.Initialise(Direction::encipher, key), 0);
  Bytes a, b;
  ASSERT_EQ(testing::RunPieces(first, Direction::encipher, {{1, 2}}, &a), 0);
  ASSERT_EQ(testing::RunPieces(second, Direction::encipher, {{1, 2}}, &b), 0);
  EXPECT_EQ(a, b);
}

TEST(AlgorithmObject, KeyMayGoAfterInitialisation) {
  Algorithm algorithm(rc5CbcPadDescriptor, &usualParameters);
  {
    const Key key(byteStringKeyDescriptor, {1, 2, 3});
    ASSERT_EQ(algorithm.Initialise(Direction::encipher, key), 0);
  }
  Bytes out;
  EXPECT_EQ(testing::RunPieces(algorithm, Direction::encipher, {{1}}, &out), 0);
  EXPECT_EQ(out.size(), 8U);
}

TEST(AlgorithmObject, FailedInitialisationLeavesItUninitialised) {
  const Key key(byteStringKeyDescriptor, {1, 2, 3});
  Algorithm algorithm(rc5CbcPadDescriptor, &usualParameters);
  ASSERT_EQ(algorithm.Initialise(Direction::encipher, key), 0);
  EXPECT_EQ(algorithm.Initialise(Direction::encipher, nullptr), 545);
  EXPECT_EQ(Update(algorithm, Direction::encipher), 514);
}

TEST(AlgorithmObject, FailureOfTheMethodEndsTheMessage) {
  Algorithm decoder(base64Descriptor);
  std::uint8_t out[16];
  std::uint32_t length;
  const auto update = [&](const char* text) {
    const Bytes in = testing::BytesOf(text);
    return UpdateAlgorithm(decoder, Direction::decipher, in.data(), static_cast<std::uint32_t>(in.size()), out,
                           sizeof out, &length);
  };
  ASSERT_EQ(decoder.Initialise(Direction::decipher), 0);
  EXPECT_EQ(update("QU*"), 524);
  EXPECT_EQ(update("JD"), 514);
  EXPECT_EQ(Final(decoder, Direction::decipher), 514);
  ASSERT_EQ(decoder.Initialise(Direction::decipher), 0);
  ASSERT_EQ(update("QUJ"), 0);
  EXPECT_EQ(Final(decoder, Direction::decipher), 525);
  EXPECT_EQ(update("D"), 514);
  EXPECT_EQ(Final(decoder, Direction::decipher), 514);
  ASSERT_EQ(decoder.Initialise(Direction::decipher), 0);
  ASSERT_EQ(update("QUJD"), 0);
  EXPECT_EQ(Final(decoder, Direction::decipher), 0);
}

TEST(AlgorithmObject, LackOfRoomKeepsTheMessage) {
  Algorithm decoder(base64Descriptor);
  std::uint8_t out[3];
  std::uint32_t length;
  const Bytes in = testing::BytesOf("QUJD");
  ASSERT_EQ(decoder.Initialise(Direction::decipher), 0);
  ASSERT_EQ(UpdateAlgorithm(decoder, Direction::decipher, in.data(), 4, out, 0, &length), 0);
  EXPECT_EQ(UpdateAlgorithm(decoder, Direction::decipher, in.data(), 4, out, 2, &length), 536);
  EXPECT_EQ(FinishAlgorithm(decoder, Direction::decipher, out, 2, &length), 536);
  EXPECT_EQ(FinishAlgorithm(decoder, Direction::decipher, out, 3, &length), 0);
  EXPECT_EQ(Bytes(out, out + length), testing::BytesOf("ABC"));
}

TEST(Chooser, NothingThatFitsGives545) {
  const Key shortKey(byteStringKeyDescriptor, Bytes(255, 7));
  const Key longKey(byteStringKeyDescriptor, Bytes(256, 7));
  const Key emptyKey;
  Algorithm rc5(rc5CbcPadDescriptor, &usualParameters);
  EXPECT_EQ(rc5.Initialise(Direction::encipher, nullptr), 545);
  EXPECT_EQ(rc5.Initialise(Direction::encipher, emptyKey), 545);
  EXPECT_EQ(rc5.Initialise(Direction::encipher, longKey), 545);
  EXPECT_EQ(rc5.Initialise(Direction::encipher, shortKey), 0);
  Algorithm digest(md5Descriptor);
  EXPECT_EQ(digest.Initialise(Direction::digest, shortKey), 545);
  EXPECT_EQ(digest.Initialise(Direction::encipher, nullptr), 545);
  Algorithm rsa(rsaPublicDescriptor);
  EXPECT_EQ(rsa.Initialise(Direction::encipher, shortKey), 545);
  EXPECT_EQ(rsa.Initialise(Direction::decipher, shortKey), 545);
  const AlgorithmDescriptor unknownDescriptor = {static_cast<AlgorithmType>(99), 16, nullptr};
  Algorithm unknown(unknownDescriptor);
  EXPECT_EQ(unknown.Initialise(Direction::digest, nullptr), 545);
  const AlgorithmChooser nothing = {nullptr, 0};
  EXPECT_EQ(InitialiseAlgorithm(digest, Direction::digest, nullptr, nothing), 545);
}

TEST(Chooser, FirstFittingEntryWins) {
  const AlgorithmMethod methods[] = {
      {AlgorithmType::sha1, Direction::digest, {KeyInfoType::none, 0}, &sha1Operations},
      {AlgorithmType::md5, Direction::encipher, {KeyInfoType::none, 0}, &sha1Operations},
      {AlgorithmType::md5, Direction::digest, {KeyInfoType::byteString, 0}, &sha1Operations},
      {AlgorithmType::md5, Direction::digest, {KeyInfoType::none, 0}, &md5Operations},
      {AlgorithmType::md5, Direction::digest, {KeyInfoType::none, 0}, &sha1Operations},
  };
  const AlgorithmChooser chooser = {methods, 5};
  EXPECT_EQ(FindMethod(chooser, AlgorithmType::md5, Direction::digest, nullptr), &methods[3]);
  const Key key(byteStringKeyDescriptor, Bytes(1000, 1));
  EXPECT_EQ(FindMethod(chooser, AlgorithmType::md5, Direction::digest, key), &methods[2]);
  EXPECT_EQ(FindMethod(chooser, AlgorithmType::md5, Direction::encipher, key), nullptr);
}

int failingResult;
int FailingInit(void*, const AlgorithmParameters&, const KeyObject*) {
  return failingResult;
}

TEST(Chooser, ResultsOfMethodsAreMapped) {
  const AlgorithmOperations operations = {sizeof(Md5Context), FailingInit, md5Operations.update, md5Operations.final,
                                          nullptr};
  const AlgorithmMethod method = {AlgorithmType::md5, Direction::digest, {KeyInfoType::none, 0}, &operations};
  const AlgorithmChooser chooser = {&method, 1};
  Algorithm algorithm(md5Descriptor);
  failingResult = 11;
  ASSERT_EQ(algorithm.Initialise(Direction::digest), 0);
  EXPECT_EQ(InitialiseAlgorithm(algorithm, Direction::digest, nullptr, chooser), 534);
  ExpectUninitialised(algorithm, Direction::digest);
  failingResult = 77;
  EXPECT_EQ(InitialiseAlgorithm(algorithm, Direction::digest, nullptr, chooser), 520);
  ExpectUninitialised(algorithm, Direction::digest);
}

TEST(Chooser, KeyThatTheMethodCannotReadGives524) {
  const AlgorithmMethod methods[] = {
      {AlgorithmType::rc5CbcPad, Direction::encipher, {KeyInfoType::none, 0}, &rc5CbcPadEncipherOperations},
      {AlgorithmType::rsaPublic, Direction::encipher, {KeyInfoType::byteString, 0}, &rsaPublicOperations},
  };
  const AlgorithmChooser chooser = {methods, 2};
  const Key key(byteStringKeyDescriptor, {1, 2, 3});
  Algorithm rc5(rc5CbcPadDescriptor, &usualParameters), rsa(rsaPublicDescriptor);
  EXPECT_EQ(InitialiseAlgorithm(rc5, Direction::encipher, nullptr, chooser), 524);
  ExpectUninitialised(rc5, Direction::encipher);
  EXPECT_EQ(InitialiseAlgorithm(rsa, Direction::encipher, key, chooser), 524);
  ExpectUninitialised(rsa, Direction::encipher);
}

TEST(RandomObject, MethodOfAnotherSizeGives545) {
  const AlgorithmMethod method = {AlgorithmType::md5Random, Direction::digest, {KeyInfoType::none, 0}, &md5Operations};
  RandomObject* object = nullptr;
  ASSERT_EQ(CreateRandom(&object), 0);
  ASSERT_EQ(SetRandomAlgorithm(object, md5RandomDescriptor), 0);
  EXPECT_EQ(InitialiseRandom(object, AlgorithmChooser{&method, 1}), 545);
  DestroyRandom(&object);
}

TEST(RandomObject, WrongTagGives539) {
  RandomObject* object = nullptr;
  ASSERT_EQ(CreateRandom(&object), 0);
  object->tag ^= 1;
  EXPECT_EQ(SetRandomAlgorithm(object, md5RandomDescriptor), 539);
  object->tag ^= 1;
  EXPECT_EQ(SetRandomAlgorithm(object, md5RandomDescriptor), 0);
  DestroyRandom(&object);
}

TEST(RandomObject, StatesAnswerTheirCodes) {
  std::uint8_t byte = 0;
  EXPECT_EQ(UpdateRandom(nullptr, &byte, 1), 539);
  EXPECT_EQ(GenerateRandom(nullptr, &byte, 1), 539);
  EXPECT_EQ(SetRandomAlgorithm(nullptr, md5RandomDescriptor), 539);
  EXPECT_EQ(InitialiseRandom(nullptr, libraryChooser), 539);
  RandomObject* object = nullptr;
  ASSERT_EQ(CreateRandom(&object), 0);
  EXPECT_EQ(InitialiseRandom(object, libraryChooser), 515);
  EXPECT_EQ(SetRandomAlgorithm(object, md5Descriptor), 517);
  EXPECT_EQ(SetRandomAlgorithm(object, md5RandomDescriptor), 0);
  EXPECT_EQ(SetRandomAlgorithm(object, md5RandomDescriptor), 512);
  EXPECT_EQ(UpdateRandom(object, &byte, 1), 538);
  EXPECT_EQ(GenerateRandom(object, &byte, 1), 538);
  EXPECT_EQ(InitialiseRandom(object, AlgorithmChooser{nullptr, 0}), 545);
  EXPECT_EQ(InitialiseRandom(object, libraryChooser), 0);
  EXPECT_EQ(UpdateRandom(object, &byte, 1), 0);
  EXPECT_EQ(GenerateRandom(object, &byte, 1), 0);
  RandomObject copy = *object;
  EXPECT_EQ(GenerateRandom(&copy, &byte, 1), 539);
  RandomObject* dropped = &copy;
  DestroyRandom(&dropped);
  DestroyRandom(&object);
  EXPECT_EQ(object, nullptr);
}

}  // namespace
}  // namespace kest
