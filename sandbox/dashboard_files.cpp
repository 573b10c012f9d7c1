#include "dashboard_files.h"

#include <algorithm>

namespace sandbox {

const DashboardFile* FindDashboardFile(std::string_view name) {
  const auto end = dashboardFiles + dashboardFileCount;
  const auto found = std::find_if(dashboardFiles, end, [&](const DashboardFile& file) { return name == file.name; });
  return found == end ? nullptr : found;
}

const char* MediaType(const DashboardFile& file) {
  const std::string_view name = file.name;
  const std::string_view ending = name.substr(name.rfind('.') + 1);
  if (ending == "html") return "text/html; charset=utf-8";
  if (ending == "css") return "text/css; charset=utf-8";
  if (ending == "js") return "text/javascript; charset=utf-8";
  return "image/svg+xml";
}

}  // namespace sandbox
