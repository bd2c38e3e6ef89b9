#include "core/folder_catalog.h"

#include <algorithm>
#include <vector>

namespace pellwin::FolderCatalog {
namespace {

std::vector<std::string_view> components(std::string_view path) {
  std::vector<std::string_view> parts;
  std::size_t start = 0;
  while (start <= path.size()) {
    std::size_t end = path.find('/', start);
    if (end == std::string_view::npos) end = path.size();
    if (end > start) parts.push_back(path.substr(start, end - start));
    start = end + 1;
  }
  return parts;
}

// How many leading components of `parts`, from `from` on, the entry's path spells out, or 0
// when it does not. Compared without splitting the entry, which keeps a lookup allocation-free
// for the table's ~120 rows.
std::size_t prefixLength(std::string_view entryPath, const std::vector<std::string_view>& parts,
                         std::size_t from) {
  std::size_t matched = 0;
  std::size_t start = 0;
  while (start <= entryPath.size()) {
    std::size_t end = entryPath.find('/', start);
    if (end == std::string_view::npos) end = entryPath.size();
    if (end > start) {
      if (from + matched >= parts.size()) return 0;
      if (parts[from + matched] != entryPath.substr(start, end - start)) return 0;
      ++matched;
    }
    start = end + 1;
  }
  return matched;
}

struct Match {
  const FolderEntry* entry = nullptr;
  std::size_t depth = 0;  // absolute components down to the matched folder
};

struct Located {
  std::vector<std::string_view> parts;
  bool insideHome = false;
  std::size_t homeDepth = 0;
};

Located locate(std::string_view path, std::string_view home) {
  Located located{.parts = components(path)};
  const auto homeParts = components(home);
  located.homeDepth = homeParts.size();
  located.insideHome = homeParts.size() <= located.parts.size() &&
                       std::equal(homeParts.begin(), homeParts.end(), located.parts.begin());
  return located;
}

std::size_t matchDepth(const FolderEntry& entry, const Located& at) {
  if (entry.anywhere) {
    if (!at.insideHome) return 0;
    for (std::size_t i = at.parts.size(); i > at.homeDepth; --i) {
      if (at.parts[i - 1] == entry.path) return i;
    }
    return 0;
  }
  if (entry.path.starts_with('/')) {
    // Where home itself lies (/var/home on some systems, /tmp in tests) says nothing about
    // what is inside it: an absolute row counts inside home only when it lies deeper than home.
    const std::size_t length = prefixLength(entry.path, at.parts, 0);
    return at.insideHome && length <= at.homeDepth ? 0 : length;
  }
  if (!at.insideHome) return 0;
  const std::size_t length = prefixLength(entry.path, at.parts, at.homeDepth);
  return length == 0 ? 0 : at.homeDepth + length;
}

Match bestMatch(const Located& at) {
  Match best;
  for (const FolderEntry& entry : entries()) {
    const std::size_t depth = matchDepth(entry, at);
    if (depth > best.depth) best = {.entry = &entry, .depth = depth};
  }
  return best;
}

}  // namespace

std::optional<FolderEntry> best(std::string_view path, std::string_view home) {
  const Match match = bestMatch(locate(path, home));
  if (match.entry == nullptr) return std::nullopt;
  return *match.entry;
}

StorageCategory category(std::string_view path, std::string_view home) {
  const Located at = locate(path, home);
  const Match match = bestMatch(at);
  if (match.entry != nullptr) return match.entry->category;
  return at.insideHome ? StorageCategory::other : StorageCategory::system;
}

std::optional<std::string> explanation(std::string_view path, std::string_view home) {
  const Located at = locate(path, home);
  const Match match = bestMatch(at);
  if (match.entry == nullptr || match.depth != at.parts.size()) return std::nullopt;
  return std::string(match.entry->explanation);
}

bool isCleanable(std::string_view path, std::string_view home) {
  const Match match = bestMatch(locate(path, home));
  return match.entry != nullptr && match.entry->cleanable;
}

}  // namespace pellwin::FolderCatalog
