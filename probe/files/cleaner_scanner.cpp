#include "probe/files/cleaner_scanner.h"

#include <fnmatch.h>
#include <sys/stat.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <memory>
#include <optional>
#include <utility>

#include "core/base/ascii_case.h"
#include "probe/files/directory_listing.h"
#include "probe/files/freeable_size.h"
#include "probe/files/mount_point.h"

namespace pellwin {

namespace {

constexpr double secondsPerDay = 86400;

// The folder's entries sorted by name, links described as themselves; empty when it cannot be
// listed.
std::vector<DirectoryEntry> list(const std::string& folder) {
  DirectoryListing::Result result = DirectoryListing::list(folder);
  auto* listed = std::get_if<DirectoryListing::Entries>(&result);
  if (listed == nullptr) return {};
  std::vector<DirectoryEntry> entries = std::move(listed->entries);
  std::sort(entries.begin(), entries.end(),
            [](const DirectoryEntry& a, const DirectoryEntry& b) { return a.name < b.name; });
  return entries;
}

std::optional<struct stat> lstatOf(const std::string& path) {
  struct stat info {};
  if (::lstat(path.c_str(), &info) != 0) return std::nullopt;
  return info;
}

std::optional<std::string> realPath(const std::string& path) {
  std::unique_ptr<char, void (*)(void*)> resolved(::realpath(path.c_str(), nullptr), std::free);
  if (!resolved) return std::nullopt;
  return std::string(resolved.get());
}

bool isPattern(std::string_view component) {
  return component.find_first_of("*?[") != std::string_view::npos;
}

std::vector<std::string> components(std::string_view path) {
  std::vector<std::string> parts;
  std::size_t start = 0;
  while (start <= path.size()) {
    const auto slash = path.find('/', start);
    const auto end = slash == std::string_view::npos ? path.size() : slash;
    if (end > start) parts.emplace_back(path.substr(start, end - start));
    if (slash == std::string_view::npos) break;
    start = slash + 1;
  }
  return parts;
}

bool matches(const std::string& pattern, const std::string& name) {
  return ::fnmatch(pattern.c_str(), name.c_str(), 0) == 0;
}

bool excluded(const CleanSource& source, const std::string& name) {
  const std::string lower = asciiLower(name);
  return std::any_of(source.excludeChildren.begin(), source.excludeChildren.end(),
                     [&](const std::string& pattern) { return matches(pattern, lower); });
}

// One real place a source names: its path under home and the names its patterns matched.
struct Place {
  std::string relative;
  std::vector<std::string> matched;
};

// The shown name of a whole-folder source: its title, with "*" standing for what a pattern in
// its path matched ("IntelliJIdea2025.2 caches").
std::string shownName(const CleanSource& source, const Place& place) {
  std::string title = source.title.value_or(place.relative);
  std::string joined;
  for (const std::string& name : place.matched) joined += (joined.empty() ? "" : "/") + name;
  for (auto star = title.find('*'); star != std::string::npos;
       star = title.find('*', star + joined.size())) {
    title.replace(star, 1, joined);
  }
  return title;
}

class GroupScan {
 public:
  GroupScan(const std::string& home, const std::string& realHome, const RunningSet& running,
            double now)
      : home_(home), realHome_(realHome), running_(running), now_(now) {}

  CleanGroupPlan run(const CleanGroup& group) {
    plan_ = CleanGroupPlan{.group = group};
    for (const CleanSource& source : group.sources) scanSource(source);
    std::stable_sort(plan_.items.begin(), plan_.items.end(),
                     [](const CleanItem& a, const CleanItem& b) {
                       return a.bytes != b.bytes ? a.bytes > b.bytes : a.name < b.name;
                     });
    return std::move(plan_);
  }

 private:
  std::string absolute(const std::string& relative) const { return home_ + "/" + relative; }

  // True when the place is reached without a link on the way: a cache folder that is a link
  // to another disk would put its items outside home.
  bool reachedDirectly(const std::string& relative) const {
    return realPath(absolute(relative)) == realHome_ + "/" + relative;
  }

  std::vector<Place> places(const CleanSource& source) const {
    std::vector<Place> found{{.relative = "", .matched = {}}};
    for (const std::string& part : components(source.path)) {
      std::vector<Place> next;
      for (const Place& place : found) {
        const std::string base = place.relative.empty() ? "" : place.relative + "/";
        if (!isPattern(part)) {
          next.push_back({.relative = base + part, .matched = place.matched});
          continue;
        }
        const std::string folder = place.relative.empty() ? home_ : absolute(place.relative);
        const auto self = lstatOf(folder);
        if (!self) continue;
        for (const DirectoryEntry& entry : list(folder)) {
          if (!entry.isDirectory || entry.isSymlink || entry.device != self->st_dev ||
              !matches(part, entry.name) || isMountPoint(folder + "/" + entry.name)) {
            continue;
          }
          Place child{.relative = base + entry.name, .matched = place.matched};
          child.matched.push_back(entry.name);
          next.push_back(std::move(child));
        }
      }
      found = std::move(next);
    }
    return found;
  }

  [[nodiscard]] double cutoff(const CleanSource& source) const {
    return now_ - *source.olderThanDays * secondsPerDay;
  }

  void scanSource(const CleanSource& source) {
    // Home itself, or a path that could climb out of it, is never a place to clean.
    const auto parts = components(source.path);
    if (parts.empty() || std::any_of(parts.begin(), parts.end(), [](const std::string& part) {
          return part == "." || part == "..";
        })) {
      return;
    }
    if (!source.eachChild && !isPattern(source.path)) {
      const Place place{.relative = source.path, .matched = {}};
      if (auto reason = CleanerRunning::pause(std::nullopt, running_, source)) {
        plan_.skipped.push_back({.name = shownName(source, place), .reason = std::move(*reason)});
        return;
      }
      return takeWhole(source, place);
    }
    for (const Place& place : places(source)) {
      if (source.eachChild) {
        takeChildren(source, place);
      } else if (auto reason = CleanerRunning::pause(std::nullopt, running_, source)) {
        plan_.skipped.push_back({.name = shownName(source, place), .reason = std::move(*reason)});
      } else {
        takeWhole(source, place);
      }
    }
  }

  void take(const std::string& path, std::string name, const std::optional<double>& cutoff) {
    const auto size = FreeableSize::measure(path);
    if (!size || size->bytes == 0) return;
    // A folder still written to inside is not old, whatever its own date says.
    if (cutoff && size->newestModified > *cutoff) return;
    plan_.items.push_back({.path = path, .name = std::move(name), .bytes = size->bytes});
  }

  void takeWhole(const CleanSource& source, const Place& place) {
    // A mount point is never cleaned: it is another disk, or a folder bound from elsewhere.
    if (!reachedDirectly(place.relative) || isMountPoint(absolute(place.relative))) return;
    std::optional<double> limit;
    if (source.olderThanDays) limit = cutoff(source);
    take(absolute(place.relative), shownName(source, place), limit);
  }

  void takeChildren(const CleanSource& source, const Place& place) {
    const std::string folder = absolute(place.relative);
    const auto self = lstatOf(folder);
    if (!self || !S_ISDIR(self->st_mode) || !reachedDirectly(place.relative)) return;
    for (const DirectoryEntry& entry : list(folder)) {
      // Links, placeholders and mount points (a bind mount keeps the device) are never taken.
      if (entry.isSymlink || entry.isDataless || entry.device != self->st_dev ||
          (entry.isDirectory && isMountPoint(folder + "/" + entry.name))) {
        continue;
      }
      if (excluded(source, entry.name)) continue;
      std::optional<double> limit;
      if (source.olderThanDays) {
        limit = cutoff(source);
        if (entry.modified > *limit) continue;
      }
      if (auto reason = CleanerRunning::pause(entry.name, running_, source)) {
        plan_.skipped.push_back({.name = entry.name, .reason = std::move(*reason)});
        continue;
      }
      take(folder + "/" + entry.name, entry.name, limit);
    }
  }

  const std::string& home_;
  const std::string& realHome_;
  const RunningSet& running_;
  double now_;
  CleanGroupPlan plan_;
};

std::string withoutTrailingSlashes(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

bool inside(const std::string& path, const std::string& folder) {
  return path == folder ||
         (path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/');
}

}  // namespace

CleanerScanner::CleanerScanner(std::string home, std::vector<CleanGroup> groups)
    : home_(withoutTrailingSlashes(std::move(home))), groups_(std::move(groups)) {}

CleanGroupPlan CleanerScanner::plan(const CleanGroup& group, const RunningSet& running,
                                    double now) const {
  const std::string realHome = realPath(home_).value_or(home_);
  return GroupScan(home_, realHome, running, now).run(group);
}

CleanPlan CleanerScanner::plan(const RunningSet& running, double now) const {
  CleanPlan plan;
  std::vector<std::string> taken;
  for (const CleanGroup& group : groups_) {
    CleanGroupPlan groupPlan = this->plan(group, running, now);
    std::erase_if(groupPlan.items, [&](const CleanItem& item) {
      return std::any_of(taken.begin(), taken.end(),
                         [&](const std::string& earlier) { return inside(item.path, earlier); });
    });
    for (const CleanItem& item : groupPlan.items) taken.push_back(item.path);
    plan.groups.push_back(std::move(groupPlan));
  }
  return plan;
}

}  // namespace pellwin
