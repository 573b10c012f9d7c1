// Sizes and places that hosts of the 32-bit library may rely on. Where pointers have another size, what must hold is
// that the classes have no members but those.
#include <gtest/gtest.h>

#include <cstring>
#include <type_traits>

#include "core/byte_buffer.h"
#include "core/exception.h"
#include "core/product_record.h"

namespace kest {
namespace {

constexpr bool is32Bit = sizeof(void*) == 4;

static_assert(!is32Bit || sizeof(String) == 4, "String");
static_assert(!is32Bit || sizeof(ByteBuffer) == 28, "ByteBuffer");
static_assert(!is32Bit || sizeof(ObjectArray<NameValuePair>) == 16, "ObjectArray");
static_assert(!is32Bit || sizeof(NameValuePair) == 20, "NameValuePair");
static_assert(!is32Bit || sizeof(NameValueList) == 32, "NameValueList");
static_assert(!is32Bit || sizeof(FieldSet) == 60, "FieldSet");
static_assert(!is32Bit || sizeof(ProductRecord) == 60, "ProductRecord");
static_assert(!is32Bit || sizeof(Qor::MemoryException) == 8, "MemoryException");
static_assert(!std::is_polymorphic<ObjectArray<NameValuePair>>::value, "ObjectArray has no virtual functions");

// The word at `offset` bytes.
std::uint32_t WordAt(const void* object, std::size_t offset) {
  std::uint32_t word;
  std::memcpy(&word, static_cast<const char*>(object) + offset, sizeof word);
  return word;
}

TEST(Layout, TheErrorCodeLiesBehindTheTwoWordsOfTheBase) {
  FieldSet fields;
  fields.SetErrorCode(0x01020304);
  EXPECT_EQ(0u, WordAt(&fields, sizeof(void*)));
  EXPECT_EQ(0u, WordAt(&fields, sizeof(void*) + 4));
  EXPECT_EQ(0x01020304u, WordAt(&fields, sizeof(void*) + 8));  // offset 12 where pointers have 4 bytes
}

TEST(Layout, AnArrayIsCountStepCapacityAndElements) {
  ObjectArray<NameValuePair> array;
  array.Append(NameValuePair("a", "1"));
  EXPECT_EQ(1u, WordAt(&array, 0));
  EXPECT_EQ(32u, WordAt(&array, 4));
  EXPECT_EQ(32u, WordAt(&array, 8));
}

TEST(Layout, ABlockIsCountLengthCapacityLockCharacters) {
  const String text("abc");
  const char* block = text.Characters() - sizeof(StringData);
  EXPECT_EQ(1u, WordAt(block, 0));
  EXPECT_EQ(3u, WordAt(block, 4));
  EXPECT_EQ(50u, WordAt(block, 8));
}

TEST(Layout, AListsFlagIsOne) {
  const NameValueList list;
  EXPECT_EQ(1, reinterpret_cast<const char*>(&list)[sizeof(Object) + sizeof(ObjectArray<NameValuePair>)]);
}

}  // namespace
}  // namespace kest
