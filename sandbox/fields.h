// The named text fields of the commerce protocol and the header block that carries them. Texts are 8-bit and are passed
// on byte for byte. Plain values, no state: any thread may call these.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sandbox {

struct Field {
  std::string name;
  std::string value;
};

using FieldList = std::vector<Field>;

/// Tells whether two texts are equal when the case of A to Z is ignored.
bool EqualIgnoringCase(std::string_view left, std::string_view right);

/// Finds the first field of that name (letter case ignored); returns its value, owned by the list, or null.
const std::string* FindField(const FieldList& fields, std::string_view name);

/// Finds the first field of that name as FindField does; an absent field reads as empty text.
std::string_view FieldOrEmpty(const FieldList& fields, std::string_view name);

/// Writes each field as name, ": ", value and CR LF, in list order, and one empty line.
std::string FormatHeaderBlock(const FieldList& fields);

/// Reads what FormatHeaderBlock writes and nothing looser: every line ends with CR LF and holds ": ", none is folded,
/// the one empty line stands at the end. Returns nothing when the text is not of that form.
std::optional<FieldList> ParseHeaderBlock(std::string_view text);

}  // namespace sandbox
