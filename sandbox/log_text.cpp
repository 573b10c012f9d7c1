#include "log_text.h"

namespace sandbox {

std::string LogText(std::string_view text, bool known) {
  return known ? std::string(text) : "(unknown, " + std::to_string(text.size()) + " bytes)";
}

}  // namespace sandbox
