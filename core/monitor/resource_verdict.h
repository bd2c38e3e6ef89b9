// What the monitor says about one resource: its shown health and the words for it, with the
// apps behind it and what the user can do. Made by the Diagnoser.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/monitor/resource.h"

namespace pellwin {

// An app named as one of the causes, with its figure already formatted.
struct Contributor {
  std::string appID{};
  std::string name{};
  std::string value{};                  // "1.2 GB", "87%", "12 MB/s"
  std::optional<std::string> detail{};  // for memory: "3 processes" when it has several
  friend bool operator==(const Contributor&, const Contributor&) = default;
};

struct ResourceVerdict {
  Resource resource = Resource::memory;
  Health health = Health::ok;
  std::string headline{};                   // "Memory is getting tight"
  std::string shortStatus{};                // two or three words for the status chip
  std::string reason{};                     // one or two sentences with the numbers
  std::vector<Contributor> contributors{};  // at most 3
  std::vector<std::string> advice{};        // at most 2 lines
  friend bool operator==(const ResourceVerdict&, const ResourceVerdict&) = default;
};

}  // namespace pellwin
