#include "transport/transport_request.h"

#include <memory>

#include "transport/character_reader.h"
#include "transport/header_block.h"
#include "transport/secure_exchange.h"

namespace kest {

FieldSet* TransportRequest(std::uint32_t, const char* operationName, const FieldSet& request) {
  const String text = request.Format();
  NameValueList fields;
  TextReader reader(text);
  if (!ReadHeaderBlock(reader, fields)) return nullptr;
  std::unique_ptr<FieldSet> reply(new FieldSet);
  if (!SecureExchange(operationName, fields, reply->Fields())) return nullptr;
  return reply.release();
}

}  // namespace kest
