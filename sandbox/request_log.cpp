#include "request_log.h"

namespace sandbox {
namespace {

std::size_t BytesOf(const FieldList& fields) {
  std::size_t sum = fields.size() * sizeof(Field);
  for (const Field& field : fields) sum += field.name.size() + field.value.size();
  return sum;
}

std::size_t BytesOf(const RequestRecord& record) {
  return record.path.size() + BytesOf(record.request) + BytesOf(record.reply);
}

}  // namespace

void RequestLog::Add(RequestRecord record) {
  record.number = ++count;
  record.time = PreciseTimeText(wallTime());
  if (!record.refusal.empty()) refused++;
  bytes += BytesOf(record);
  records.push_back(std::move(record));
  while (records.size() > 1 && (records.size() > most || bytes > byteLimit)) {
    bytes -= BytesOf(records.front());
    records.pop_front();
  }
}

void RequestLog::Clear() {
  records.clear();
  bytes = 0;
  count = 0;
  refused = 0;
}

}  // namespace sandbox
