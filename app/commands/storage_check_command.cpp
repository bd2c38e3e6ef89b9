#include "app/commands/storage_check_command.h"

#include <sys/stat.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <filesystem>
#include <ostream>
#include <string_view>
#include <utility>

#include "app/commands/clean_plan_report.h"
#include "app/commands/removal_commands.h"
#include "app/commands/storage_self_tests.h"
#include "app/models/history_recorder.h"
#include "core/base/checked_math.h"
#include "core/base/data_folder.h"
#include "core/base/format.h"
#include "core/base/printable_text.h"
#include "core/space/project_advisor.h"
#include "probe/files/disk_scanner.h"
#include "probe/files/full_disk_access.h"
#include "probe/files/scan_cache.h"

namespace pellwin {
namespace {

// Tested in this order; the first present decides.
constexpr std::pair<std::string_view, StorageCheckMode> kModeSwitches[] = {
    {"--trash-test", StorageCheckMode::trashTest}, {"--flow-test", StorageCheckMode::flowTest},
    {"--clean-plan", StorageCheckMode::cleanPlan}, {"--clean", StorageCheckMode::clean},
    {"--trash", StorageCheckMode::trash},
};

// Every argument after "--trash" that is not an option (nor the history file's path).
std::expected<std::vector<std::string>, std::string> trashItems(
    const std::vector<std::string>& arguments) {
  std::vector<std::string> items;
  auto it = std::find(arguments.begin(), arguments.end(), "--trash");
  for (++it; it != arguments.end(); ++it) {
    if (*it == "--history-db") {
      if (std::next(it) == arguments.end()) break;
      ++it;
    } else if (it->starts_with("-") && *it != "-") {
      return std::unexpected("--trash doesn't know the option " + printableText(*it));
    } else {
      items.push_back(*it);
    }
  }
  if (items.empty()) return std::unexpected(std::string("--trash needs at least one path"));
  return items;
}

std::optional<std::size_t> wholeNumber(std::string_view text) {
  if (text.starts_with('+')) text.remove_prefix(1);
  std::size_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return value;
}

double secondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// One line on the terminal, rewritten in place: what has been counted and where the walk is.
class ProgressTicker {
 public:
  explicit ProgressTicker(std::ostream& err) : err_(err) {}
  ~ProgressTicker() {
    if (shown_) err_ << "\r\033[K" << std::flush;
  }
  ProgressTicker(const ProgressTicker&) = delete;
  ProgressTicker& operator=(const ProgressTicker&) = delete;

  void show(const ScanProgress& progress) {
    std::string line =
        Format::disk(progress.bytes) + " in " + std::to_string(progress.items) + " items  ";
    std::string path = printableText(progress.currentPath);
    constexpr std::size_t kWidth = 79;  // one line of a classic terminal, whatever its size
    const std::size_t room = saturatingSubtract(kWidth, line.size());
    if (path.size() > room)
      path = "..." + path.substr(path.size() - room + std::min(room, std::size_t{3}));
    err_ << "\r\033[K" << line << path << std::flush;
    shown_ = true;
  }

 private:
  std::ostream& err_;
  bool shown_ = false;
};

int runScan(const StorageCheckOptions& options, const Environment& environment, std::ostream& out,
            std::ostream& err) {
  const std::string folder = StorageCheck::folderToScan(options.path, environment.home);
  // A file would be walked as a folder that cannot be opened and reported as "1 locked".
  if (struct stat info{}; ::stat(folder.c_str(), &info) == 0 && !S_ISDIR(info.st_mode)) {
    err << "--check-storage scans a folder, and " << printableText(folder) << " isn't one\n";
    return 2;
  }
  const DiskScanner scanner(environment.home, environment.sysRoot);
  std::optional<ProgressTicker> ticker;
  if (environment.errIsTerminal) ticker.emplace(err);
  const auto started = std::chrono::steady_clock::now();
  auto result = scanner.scan(folder, std::nullopt, [&](const ScanProgress& progress) {
    if (ticker) ticker->show(progress);
  });
  const double seconds = secondsSince(started);
  ticker.reset();
  if (!result) {
    err << "scan failed: " << printableText(result.error().description()) << "\n";
    return 1;
  }
  if (options.json) {
    const double now =
        std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
    const CachedScan scan{.tree = std::move(result->tree),
                          .scannedAt = now,
                          .root = folder,
                          .access = FullDiskAccess::state(environment.home)};
    // Each node carries its whole path: a deep enough tree would be gigabytes of text.
    if (const std::uint64_t bytes = scan.textBytesAtLeast(); bytes > ScanCache::largestFile) {
      err << "the tree is too deep to write as JSON: its paths alone take "
          << Format::disk(bytes) << "\n";
      return 1;
    }
    out << scan.encode() << "\n";
    return 0;
  }
  for (const auto& line : StorageCheck::scanLines(folder, seconds, result->tree, options.top)) {
    out << line << "\n";
  }
  if (options.rebuild) {
    const auto planStarted = std::chrono::steady_clock::now();
    const RebuildPlan plan = ProjectAdvisor::plan(result->tree, environment.home);
    const double planSeconds = secondsSince(planStarted);
    for (const auto& line : StorageCheck::planLines(plan, planSeconds, folder)) {
      out << line << "\n";
    }
  }
  return 0;
}

}  // namespace

std::expected<StorageCheckOptions, std::string> parseStorageCheck(
    const std::vector<std::string>& arguments) {
  StorageCheckOptions options;
  for (const auto& [flag, mode] : kModeSwitches) {
    if (std::find(arguments.begin(), arguments.end(), flag) != arguments.end()) {
      options.mode = mode;
      if (mode == StorageCheckMode::trash) {
        auto items = trashItems(arguments);
        if (!items) return std::unexpected(std::move(items.error()));
        options.items = std::move(*items);
      }
      return options;
    }
  }
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    if (argument == "--help" || argument == "-h") {
      return StorageCheckOptions{.mode = StorageCheckMode::help};
    }
    if (argument == "--rebuild") {
      options.rebuild = true;
    } else if (argument == "--json") {
      options.json = true;
    } else if (argument == "--top") {
      if (i + 1 == arguments.size()) return std::unexpected("--top needs a number");
      const auto top = wholeNumber(arguments[++i]);
      if (!top)
        return std::unexpected("--top needs a whole number, not \"" + printableText(arguments[i]) +
                               "\"");
      options.top = *top;
    } else if (argument == "--history-db") {
      ++i;  // the history file of every mode, taken by the entry
    } else if (argument.starts_with("-") && argument != "-") {
      return std::unexpected("--check-storage doesn't know the option " + printableText(argument));
    } else if (!options.path) {
      options.path = argument;
    } else {
      return std::unexpected("--check-storage scans one folder; leave out " +
                             printableText(argument));
    }
  }
  if (options.json && options.rebuild) {
    return std::unexpected("--json prints the scan alone; leave out --rebuild");
  }
  return options;
}

std::string storageCheckUsage() {
  return "Usage: tovrin --check-storage [DIR] [--top N] [--rebuild] [--json]\n"
         "       tovrin --check-storage --trash-test | --flow-test | --clean-plan | --clean\n"
         "       tovrin --check-storage --trash PATH...\n"
         "Scans DIR (your home folder when left out) on its own disk and prints its size and\n"
         "its N biggest items (10 unless told). Nothing is changed.\n"
         "  --top N       how many of the biggest items to list\n"
         "  --rebuild     also list developer folders that a build or an install makes again\n"
         "  --json        print the whole scan as JSON, in the format of the scan cache\n"
         "  --trash-test  move a scratch folder to the Trash and check it got there\n"
         "  --flow-test   pick, refuse and remove scratch items as the space map would\n"
         "  --clean-plan  print what quick clean would remove, without removing it\n"
         "  --clean       run quick clean now, as planned, and log it to history\n"
         "  --trash PATH  move each PATH to the Trash as the space map would\n";
}

int runStorageCheck(const std::vector<std::string>& arguments, const Environment& environment,
                    std::ostream& out, std::ostream& err, const std::string& historyFile) {
  const auto options = parseStorageCheck(arguments);
  if (!options) {
    err << options.error() << "\n";
    return 2;
  }
  switch (options->mode) {
    case StorageCheckMode::scan: return runScan(*options, environment, out, err);
    case StorageCheckMode::trashTest:
      return runTrashSelfTest(environment.home, applicationSupport(environment), out);
    case StorageCheckMode::flowTest:
      return runFlowSelfTest(environment.home, applicationSupport(environment), out);
    case StorageCheckMode::cleanPlan: return runCleanPlan(environment, out);
    case StorageCheckMode::clean: {
      const std::string file =
          historyFile.empty() ? HistoryRecorder::storeURL(
                                    std::nullopt, DataFolder::path(applicationSupport(environment)))
                                    .string()
                              : historyFile;
      return runCleanNow(environment, file, out);
    }
    case StorageCheckMode::trash: return runTrashItems(options->items, environment, out);
    case StorageCheckMode::help: out << storageCheckUsage(); return 0;
  }
  return 1;
}

namespace StorageCheck {

std::vector<std::string> scanLines(const std::string& path, double seconds, const SizeNode& tree,
                                   std::size_t top) {
  std::size_t nodes = 0;
  std::size_t locked = 0;
  tree.forEach([&](const SizeNode& node) {
    ++nodes;
    if (node.isLocked) ++locked;
  });
  std::vector<std::string> lines;
  lines.push_back("scanned " + printableText(path) + " in " + Format::fixed(seconds, 1) + " s, " +
                  Format::disk(tree.bytes) + ", " + std::to_string(nodes) + " nodes, " +
                  std::to_string(locked) + " locked");
  for (std::size_t i = 0; i < std::min(top, tree.children.size()); ++i) {
    const SizeNode& child = tree.children[i];
    lines.push_back(child.sizeLabel() + "\t" + printableText(child.path.str()));
  }
  return lines;
}

std::vector<std::string> planLines(const RebuildPlan& plan, double seconds,
                                   const std::string& scannedFolder) {
  std::vector<std::string> lines;
  lines.push_back("rebuild plan in " + Format::fixed(seconds, 3) +
                  " s: " + Format::disk(plan.totalBytes()) + " in " +
                  std::to_string(plan.items.size()) + " folders across " +
                  std::to_string(plan.projects.size()) + " projects, nothing was changed");
  // Each project, then the folders it can rebuild.
  for (const ProjectSummary& project : plan.projects) {
    lines.push_back("project\t" + project.label + "\t" + printableText(project.path));
    for (const RebuildItem& item : plan.items) {
      if (!pathIsWithin(item.path, project.path) ||
          item.relativePath != item.displayPath(project.path)) {
        continue;
      }
      lines.push_back(Format::disk(item.bytes) + "\t" + item.reason + "\t" +
                      printableText(item.displayPath(scannedFolder)));
    }
  }
  for (const RebuildItem& model : plan.models) {
    lines.push_back("model\t" + Format::disk(model.bytes) + "\t" + printableText(model.path));
  }
  return lines;
}

std::string folderToScan(const std::optional<std::string>& path, const std::string& home) {
  if (!path || path->empty()) return home;
  std::error_code error;
  std::filesystem::path absolute = std::filesystem::absolute(*path, error);
  if (error) absolute = *path;
  std::string folder = absolute.lexically_normal().string();
  while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
  return folder;
}

}  // namespace StorageCheck
}  // namespace pellwin
