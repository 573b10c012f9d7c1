// Ordinals 100 to 110: field sets and the transport's settings.
#include "api/export_support.h"
#include "transport/server_settings.h"

namespace kest {
namespace {

// The field at `index`, null when the index is out of range or the set is null.
const NameValuePair* FieldAt(KestFieldSet* set, std::int32_t index) {
  if (set == nullptr) return nullptr;
  const NameValueList& fields = FromHandle(set)->Fields();
  // A negative index becomes one that is beyond every count.
  const auto position = static_cast<std::uint32_t>(index);
  return position < fields.Count() ? &fields.At(position) : nullptr;
}

}  // namespace
}  // namespace kest

using namespace kest;

void KEST_CALL KestFreeFieldSet(KestFieldSet* set) { delete FromHandle(set); }

KestFieldSet* KEST_CALL KestCreateFieldSet() { return Create<FieldSet>(); }

KestBool KEST_CALL KestSetServer(const char* host, std::uint32_t port, const char* key) {
  return Guarded<KestBool>(0, [&]() -> KestBool { return SetServer(host, static_cast<std::uint16_t>(port), key); });
}

const char* KEST_CALL KestGetField(KestFieldSet* set, const char* name) {
  if (set == nullptr) return nullptr;
  const NameValueList& fields = FromHandle(set)->Fields();
  const std::int32_t index = fields.Find(name);
  return index >= 0 ? fields.At(static_cast<std::uint32_t>(index)).Value().Text() : nullptr;
}

const char* KEST_CALL KestGetFieldName(KestFieldSet* set, std::int32_t index) {
  const NameValuePair* field = FieldAt(set, index);
  return field != nullptr ? field->Name().Text() : nullptr;
}

std::int32_t KEST_CALL KestGetFieldCount(KestFieldSet* set) {
  return set != nullptr ? static_cast<std::int32_t>(FromHandle(set)->Fields().Count()) : -1;
}

const char* KEST_CALL KestGetFieldValue(KestFieldSet* set, std::int32_t index) {
  const NameValuePair* field = FieldAt(set, index);
  return field != nullptr ? field->Value().Text() : nullptr;
}

std::int32_t KEST_CALL KestGetErrorCode(KestFieldSet* set) { return set != nullptr ? FromHandle(set)->ErrorCode() : 0; }

void KEST_CALL KestAddField(KestFieldSet* set, const char* name, const char* value) {
  if (set != nullptr) Guarded([&] { FromHandle(set)->Add(name, value); });
}

void KEST_CALL KestSetField(KestFieldSet* set, const char* name, const char* value) {
  if (set != nullptr) Guarded([&] { FromHandle(set)->Set(name, value); });
}

void KEST_CALL KestSetProxy(const char* host, std::uint32_t port) {
  Guarded([&] { SetProxy(host, static_cast<std::uint16_t>(port)); });
}
