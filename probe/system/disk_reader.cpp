#include "probe/system/disk_reader.h"

#include <sys/stat.h>
#include <sys/statvfs.h>

#include <algorithm>

#include "core/base/checked_math.h"
#include "probe/key_value_text.h"
#include "probe/proc_file.h"
#include "probe/text_number.h"

namespace pellwin {

namespace {

constexpr std::uint64_t sectorBytes = 512;

}  // namespace

std::vector<DiskStatLine> parseDiskstats(std::string_view text) {
  std::vector<DiskStatLine> lines;
  forEachLine(text, [&](std::string_view line) {
    // major minor name reads merged sectors-read ms writes merged sectors-written ...
    std::string_view words[10];
    for (auto& word : words) word = nextWord(line);
    if (words[9].empty()) return;
    const auto read = parseUnsigned(words[5]);
    const auto written = parseUnsigned(words[9]);
    if (!read || !written) return;
    lines.push_back(DiskStatLine{
        .name = std::string(words[2]), .sectorsRead = *read, .sectorsWritten = *written});
  });
  return lines;
}

std::optional<DiskTotals> sumWholeDisks(const std::vector<DiskStatLine>& lines,
                                        const std::function<bool(std::string_view)>& isWholeDisk) {
  std::optional<std::uint64_t> read = 0, written = 0;
  bool found = false;
  for (const auto& line : lines) {
    if (!isWholeDisk(line.name)) continue;
    found = true;
    const auto lineRead = checkedProduct(line.sectorsRead, sectorBytes);
    const auto lineWritten = checkedProduct(line.sectorsWritten, sectorBytes);
    read = read && lineRead ? checkedSum(*read, *lineRead) : std::nullopt;
    written = written && lineWritten ? checkedSum(*written, *lineWritten) : std::nullopt;
  }
  if (!found || !read || !written) return std::nullopt;
  return DiskTotals{.readBytes = *read, .writeBytes = *written};
}

namespace DiskReader {

std::optional<DiskTotals> totals(const std::filesystem::path& procRoot,
                                 const std::filesystem::path& sysRoot) {
  const auto text = readTextFile(procRoot / "diskstats");
  if (!text) return std::nullopt;
  return sumWholeDisks(parseDiskstats(*text), [&](std::string_view name) {
    // sysfs spells a "/" in a device name as "!" (cciss/c0d0 is /sys/block/cciss!c0d0).
    std::string sysName(name);
    std::replace(sysName.begin(), sysName.end(), '/', '!');
    if (sysName.empty() || sysName == "." || sysName == "..") return false;
    struct stat info {};
    return ::stat((sysRoot / "block" / sysName / "device").c_str(), &info) == 0;
  });
}

std::optional<DiskSpace> space(const std::filesystem::path& volume) {
  struct statvfs info {};
  if (::statvfs(volume.c_str(), &info) != 0) return std::nullopt;
  const auto free = checkedProduct(info.f_bavail, info.f_frsize);
  const auto total = checkedProduct(info.f_blocks, info.f_frsize);
  if (!free || !total) return std::nullopt;
  return DiskSpace{.freeBytes = *free, .totalBytes = *total};
}

}  // namespace DiskReader
}  // namespace pellwin
