// What binds an algorithm to its implementation: descriptors name an algorithm and check its parameters, methods
// implement it for one direction and one type of key, the chooser is the constant, ordered table of methods. All of
// them are constant data that any thread may read.
#pragma once

#include <cstddef>
#include <cstdint>

#include "crypto/result_code.h"

namespace kest {

struct KeyObject;

enum class AlgorithmType : std::uint32_t { md5, sha1, md5Random, rc5CbcPad, base64, rsaPublic };

enum class Direction : std::uint32_t { decipher = 0, digest = 0, encipher = 1 };

// What a descriptor keeps of the parameter block that it was given; RC5 alone has parameters.
struct AlgorithmParameters {
  std::uint32_t rounds;
  std::uint8_t iv[8];
};

struct AlgorithmDescriptor {
  AlgorithmType type;
  std::uint32_t digestLength;  // bytes; 0 for what is no digest
  // Checks the caller's parameter block and copies it; success or 541. Null when the algorithm has no parameters.
  ResultCode (*setParameters)(AlgorithmParameters& parameters, const void* block);
};

extern const AlgorithmDescriptor md5Descriptor;
extern const AlgorithmDescriptor sha1Descriptor;
extern const AlgorithmDescriptor md5RandomDescriptor;
extern const AlgorithmDescriptor rc5CbcPadDescriptor;  // its parameter block is an Rc5ParameterBlock
extern const AlgorithmDescriptor base64Descriptor;     // enciphering encodes, deciphering decodes
extern const AlgorithmDescriptor rsaPublicDescriptor;

// RC5's parameters as callers hand them over.
struct Rc5ParameterBlock {
  std::uint32_t version;   // 16: RC5 version 1.0
  std::uint32_t rounds;    // 0 to 255
  std::uint32_t wordBits;  // 32
  const std::uint8_t* iv;  // 8 bytes, the caller's
};

// The operations answer a MethodResult; lengths are in bytes. They work on a context of `contextSize` bytes that the
// frame allocates zeroed, and wipes and frees; `*outLength` is 0 before each call. A successful final leaves the context
// ready for the next message.
struct AlgorithmOperations {
  std::size_t contextSize;
  int (*init)(void* context, const AlgorithmParameters& parameters, const KeyObject* key);
  int (*update)(void* context, const std::uint8_t* in, std::uint32_t inLength, std::uint8_t* out, std::uint32_t outMax,
                std::uint32_t* outLength);
  int (*final)(void* context, std::uint8_t* out, std::uint32_t outMax, std::uint32_t* outLength);
  // Gives back what the context owns besides itself, also after a failed init; null when there is nothing.
  void (*close)(void* context);
};

enum class KeyInfoType : std::uint32_t { none, byteString, rsaPublic };

// The keys that a method takes: their kind and their longest length in bytes (of the modulus for RSA; 0 = any).
struct KeyType {
  KeyInfoType info;
  std::uint32_t maximumLength;
};

struct AlgorithmMethod {
  AlgorithmType type;
  Direction direction;
  KeyType keyType;
  const AlgorithmOperations* operations;
};

struct AlgorithmChooser {
  const AlgorithmMethod* methods;
  std::uint32_t count;
};

// The library's methods.
extern const AlgorithmChooser libraryChooser;

// Finds the first method of the chooser for the algorithm and the direction that takes `key` (null: no key); null when
// there is none.
const AlgorithmMethod* FindMethod(const AlgorithmChooser& chooser, AlgorithmType type, Direction direction,
                                  const KeyObject* key);

}  // namespace kest
