#include "probe/files/trasher.h"

#include <exception>
#include <utility>

#include "core/space/folder_catalog.h"
#include "core/space/removal_rules.h"
#include "probe/files/mount_point.h"

namespace pellwin {

namespace {

constexpr const char* notFound = "Tovrin couldn't find it on disk";
constexpr const char* onlyCaches = "Tovrin only deletes caches and logs for good";

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
  // A guarded folder reached through a link is guarded where it really is, too.
  auto addResolved = [&](const std::vector<std::string>& paths, std::vector<std::string>& checked) {
    for (const std::string& path : paths) {
      if (auto resolved = disk_.resolve(path); resolved && *resolved != path) {
        checked.push_back(homeSpelling(*resolved));
      }
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
}

bool Trasher::isCleanable(const std::string& path) const {
  return FolderCatalog::isCleanable(path, home_) ||
         FolderCatalog::isCleanable(LinuxCleanerCatalog::standardPath(path, movedBases_), home_);
}

std::string Trasher::homeSpelling(const std::string& resolved) const {
  if (resolvedHome_ == home_ || !isWithin(resolved, resolvedHome_)) return resolved;
  return home_ + resolved.substr(resolvedHome_.size());
}

std::vector<TrashResult> Trasher::trash(const std::vector<TrashItem>& items) const {
  return perform(items, CleanAction::trash);
}

std::vector<TrashResult> Trasher::perform(const std::vector<TrashItem>& items,
                                          CleanAction action) const {
  std::vector<TrashResult> results;
  results.reserve(items.size());
  for (const TrashItem& item : items) {
    try {
      results.push_back(act(item, action));
    } catch (const std::exception& error) {
      results.push_back(result(item, TrashResult::Outcome::failed, error.what()));
    }
  }
  return results;
}

std::expected<std::optional<std::string>, SystemError> Trasher::hazardInside(
    const std::string& resolvedFolder) const {
  const auto split = RemovalRules::split(checkedGuards_);
  const auto found = disk_.findSubfolder(resolvedFolder, [&](const RemovalDisk::Subfolder& folder) {
    // A disk or a folder mounted inside would go to the Trash with the folder, and emptying
    // the Trash would then erase what is mounted there.
    return folder.isMountPoint ||
           RemovalRules::refusal(homeSpelling(folder.path), home_, split).has_value();
  });
  if (!found) return std::unexpected(found.error());
  if (!*found) return std::optional<std::string>();
  if ((*found)->isMountPoint) return std::optional<std::string>(mountInsideRefusal((*found)->name));
  return std::optional<std::string>("It holds " + (*found)->name + ", which Tovrin keeps safe");
}

TrashResult Trasher::act(const TrashItem& item, CleanAction action) const {
  using Outcome = TrashResult::Outcome;
  const std::string path = tidy(item.path);

  const auto entry = disk_.inspect(path);
  if (!entry && entry.error().isGone()) return result(item, Outcome::alreadyGone);
  // "name/" names a folder; for a file it names nothing, as lstat would say (ENOTDIR). A link
  // spelled that way is still looked at as the link itself, and refused as one.
  const bool namesFolder = item.path.ends_with('/') || item.path.ends_with("/.");
  const bool fits = entry && (!namesFolder || entry->isDirectory || entry->isSymlink);
  const auto resolved = fits ? disk_.resolve(path) : std::nullopt;
  if (!resolved) return result(item, Outcome::refused, notFound);

  const std::string real = homeSpelling(*resolved);
  if (auto refused = RemovalRules::verdict(path, home_, entry->isSymlink, real, checkedGuards_)) {
    return result(item, Outcome::refused, refused->reason);
  }
  if (entry->isMountPoint) return result(item, Outcome::refused, mountPointRefusal);
  if (action == CleanAction::delete_ && (!isCleanable(path) || !isCleanable(real))) {
    return result(item, Outcome::refused, onlyCaches);
  }
  if (entry->isDirectory) {
    const auto hazard = hazardInside(*resolved);
    if (!hazard) {
      return result(item, Outcome::failed, sentence(hazard.error(), ErrorWording::reason));
    }
    if (*hazard) return result(item, Outcome::refused, **hazard);
  }

  const auto done = action == CleanAction::delete_ ? disk_.removeForGood(*resolved)
                                                   : disk_.moveToTrash(*resolved);
  if (!done) return result(item, Outcome::failed, done.error());
  return result(item, action == CleanAction::delete_ ? Outcome::deleted : Outcome::moved);
}

}  // namespace pellwin
