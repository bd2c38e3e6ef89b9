// `tovrin --check-storage`: the disk space map from the command line. Without a self-test or
// plan switch it scans a folder and prints its size, its biggest items and, with "--rebuild",
// the developer rebuild plan; with "--json" it prints the finished scan in the scan cache's
// format instead. Nothing on disk is changed. Other modes ("--trash-test", "--flow-test",
// "--clean-plan") are chosen here and run by their own code.
#pragma once

#include <cstddef>
#include <expected>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "app/environment.h"
#include "core/space/rebuild_plan.h"
#include "core/space/size_node.h"

namespace pellwin {

// Which job the arguments chose. A new mode gets a case here, a switch in `modeSwitches`
// (storage_check_command.cpp) and a case in `runStorageCheck`.
enum class StorageCheckMode { scan, trashTest, flowTest, cleanPlan, clean, trash, help };

struct StorageCheckOptions {
  StorageCheckMode mode = StorageCheckMode::scan;
  std::optional<std::string> path{};  // the folder to scan; home when absent
  std::size_t top = 10;               // how many of the root's largest children to list
  bool rebuild = false;
  bool json = false;
  std::vector<std::string> items{};  // for trash: the paths after "--trash"
  friend bool operator==(const StorageCheckOptions&, const StorageCheckOptions&) = default;
};

// The arguments that followed "--check-storage". The first of "--trash-test", "--flow-test",
// "--clean-plan", "--clean" and "--trash" present decides the mode ("--trash" takes every
// argument after it that is not an option as a path to move, and needs one at least); otherwise the
// first argument that is not an option (nor an option's value) is the path, "--top N" (a leading
// "+" accepted) how many items to list, "--rebuild" adds the rebuild plan and "--json" prints the
// scan as JSON. An unknown option or a bad number is an error sentence.
[[nodiscard]] std::expected<StorageCheckOptions, std::string> parseStorageCheck(
    const std::vector<std::string>& arguments);

[[nodiscard]] std::string storageCheckUsage();

// Runs the chosen mode: 0 when it finished or passed, 1 when it failed, 2 for bad arguments.
// The scan's progress goes to `err` only when `environment.errIsTerminal`, so that standard
// output stays clean for scripts. `historyFile` is where "--clean" logs its run; empty means
// the data folder's.
[[nodiscard]] int runStorageCheck(const std::vector<std::string>& arguments,
                                  const Environment& environment, std::ostream& out,
                                  std::ostream& err, const std::string& historyFile = {});

namespace StorageCheck {

// The lines of a finished scan, without line ends: the summary, the `top` largest children,
// and with a plan its summary, projects, items and model files. Paths are made printable, so a
// name holding a line break or bytes that are not text never breaks a line.
[[nodiscard]] std::vector<std::string> scanLines(const std::string& path, double seconds,
                                                 const SizeNode& tree, std::size_t top);
[[nodiscard]] std::vector<std::string> planLines(const RebuildPlan& plan, double seconds,
                                                 const std::string& scannedFolder);

// The folder as the scan should see it: absolute, without "." and ".." steps or trailing
// slashes; `home` when none is given.
[[nodiscard]] std::string folderToScan(const std::optional<std::string>& path,
                                       const std::string& home);

}  // namespace StorageCheck
}  // namespace pellwin
