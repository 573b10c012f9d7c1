// Base64 as the protocol carries it: RFC 4648 section 4, "=" padding, no line breaks. No state: any thread may call.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace sandbox {

/// Encodes bytes; 3 bytes become 4 characters.
std::string EncodeBase64(std::string_view bytes);

/// Decodes the one encoding of its bytes that EncodeBase64 gives; returns nothing for any other text (a foreign
/// character, white space, misplaced or missing padding, bits set behind the last byte).
std::optional<std::string> DecodeBase64(std::string_view text);

}  // namespace sandbox
