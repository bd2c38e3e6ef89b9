#include "core/base/checked_math.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace pellwin {

void fatalError(std::string_view message) {
  std::fprintf(stderr, "Fatal error: %.*s\n", static_cast<int>(message.size()), message.data());
  std::abort();
}

std::uint64_t checkedAdd(std::uint64_t a, std::uint64_t b, std::string_view what) {
  const auto sum = checkedSum(a, b);
  if (!sum) fatalError(std::string(what) + " overflowed 64 bits");
  return *sum;
}

}  // namespace pellwin
