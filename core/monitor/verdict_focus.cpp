#include "core/monitor/verdict_focus.h"

#include <algorithm>

namespace pellwin {

const ResourceVerdict* focus(const Verdict& verdict) {
  const Health worst = verdict.overall();
  if (worst == Health::ok) return nullptr;
  for (const ResourceVerdict& r : verdict.resources) {
    if (r.health == worst) return &r;
  }
  return nullptr;
}

std::vector<std::string> allAdvice(const Verdict& verdict) {
  std::vector<std::string> lines;
  for (const ResourceVerdict& r : verdict.resources) {
    for (const std::string& line : r.advice) {
      if (std::ranges::find(lines, line) == lines.end()) lines.push_back(line);
    }
  }
  return lines;
}

}  // namespace pellwin
