// What the monitor knows about processes that are not apps of their own: the parts of the
// operating system that most often show up busy (with a name and one sentence each), the
// interpreters whose scripts are shown one by one, and the category rules for every entry.
// Immutable tables; every function is pure and safe from any thread.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "core/monitor/app_category.h"
#include "core/monitor/readings.h"

namespace pellwin {

struct KnownProcess {
  std::string_view name{};         // display name, such as "Screen drawing"
  std::string_view explanation{};  // one sentence on what it does and why it may be busy
};

// A catalog row that a process stands for. `key` is the row's process name; processes whose
// names vary (kernel workers, "gsd-…" services), and the rows of one entry, share one key so
// they fold into one entry.
struct CatalogMatch {
  std::string_view key{};
  KnownProcess entry{};
};

namespace ProcessCatalog {

// The row for exactly this process name, if any.
[[nodiscard]] std::optional<KnownProcess> known(std::string_view processName);

// The row a process stands for: by its name, then by the last component of its first argument
// (the kernel cuts the names of other users' processes to 15 characters), then by the name
// patterns of the rows that cover a family of processes. A kernel thread that no row names is
// the kernel itself.
[[nodiscard]] std::optional<CatalogMatch> match(const ProcessSample& sample);

// The row of a known part of the operating system: a kernel thread, or a process that matches
// the catalog and runs from the system's own locations. A process whose executable may not be
// read belongs to another user, which on a one-person desktop is the system.
[[nodiscard]] std::optional<CatalogMatch> systemPart(const ProcessSample& sample);

// Where the operating system's own programs live: the distribution's folders (not /usr/local),
// and macOS's system folder.
[[nodiscard]] bool isSystemLocation(std::string_view path);

// "node", "python3", … or any name beginning with "python3.".
[[nodiscard]] bool isInterpreter(std::string_view processName);

// The category of an app's display name in the table of well-known apps.
[[nodiscard]] std::optional<AppCategory> categoryOfName(std::string_view name);

// The category a desktop entry's Categories key implies, checked in the order browsers,
// developer tools, communication, media, system, whatever the order in the entry.
[[nodiscard]] std::optional<AppCategory> categoryOfDesktopEntry(
    std::span<const std::string> desktopCategories);

// First match wins: the name table; the desktop entry's categories; an interpreter or framework
// Python is a developer tool; the one override; a system part; the path's location; other.
[[nodiscard]] AppCategory category(std::string_view name, std::string_view processName,
                                   std::string_view path, bool python, bool systemPart,
                                   std::span<const std::string> desktopCategories = {});

}  // namespace ProcessCatalog
}  // namespace pellwin
