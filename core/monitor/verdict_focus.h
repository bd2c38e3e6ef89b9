// What a summary of the verdict leads with: the resource its headline speaks of, and every
// advice line once. Pure.
#pragma once

#include <string>
#include <vector>

#include "core/monitor/resource_verdict.h"
#include "core/monitor/verdict.h"

namespace pellwin {

// The first resource, in resource order, at the verdict's worst level; null while every
// resource is healthy, when the headline speaks of the whole machine.
[[nodiscard]] const ResourceVerdict* focus(const Verdict& verdict);

// The advice of every resource, in resource order; a line two resources share comes once.
[[nodiscard]] std::vector<std::string> allAdvice(const Verdict& verdict);

}  // namespace pellwin
