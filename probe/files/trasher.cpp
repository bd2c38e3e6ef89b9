#include "probe/files/trasher.h"

#include <algorithm>
#include <exception>
#include <thread>
#include <utility>

#include "core/space/folder_catalog.h"
#include "core/space/removal_rules.h"
#include "probe/files/mount_point.h"

namespace pellwin {

namespace {

constexpr const char* notFound = "Tovrin couldn't find it on disk";
constexpr const char* onlyCaches = "Tovrin only deletes caches and logs for good";
constexpr const char* throughLink = "It's reached through a shortcut to somewhere else";
constexpr const char* keptSafe = "It's one of the folders Tovrin keeps safe";
constexpr const char* changedMeanwhile = "It changed while Tovrin was moving it";
constexpr int putBackAttempts = 100;

// "//a/./b/" becomes "/a/b": the same place, spelled so that lstat looks at the last
// component itself (a trailing "/" would make lstat follow a link there). ".." stays, for the
// rules to refuse; a relative path is left alone, for the same reason.
std::string tidy(const std::string& path) {
  if (path.empty() || path.front() != '/') return path;
  std::string out;
  std::size_t start = 0;
  while (start < path.size()) {
    std::size_t end = path.find('/', start);
    if (end == std::string::npos) end = path.size();
    const std::string_view part(path.data() + start, end - start);
    if (!part.empty() && part != ".") {
      out += '/';
      out += part;
    }
    start = end + 1;
  }
  return out.empty() ? "/" : out;
}

bool isWithin(const std::string& path, const std::string& folder) {
  if (folder == "/") return path.starts_with('/');
  return path == folder || (path.starts_with(folder) && path[folder.size()] == '/');
}

TrashResult result(const TrashItem& item, TrashResult::Outcome outcome, std::string reason = {}) {
  return {.path = item.path, .bytes = item.bytes, .outcome = outcome, .reason = std::move(reason)};
}

}  // namespace

Trasher::Trasher(std::string home, RemovalGuards guards, RemovalDisk& disk,
                 std::vector<MovedFolder> movedBases)
    : home_(tidy(home)), guards_(std::move(guards)), disk_(disk) {
  resolvedHome_ = disk_.resolve(home_).value_or(home_);
  checkedGuards_ = guards_;
  // A guarded folder reached through a link is guarded where it really is, too; and one
  // spelled from home's real path (XDG_DATA_HOME set to it while HOME goes through a link) is
  // guarded in home's spelling, which is the one the rules compare.
  auto addResolved = [&](const std::vector<std::string>& paths, std::vector<std::string>& checked) {
    for (const std::string& path : paths) {
      const std::string spelled = homeSpelling(disk_.resolve(path).value_or(tidy(path)));
      if (std::ranges::find(checked, spelled) == checked.end()) checked.push_back(spelled);
    }
  };
  addResolved(guards_.kept, checkedGuards_.kept);
  addResolved(guards_.mainFolders, checkedGuards_.mainFolders);
  // A base moved onto a folder the rules protect (XDG_CACHE_HOME=~/Documents) must not make
  // that folder's contents deletable for good.
  const auto split = RemovalRules::split(checkedGuards_);
  for (MovedFolder& moved : movedBases) {
    moved = {.actual = tidy(moved.actual), .standard = tidy(moved.standard)};
    if (!RemovalRules::refusal(moved.actual, home_, split)) movedBases_.push_back(std::move(moved));
  }
  knownGuarded_ = guardedIdentities();
}

bool Trasher::isCleanable(const std::string& path) const {
  return FolderCatalog::isCleanable(path, home_) ||
         FolderCatalog::isCleanable(LinuxCleanerCatalog::standardPath(path, movedBases_), home_);
}

std::string Trasher::homeSpelling(const std::string& resolved) const {
  if (resolvedHome_ == home_ || !isWithin(resolved, resolvedHome_)) return resolved;
  return home_ + resolved.substr(resolvedHome_.size());
}

std::optional<std::string> Trasher::ruleRefusal(const std::string& path, CleanAction action) const {
  const std::string spelled = homeSpelling(tidy(path));
  if (auto refused = RemovalRules::verdict(spelled, home_, false, std::nullopt, checkedGuards_)) {
    return refused->reason;
  }
  if (action == CleanAction::delete_ && !isCleanable(spelled)) return std::string(onlyCaches);
  return std::nullopt;
}

std::vector<TrashResult> Trasher::trash(const std::vector<TrashItem>& items) const {
  return perform(items, CleanAction::trash);
}

std::vector<TrashResult> Trasher::perform(const std::vector<TrashItem>& items,
                                          CleanAction action) const {
  // Those known since the trasher was made count too: a guarded folder moved away since is no
  // longer found by its path.
  std::vector<RemovalDisk::Identity> guarded = guardedIdentities();
  for (const RemovalDisk::Identity& identity : knownGuarded_) {
    if (std::ranges::find(guarded, identity) == guarded.end()) guarded.push_back(identity);
  }
  std::vector<TrashResult> results;
  results.reserve(items.size());
  for (const TrashItem& item : items) {
    try {
      results.push_back(act(item, action, guarded));
    } catch (const std::exception& error) {
      results.push_back(result(item, TrashResult::Outcome::failed, error.what()));
    }
  }
  return results;
}

std::vector<RemovalDisk::Identity> Trasher::guardedIdentities() const {
  // A folder keeps its identity when it is renamed: a guarded folder moved into a picked item
  // is still recognised there, where its new path no longer says what it is.
  std::vector<std::string> paths = guards_.kept;
  paths.insert(paths.end(), guards_.mainFolders.begin(), guards_.mainFolders.end());
  for (const char* name : {"/.ssh", "/.gnupg"}) paths.push_back(home_ + name);
  std::vector<RemovalDisk::Identity> found;
  for (const std::string& path : paths) {
    const auto resolved = disk_.resolve(path);
    if (!resolved) continue;
    if (const auto entry = disk_.inspect(*resolved); entry && entry->isDirectory) {
      found.push_back(entry->identity);
    }
  }
  return found;
}

std::string Trasher::physicalSpelling(const std::string& path) const {
  if (!isWithin(path, home_)) return path;
  return resolvedHome_ + path.substr(home_.size());
}

std::expected<std::optional<std::string>, SystemError> Trasher::hazardInside(
    const std::string& folder, const std::vector<RemovalDisk::Identity>& guarded,
    bool byPath) const {
  const auto split = RemovalRules::split(checkedGuards_);
  const auto isGuarded = [&](const RemovalDisk::Identity& identity) {
    return std::ranges::find(guarded, identity) != guarded.end();
  };
  const auto found = disk_.findSubfolder(folder, [&](const RemovalDisk::Subfolder& sub) {
    // A disk or a folder mounted inside would go to the Trash with the folder, and emptying
    // the Trash would then erase what is mounted there.
    return sub.isMountPoint || isGuarded(sub.identity) ||
           (byPath && RemovalRules::refusal(homeSpelling(sub.path), home_, split).has_value());
  });
  if (!found) return std::unexpected(found.error());
  if (!*found) return std::optional<std::string>();
  if ((*found)->isMountPoint) return std::optional<std::string>(mountInsideRefusal((*found)->name));
  return std::optional<std::string>("It holds " + (*found)->name + ", which Tovrin keeps safe");
}

std::optional<std::string> Trasher::refusalOnDisk(const std::string& path,
                                                  const RemovalDisk::Entry& entry,
                                                  const std::string& resolved,
                                                  const std::vector<RemovalDisk::Identity>& guarded,
                                                  CleanAction action) const {
  const std::string real = homeSpelling(resolved);
  if (auto refused = RemovalRules::verdict(path, home_, entry.isSymlink, real, checkedGuards_)) {
    return refused->reason;
  }
  if (entry.isMountPoint) return mountPointRefusal;
  if (std::ranges::find(guarded, entry.identity) != guarded.end()) return keptSafe;
  if (action == CleanAction::delete_ && (!isCleanable(path) || !isCleanable(real))) {
    return onlyCaches;
  }
  // A folder on the way swapped for a link would make the same-named item behind it the one
  // acted on: the item is only ever reached along its own path, with no link below home.
  if (resolved != physicalSpelling(path)) return throughLink;
  return std::nullopt;
}

TrashResult Trasher::act(const TrashItem& item, CleanAction action,
                         const std::vector<RemovalDisk::Identity>& guarded) const {
  using Outcome = TrashResult::Outcome;
  // A path spelled from home's real path is judged in home's own spelling.
  const std::string path = homeSpelling(tidy(item.path));

  const auto entry = disk_.inspect(path);
  if (!entry && entry.error().isGone()) return result(item, Outcome::alreadyGone);
  // "name/" names a folder; for a file it names nothing, as lstat would say (ENOTDIR). A link
  // spelled that way is still looked at as the link itself, and refused as one.
  const bool namesFolder = item.path.ends_with('/') || item.path.ends_with("/.");
  const bool fits = entry && (!namesFolder || entry->isDirectory || entry->isSymlink);
  const auto resolved = fits ? disk_.resolve(path) : std::nullopt;
  if (!resolved) return result(item, Outcome::refused, notFound);
  if (auto refused = refusalOnDisk(path, *entry, *resolved, guarded, action)) {
    return result(item, Outcome::refused, std::move(*refused));
  }
  if (entry->isDirectory) {
    const auto hazard = hazardInside(*resolved, guarded, true);
    if (!hazard) {
      return result(item, Outcome::failed, sentence(hazard.error(), ErrorWording::reason));
    }
    if (*hazard) return result(item, Outcome::refused, **hazard);
  }

  if (action == CleanAction::delete_) {
    const auto done = disk_.removeForGood(*resolved, entry->identity, guarded);
    if (!done) return result(item, Outcome::failed, done.error());
    return result(item, Outcome::deleted);
  }
  const auto trashed = disk_.moveToTrash(*resolved, entry->identity);
  if (!trashed) return result(item, Outcome::failed, trashed.error());
  if (auto problem = checkMoved(*trashed, *entry, guarded)) {
    // Something was swapped in between the checks and the move: it goes back where it was.
    // The folder it came from may be mid-rename by that other program: a few tries.
    auto back = disk_.putBack(*trashed, *resolved);
    for (int attempt = 1; !back && attempt < putBackAttempts; ++attempt) {
      std::this_thread::yield();
      back = disk_.putBack(*trashed, *resolved);
    }
    if (!back) {
      return result(item, Outcome::failed,
                    *problem + "; Tovrin couldn't put it back: " + back.error());
    }
    return result(item, Outcome::refused, std::move(*problem));
  }
  return result(item, Outcome::moved);
}

std::optional<std::string> Trasher::checkMoved(
    const std::string& trashed, const RemovalDisk::Entry& checked,
    const std::vector<RemovalDisk::Identity>& guarded) const {
  const auto moved = disk_.inspect(trashed);
  if (!moved || moved->identity != checked.identity) return std::string(changedMeanwhile);
  if (!moved->isDirectory) return std::nullopt;
  // In the Trash no one else moves things in or out, so what is inside now is what went.
  const auto hazard = hazardInside(trashed, guarded, false);
  if (!hazard) return sentence(hazard.error(), ErrorWording::reason);
  return *hazard;
}

}  // namespace pellwin
