// Looks for the catalog's places in one home folder and plans what quick clean can remove now.
// Blocking and read-only: call it off the UI thread. Symbolic links and other volumes are never
// followed, and a place reached through a link is left out, so nothing outside home is listed.
#pragma once

#include <string>
#include <vector>

#include "core/clean/clean_group.h"
#include "core/clean/clean_plan.h"
#include "core/clean/cleaner_running.h"

namespace pellwin {

class CleanerScanner {
 public:
  CleanerScanner(std::string home, std::vector<CleanGroup> groups);

  [[nodiscard]] const std::string& home() const { return home_; }
  [[nodiscard]] const std::vector<CleanGroup>& groups() const { return groups_; }

  // Every group in catalog order. An item inside one already planned by an earlier group is
  // left out, so nothing is counted twice (Homebrew's logs live in its cache). `now` is seconds
  // since 1970, for the age rules.
  [[nodiscard]] CleanPlan plan(const RunningSet& running, double now) const;

  // One group: its sources in order, items largest first (equal sizes by name). A source that
  // is missing or cannot be read adds nothing; a skip carries the pause rule's reason.
  [[nodiscard]] CleanGroupPlan plan(const CleanGroup& group, const RunningSet& running,
                                    double now) const;

 private:
  std::string home_;
  std::vector<CleanGroup> groups_;
};

}  // namespace pellwin
