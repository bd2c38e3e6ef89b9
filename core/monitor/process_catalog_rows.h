// The rows of the process catalog, one table per operating system, read only by the catalog's
// lookups: each row names a process, or by pattern a family of processes, and what it is.
// Constant tables; safe from any thread.
#pragma once

#include <span>
#include <string_view>

#include "core/monitor/process_catalog.h"

namespace pellwin::ProcessCatalog {

// How a row's pattern is compared with a process name. Kernel threads have no executable and
// carry a suffix that changes with the work they do ("kworker/u16:2+flush-259:0"), so their
// rows match by prefix and only for kernel threads.
enum class Match { exact, prefix, kernelPrefix };

struct Row {
  std::string_view pattern;
  Match match;
  KnownProcess entry;
};

// The Linux rows: the kernel's threads, the desktop and the system's services.
[[nodiscard]] std::span<const Row> linuxRows();

// What a kernel thread that no row names stands for: the kernel itself.
[[nodiscard]] KnownProcess linuxKernel();

// The macOS rows: kept so that a machine reading from that system judges the same; not live
// on Linux. Every row matches one exact name.
[[nodiscard]] std::span<const Row> macosRows();

}  // namespace pellwin::ProcessCatalog
