// The form in which the admin port writes JSON. No state: any thread may call.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace sandbox {

/// Writes JSON and a line end. Texts come from clients, and JSON must be UTF-8: other bytes become U+FFFD.
inline std::string JsonText(const nlohmann::ordered_json& json) {
  return json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace sandbox
