#include "core/monitor/verdict.h"

#include <algorithm>

namespace pellwin {
namespace {

const ResourceVerdict* firstAtWorst(const Verdict& verdict) {
  const Health worst = verdict.overall();
  if (worst == Health::ok) return nullptr;
  for (const ResourceVerdict& resource : verdict.resources) {
    if (resource.health == worst) return &resource;
  }
  return nullptr;
}

}  // namespace

Health Verdict::overall() const {
  Health worst = Health::ok;
  for (const ResourceVerdict& resource : resources) worst = std::max(worst, resource.health);
  return worst;
}

std::string Verdict::headline() const {
  const ResourceVerdict* worst = firstAtWorst(*this);
  return worst ? worst->headline : "Your Mac is running fine";
}

std::string Verdict::shortStatus() const {
  const ResourceVerdict* worst = firstAtWorst(*this);
  return worst ? worst->shortStatus : "Healthy";
}

std::map<Resource, Lead> Verdict::leads() const {
  std::map<Resource, Lead> leads;
  for (const ResourceVerdict& resource : resources) {
    if (resource.contributors.empty()) continue;
    const Contributor& first = resource.contributors.front();
    leads[resource.resource] = Lead{.appID = first.appID, .name = first.name, .value = first.value};
  }
  return leads;
}

std::optional<Notice> Verdict::notice(Resource resource) const {
  const auto found = std::ranges::find(resources, resource, &ResourceVerdict::resource);
  if (found == resources.end() || found->health != Health::problem) return std::nullopt;
  Notice notice{.resource = resource, .title = found->headline, .body = found->reason};
  if (!found->contributors.empty()) {
    const Contributor& first = found->contributors.front();
    notice.body += " " + first.name + " is using " + first.value + ".";
    notice.cause = first.name + " " + first.value;
  }
  return notice;
}

std::optional<AppRole> Verdict::role(const std::string& appID) const {
  for (const ResourceVerdict& resource : resources) {
    if (resource.health == Health::ok || resource.contributors.empty()) continue;
    if (resource.contributors.front().appID != appID) continue;
    return AppRole{.text = "Using the most " + std::string(noun(resource.resource)),
                   .health = resource.health};
  }
  return std::nullopt;
}

}  // namespace pellwin
