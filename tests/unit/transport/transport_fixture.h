// What the transport's tests share: scripted sockets in force for one test, and texts as std::string.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "core/name_value_list.h"
#include "core/string.h"
#include "support/scripted_sockets.h"

namespace kest::testing {

inline std::string Plain(const String& text) {
  return std::string(text.Text(), text.Length());
}

inline String Kest(const std::string& text) {
  return String(text.data(), static_cast<std::uint32_t>(text.size()));
}

using Fields = std::vector<std::pair<std::string, std::string>>;

inline Fields FieldsOf(const NameValueList& list) {
  Fields fields;
  for (std::uint32_t i = 0; i < list.Count(); ++i)
    fields.emplace_back(Plain(list.At(i).Name()), Plain(list.At(i).Value()));
  return fields;
}

class TransportTest : public ::testing::Test {
 protected:
  ScriptedSockets sockets;
  SystemInForce inForce{sockets};
};

}  // namespace kest::testing
