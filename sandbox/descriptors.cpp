#include "descriptors.h"

#include <sys/resource.h>

#include <algorithm>

namespace sandbox {

std::size_t RaiseDescriptors(std::size_t wanted) {
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return 0;
  if (limit.rlim_cur >= wanted) return limit.rlim_cur;
  limit.rlim_cur = std::min<rlim_t>(wanted, limit.rlim_max);
  ::setrlimit(RLIMIT_NOFILE, &limit);
  ::getrlimit(RLIMIT_NOFILE, &limit);
  return limit.rlim_cur;
}

}  // namespace sandbox
