# Writes the C++ source that holds the dashboard's files: cmake -DFILES=<paths> -DOUTPUT=<source> -P embed.cmake
set(rows)
foreach(file IN LISTS FILES)
  get_filename_component(name ${file} NAME)
  file(READ ${file} bytes HEX)
  string(LENGTH "${bytes}" digits)
  math(EXPR length "${digits} / 2")
  # Every byte is written as an escape, so that none can end the text or join the escape before it.
  string(REGEX REPLACE "(..)" "\\\\x\\1" text "${bytes}")
  string(APPEND rows "    {\"${name}\", std::string_view(\"${text}\", ${length})},\n")
endforeach()
file(WRITE ${OUTPUT} "#include \"dashboard_files.h\"

#include <iterator>

namespace sandbox {

const DashboardFile dashboardFiles[] = {
${rows}};

const std::size_t dashboardFileCount = std::size(dashboardFiles);

}  // namespace sandbox
")
