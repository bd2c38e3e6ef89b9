// The words for the whole machine: one ResourceVerdict per resource in resource order, and the
// tips. Made by the Diagnoser from the health shown on screen, so words and colours agree.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "core/monitor/lead.h"
#include "core/monitor/resource.h"
#include "core/monitor/resource_verdict.h"
#include "core/monitor/tip.h"

namespace pellwin {

// What an app is doing to the machine, for its detail view.
struct AppRole {
  std::string text;  // "Using the most memory"
  Health health = Health::ok;
  friend bool operator==(const AppRole&, const AppRole&) = default;
};

// The notification for a resource that has stayed red: its title and body, and the app behind
// it with its figure ("Google Chrome 10.6 GB") for the alert log.
struct Notice {
  Resource resource = Resource::memory;
  std::string title{};
  std::string body{};
  std::optional<std::string> cause{};
  friend bool operator==(const Notice&, const Notice&) = default;
};

struct Verdict {
  std::vector<ResourceVerdict> resources{};
  std::vector<Tip> tips{};

  // The worst health among the resources; healthy when there are none.
  [[nodiscard]] Health overall() const;
  // The headline of the first resource at the worst level, or "Your Mac is running fine".
  [[nodiscard]] std::string headline() const;
  // Likewise its short status, or "Healthy".
  [[nodiscard]] std::string shortStatus() const;
  // The first contributor of each resource that has one: the app blamed for it.
  [[nodiscard]] std::map<Resource, Lead> leads() const;
  // What to notify for `resource`; none unless it is shown as a problem.
  [[nodiscard]] std::optional<Notice> notice(Resource resource) const;
  // The first resource, in order, that is not healthy and whose first contributor is this app.
  [[nodiscard]] std::optional<AppRole> role(const std::string& appID) const;

  friend bool operator==(const Verdict&, const Verdict&) = default;
};

}  // namespace pellwin
