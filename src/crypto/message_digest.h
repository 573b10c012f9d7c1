// Digests: MD5 (RFC 1321) and SHA-1 (FIPS 180-1) of whole texts, and the toolkit's three steps for anything else. Any
// thread may call these; one algorithm object belongs to one thread.
#pragma once

#include <cstdint>

#include "core/byte_buffer.h"
#include "core/string.h"
#include "crypto/algorithm_object.h"

namespace kest {

using DigestDescriptor = AlgorithmDescriptor;  // md5Descriptor, sha1Descriptor

// The digest's bytes: 16 for MD5, 20 for SHA-1, 0 for any other algorithm.
std::uint32_t DigestLength(const DigestDescriptor& descriptor);

// Digests the characters of `text` and its terminating zero byte, which is deliberately part of the digested data: 16
// or 20 bytes. Empty on failure, which an algorithm that is no digest is too.
ByteBuffer DigestText(const String& text, const DigestDescriptor& descriptor);

// Begins a digest on an algorithm object whose descriptor is set.
ResultCode DigestInit(AlgorithmObject* object, const AlgorithmChooser& chooser);
// Feeds `length` bytes.
ResultCode DigestUpdate(AlgorithmObject* object, const void* bytes, std::uint32_t length);
// Writes the digest and its length in bytes; the object is then ready for the next digest. 536, and nothing written,
// when `outMax` is below the digest's length.
ResultCode DigestFinal(AlgorithmObject* object, std::uint8_t* out, std::uint32_t* outLength, std::uint32_t outMax);

}  // namespace kest
