// The files of the dashboard, a page for a browser; part of the program. Constant data: any thread may read it.
#pragma once

#include <cstddef>
#include <string_view>

namespace sandbox {

struct DashboardFile {
  const char* name;  // such as "dashboard.css"
  std::string_view text;
};

extern const DashboardFile dashboardFiles[];
extern const std::size_t dashboardFileCount;

constexpr const char* dashboardPage = "index.html";  // the one that shows the others

/// Finds a file by its name; null when there is none.
const DashboardFile* FindDashboardFile(std::string_view name);

/// Returns the media type that belongs to the end of the file's name.
const char* MediaType(const DashboardFile& file);

}  // namespace sandbox
