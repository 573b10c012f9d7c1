#include "request_log.h"

#include <chrono>
#include <cstdio>
#include <ctime>

namespace sandbox {
namespace {

std::string TimeText() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
  const std::time_t seconds = milliseconds / 1000;
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  char day[32];
  std::strftime(day, sizeof day, "%Y-%m-%dT%H:%M:%S", &parts);
  char rest[16];
  std::snprintf(rest, sizeof rest, ".%03dZ", static_cast<int>(milliseconds % 1000));
  return std::string(day) + rest;
}

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
  record.time = TimeText();
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
