// What quick clean's catalogs are made of: the places that rebuild on their own, grouped as
// the user sees them, with the rules that keep cleaning them safe. Data only; scanning is the
// scanner's job. Paths are relative to the user's home folder.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/clean/clean_action.h"

namespace pellwin {

// A cache folder whose app goes by other names on Linux: the child `child` (compared in lower
// case) counts as open while any of `names` runs, as a process name or an app identity.
struct ChildAlias {
  std::string child{};
  std::vector<std::string> names{};
  friend bool operator==(const ChildAlias&, const ChildAlias&) = default;
};

struct CleanSource {
  // Relative to home. A component holding "*" or "?" is a pattern that stands for each real
  // folder of that name at that level (links and other volumes never match); a "*" in the
  // title is then replaced by the matched name.
  std::string path{};
  std::optional<std::string> title{};    // absent when each child is shown by its own name
  bool eachChild = false;                // every direct child is an item of its own
  std::optional<int> olderThanDays{};    // only entries last modified longer ago are taken
  std::vector<std::string> tools{};      // process names; while one runs the source is skipped
  std::vector<std::string> bundleIDs{};  // app identities; while one runs the source is skipped
  std::vector<std::string> excludeChildren{};  // lower-case names (or patterns) never taken
  std::vector<ChildAlias> childAliases{};      // Linux names of the apps that own children
  friend bool operator==(const CleanSource&, const CleanSource&) = default;
};

struct CleanGroup {
  std::string id{};
  std::string title{};
  std::string explanation{};
  CleanAction action = CleanAction::delete_;
  std::vector<CleanSource> sources{};
  friend bool operator==(const CleanGroup&, const CleanGroup&) = default;
};

}  // namespace pellwin
