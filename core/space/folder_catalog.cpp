#include "core/space/folder_catalog.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "core/space/folder_catalog_rows.h"

namespace pellwin::FolderCatalog {
namespace {

// Rows are at most this many components deep (checked by the tests), so a lookup splits only
// that far below home, however deep the path: a size tree can hold paths thousands of
// components long, and every node is looked up.
constexpr std::size_t kMaxRowDepth = 8;

// The first `limit` components of `path`.
std::vector<std::string_view> components(std::string_view path, std::size_t limit) {
  std::vector<std::string_view> parts;
  std::size_t start = 0;
  while (start <= path.size() && parts.size() < limit) {
    std::size_t end = path.find('/', start);
    if (end == std::string_view::npos) end = path.size();
    if (end > start) parts.push_back(path.substr(start, end - start));
    start = end + 1;
  }
  return parts;
}

std::size_t componentCount(std::string_view path) {
  std::size_t count = 0;
  bool inside = false;
  for (char c : path) {
    if (c == '/') {
      inside = false;
    } else if (!inside) {
      inside = true;
      ++count;
    }
  }
  return count;
}

// How many leading components of `parts`, from `from` on, the entry's path spells out, or 0
// when it does not. Compared without splitting the entry, which keeps a lookup allocation-free
// for the table's rows.
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
  std::string_view path;
  std::vector<std::string_view> head;  // the leading components, as far as rows reach
  std::size_t depth = 0;               // all components
  bool insideHome = false;
  std::size_t homeDepth = 0;
};

Located locate(std::string_view path, std::string_view home) {
  const auto homeParts = components(home, SIZE_MAX);
  Located located{.path = path,
                  .head = components(path, homeParts.size() + kMaxRowDepth),
                  .depth = componentCount(path),
                  .insideHome = false,
                  .homeDepth = homeParts.size()};
  located.insideHome = homeParts.size() <= located.head.size() &&
                       std::equal(homeParts.begin(), homeParts.end(), located.head.begin());
  return located;
}

// The deepest component below home that names an anywhere row, found from the end backwards.
Match deepestAnywhere(const Located& at) {
  if (!at.insideHome) return {};
  std::string_view rest = at.path;
  std::size_t position = at.depth;
  while (position > at.homeDepth) {
    while (!rest.empty() && rest.back() == '/') rest.remove_suffix(1);
    const auto slash = rest.rfind('/');
    const std::string_view name = slash == std::string_view::npos ? rest : rest.substr(slash + 1);
    for (const FolderEntry& entry : entries()) {
      if (entry.anywhere && entry.path == name) return {.entry = &entry, .depth = position};
    }
    rest = slash == std::string_view::npos ? std::string_view() : rest.substr(0, slash);
    --position;
  }
  return {};
}

std::size_t matchDepth(const FolderEntry& entry, const Located& at) {
  if (entry.path.starts_with('/')) {
    // Where home itself lies (/var/home on some systems, /tmp in tests) says nothing about
    // what is inside it: an absolute row counts inside home only when it lies deeper than home.
    const std::size_t length = prefixLength(entry.path, at.head, 0);
    return at.insideHome && length <= at.homeDepth ? 0 : length;
  }
  if (!at.insideHome) return 0;
  const std::size_t length = prefixLength(entry.path, at.head, at.homeDepth);
  return length == 0 ? 0 : at.homeDepth + length;
}

Match fixedMatch(const Located& at) {
  Match best;
  for (const FolderEntry& entry : entries()) {
    if (entry.anywhere) continue;
    const std::size_t depth = matchDepth(entry, at);
    if (depth > best.depth) best = {.entry = &entry, .depth = depth};
  }
  return best;
}

// On equal depth the earlier row wins; every anywhere row comes after the fixed rows that
// could tie with it, so it wins only by lying deeper.
Match better(Match fixed, Match anywhere) {
  return anywhere.depth > fixed.depth ? anywhere : fixed;
}

Match bestMatch(const Located& at) { return better(fixedMatch(at), deepestAnywhere(at)); }

StorageCategory categoryOf(Match match, bool insideHome) {
  if (match.entry != nullptr) return match.entry->category;
  return insideHome ? StorageCategory::other : StorageCategory::system;
}

const FolderEntry* anywhereRow(std::string_view name) {
  for (const FolderEntry& entry : entries()) {
    if (entry.anywhere && entry.path == name) return &entry;
  }
  return nullptr;
}

}  // namespace

std::span<const FolderEntry> entries() {
  // Built once and never changed, so sharing it between threads is safe.
  static const std::vector<FolderEntry> rows = [] {
    std::vector<FolderEntry> all(linuxRows().begin(), linuxRows().end());
    all.insert(all.end(), macosRows().begin(), macosRows().end());
    return all;
  }();
  return rows;
}

std::optional<FolderEntry> best(std::string_view path, std::string_view home) {
  const Match match = bestMatch(locate(path, home));
  if (match.entry == nullptr) return std::nullopt;
  return *match.entry;
}

StorageCategory category(std::string_view path, std::string_view home) {
  const Located at = locate(path, home);
  return categoryOf(bestMatch(at), at.insideHome);
}

CategoryTrail::CategoryTrail(std::string_view path, std::string_view home) {
  const auto homeParts = components(home, SIZE_MAX);
  home_ = std::make_shared<const std::vector<std::string>>(homeParts.begin(), homeParts.end());
  const Located at = locate(path, home);
  head_ = std::make_shared<const std::vector<std::string>>(at.head.begin(), at.head.end());
  depth_ = at.depth;
  insideHome_ = at.insideHome;
  const Match fixed = fixedMatch(at);
  fixed_ = fixed.entry;
  fixedDepth_ = fixed.depth;
  const Match anywhere = deepestAnywhere(at);
  anywhere_ = anywhere.entry;
  anywhereDepth_ = anywhere.depth;
}

CategoryTrail CategoryTrail::below(std::string_view name) const {
  CategoryTrail next = *this;
  next.depth_ = depth_ + 1;
  const std::size_t homeDepth = home_->size();
  if (head_->size() < homeDepth + kMaxRowDepth) {
    auto head = std::make_shared<std::vector<std::string>>(*head_);
    head->emplace_back(name);
    next.head_ = std::move(head);
    next.insideHome_ = homeDepth <= next.head_->size() &&
                       std::equal(home_->begin(), home_->end(), next.head_->begin());
    next.matchFixedRows();
  }
  if (next.insideHome_ && next.depth_ > homeDepth) {
    if (const FolderEntry* row = anywhereRow(name)) {
      next.anywhere_ = row;
      next.anywhereDepth_ = next.depth_;
    }
  }
  return next;
}

void CategoryTrail::matchFixedRows() {
  const std::vector<std::string_view> head(head_->begin(), head_->end());
  const Located at{.path = {},
                   .head = head,
                   .depth = depth_,
                   .insideHome = insideHome_,
                   .homeDepth = home_->size()};
  const Match fixed = fixedMatch(at);
  fixed_ = fixed.entry;
  fixedDepth_ = fixed.depth;
}

StorageCategory CategoryTrail::category() const {
  return categoryOf(better({.entry = fixed_, .depth = fixedDepth_},
                           {.entry = anywhere_, .depth = anywhereDepth_}),
                    insideHome_);
}

std::optional<std::string> explanation(std::string_view path, std::string_view home) {
  const Located at = locate(path, home);
  const Match match = bestMatch(at);
  if (match.entry == nullptr || match.depth != at.depth) return std::nullopt;
  return std::string(match.entry->explanation);
}

bool isCleanable(std::string_view path, std::string_view home) {
  const Match match = bestMatch(locate(path, home));
  return match.entry != nullptr && match.entry->cleanable;
}

}  // namespace pellwin::FolderCatalog
