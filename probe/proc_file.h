// Whole-file reads of the kernel's small text files. /proc and /sys files report a size of 0,
// so every read goes on to end of file. Safe from any thread; each call uses only its arguments.
#pragma once

#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "probe/system_error.h"

namespace pellwin {

// How far to read. Files that the kernel writes as one record (seq_file single_open: a
// process's stat, status, io, cgroup) hand out their whole text in the first read that has
// room for it, so a read that does not fill the buffer has all of it and the extra read that
// would only confirm the end is saved. Files of many records (diskstats, mountinfo) may stop
// short of the buffer between two records and must be read until a read gives nothing.
enum class ReadExtent { untilEnd, oneRecord };

// Reads the file at `relative` (below the directory `dirFd`) into `buffer`, which is reused from
// call to call, and returns a view of the contents, valid until the buffer changes. A failure
// names `relative`; SystemError::isGone tells a process that ended from a real failure.
[[nodiscard]] std::expected<std::string_view, SystemError> readFileAt(
    int dirFd, const char* relative, std::string& buffer, ReadExtent extent = ReadExtent::untilEnd);

// Reads a whole file; absent when it cannot be opened or read.
[[nodiscard]] std::optional<std::string> readTextFile(const std::filesystem::path& path);

// The first line of a sysfs attribute without its line end ("Battery\n" gives "Battery").
[[nodiscard]] std::optional<std::string> readAttribute(const std::filesystem::path& path);

// The entries of a folder, sorted by name; empty when it cannot be listed. Never throws.
[[nodiscard]] std::vector<std::filesystem::path> listFolder(const std::filesystem::path& folder);

// The target of the symbolic link at `relative` below `dirFd`; absent when it cannot be read.
[[nodiscard]] std::optional<std::string> readLinkAt(int dirFd, const char* relative);

}  // namespace pellwin
