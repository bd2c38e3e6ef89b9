#include "probe/system/memory_reader.h"

#include <charconv>
#include <system_error>

#include "core/base/checked_math.h"
#include "probe/key_value_text.h"
#include "probe/proc_file.h"
#include "probe/text_number.h"

namespace pellwin {

namespace {

// "16314400 kB" or "0": the number, with the unit dropped.
std::optional<std::uint64_t> kilobytes(std::string_view value) {
  if (value.ends_with(" kB")) value.remove_suffix(3);
  return parseUnsigned(trimSpaces(value));
}

struct MeminfoField {
  std::string_view key;
  std::uint64_t Meminfo::*field;
  bool required;
};

constexpr MeminfoField meminfoFields[] = {
    {"MemTotal", &Meminfo::totalKB, true},
    {"MemFree", &Meminfo::freeKB, true},
    {"MemAvailable", &Meminfo::availableKB, true},
    {"SwapTotal", &Meminfo::swapTotalKB, true},
    {"SwapFree", &Meminfo::swapFreeKB, true},
    {"SUnreclaim", &Meminfo::sUnreclaimKB, false},
    {"KernelStack", &Meminfo::kernelStackKB, false},
    {"PageTables", &Meminfo::pageTablesKB, false},
    {"SecPageTables", &Meminfo::secPageTablesKB, false},
    {"Percpu", &Meminfo::percpuKB, false},
    {"Unevictable", &Meminfo::unevictableKB, false},
    {"Zswap", &Meminfo::zswapKB, false},
    {"HugePages_Total", &Meminfo::hugePagesTotal, false},
    {"HugePages_Free", &Meminfo::hugePagesFree, false},
    {"Hugepagesize", &Meminfo::hugePageSizeKB, false},
};

std::optional<double> parseDecimal(std::string_view text) {
  double value = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (text.empty() || error != std::errc() || stop != end || value < 0) return std::nullopt;
  return value;
}

// "some avg10=1.23 avg60=0.50 avg300=0.10 total=12345": the avg10 figure.
std::optional<double> avg10(std::string_view line) {
  while (!line.empty()) {
    const auto word = nextWord(line);
    if (word.starts_with("avg10=")) return parseDecimal(word.substr(6));
  }
  return std::nullopt;
}

std::optional<std::uint64_t> bytesFromKB(std::uint64_t kb) { return checkedProduct(kb, 1024); }

}  // namespace

std::optional<Meminfo> parseMeminfo(std::string_view text) {
  Meminfo meminfo;
  unsigned found = 0;
  bool malformed = false;
  forEachKeyValue(text, ':', [&](std::string_view key, std::string_view value) {
    for (std::size_t i = 0; i < std::size(meminfoFields); ++i) {
      if (meminfoFields[i].key != key) continue;
      const auto number = kilobytes(value);
      if (!number) {
        malformed = malformed || meminfoFields[i].required;
        return;
      }
      meminfo.*meminfoFields[i].field = *number;
      found |= 1u << i;
      return;
    }
  });
  constexpr unsigned requiredMask = 0b11111;
  if (malformed || (found & requiredMask) != requiredMask || meminfo.totalKB == 0) {
    return std::nullopt;
  }
  return meminfo;
}

std::optional<SwapTraffic> parseVmstat(std::string_view text) {
  std::optional<std::uint64_t> in, out;
  forEachKeyValue(text, ' ', [&](std::string_view key, std::string_view value) {
    if (key == "pswpin") in = parseUnsigned(value);
    if (key == "pswpout") out = parseUnsigned(value);
  });
  if (!in || !out) return std::nullopt;
  return SwapTraffic{.pagesIn = *in, .pagesOut = *out};
}

std::optional<MemoryPressure> parseMemoryPressure(std::string_view text) {
  std::optional<double> some, full;
  forEachLine(text, [&](std::string_view line) {
    if (line.starts_with("some ")) some = avg10(line);
    if (line.starts_with("full ")) full = avg10(line);
  });
  if (!some || !full) return std::nullopt;
  return MemoryPressure{.someAvg10 = *some, .fullAvg10 = *full};
}

std::optional<std::uint64_t> parseZramMemoryUsed(std::string_view mmStat) {
  std::string_view field;
  for (int i = 0; i < 3; ++i) field = nextWord(mmStat);
  return parseUnsigned(field);
}

int memoryPressureLevel(const Meminfo& meminfo, const std::optional<MemoryPressure>& pressure) {
  const double total = static_cast<double>(meminfo.totalKB);
  const double available = static_cast<double>(meminfo.availableKB);
  const bool littleSwapLeft =
      meminfo.swapTotalKB == 0 ||
      static_cast<double>(meminfo.swapFreeKB) < 0.10 * static_cast<double>(meminfo.swapTotalKB);
  if (pressure && (pressure->fullAvg10 >= 10 || pressure->someAvg10 >= 40)) return 4;
  if (available < 0.03 * total && littleSwapLeft) return 4;
  // Copying big files stalls tasks on page-cache refaults without any shortage of memory, so
  // stalls alone warn only once half of memory is taken.
  if (pressure && available < 0.50 * total &&
      (pressure->someAvg10 >= 10 || pressure->fullAvg10 >= 2)) {
    return 2;
  }
  if (available < 0.10 * total) return 2;
  return 1;
}

std::optional<MemoryCounters> memoryCounters(const Meminfo& meminfo, const SwapTraffic& swap,
                                             std::uint64_t zramBytes,
                                             const std::optional<MemoryPressure>& pressure,
                                             std::uint64_t pageSize) {
  if (pageSize == 0) return std::nullopt;
  const std::uint64_t hugeInUse = saturatingSubtract(meminfo.hugePagesTotal, meminfo.hugePagesFree);
  std::optional<std::uint64_t> wiredKB = checkedProduct(hugeInUse, meminfo.hugePageSizeKB);
  for (const std::uint64_t part :
       {meminfo.sUnreclaimKB, meminfo.kernelStackKB, meminfo.pageTablesKB, meminfo.secPageTablesKB,
        meminfo.percpuKB, meminfo.unevictableKB}) {
    if (wiredKB) wiredKB = checkedSum(*wiredKB, part);
  }
  const auto total = bytesFromKB(meminfo.totalKB);
  const auto free = bytesFromKB(meminfo.freeKB);
  const auto wired = wiredKB ? bytesFromKB(*wiredKB) : std::nullopt;
  const auto zswap = bytesFromKB(meminfo.zswapKB);
  const auto compressed = zswap ? checkedSum(*zswap, zramBytes) : std::nullopt;
  const auto used = bytesFromKB(saturatingSubtract(meminfo.totalKB, meminfo.availableKB));
  const auto swapUsed = bytesFromKB(saturatingSubtract(meminfo.swapTotalKB, meminfo.swapFreeKB));
  if (!total || !free || !wired || !compressed || !used || !swapUsed) return std::nullopt;

  // Chosen so that app + wired + compressor pages, the used memory of the snapshot, come to
  // MemTotal − MemAvailable: what free(1), top and the desktop's monitors call used.
  const std::uint64_t usedPages = *used / pageSize;
  const std::uint64_t wiredPages = *wired / pageSize;
  const std::uint64_t compressorPages = *compressed / pageSize;
  const std::uint64_t kernelPages = wiredPages + compressorPages;
  return MemoryCounters{
      .physicalMemoryBytes = *total,
      .pageSize = pageSize,
      .freePages = *free / pageSize,
      .internalPages = saturatingSubtract(usedPages, kernelPages),
      .purgeablePages = 0,
      .wiredPages = wiredPages,
      .compressorPages = compressorPages,
      .swapIns = swap.pagesIn,
      .swapOuts = swap.pagesOut,
      .swapUsedBytes = *swapUsed,
      .pressureLevel = memoryPressureLevel(meminfo, pressure),
  };
}

namespace MemoryReader {

namespace {

// RAM taken by compressed zram stores. A device that was never set up has no mm_stat or a
// zero figure, and adds nothing.
std::uint64_t zramBytes(const std::filesystem::path& sysRoot) {
  std::uint64_t sum = 0;
  for (const auto& device : listFolder(sysRoot / "block")) {
    if (!device.filename().string().starts_with("zram")) continue;
    const auto text = readTextFile(device / "mm_stat");
    if (!text) continue;
    if (const auto used = parseZramMemoryUsed(*text)) sum = checkedSum(sum, *used).value_or(sum);
  }
  return sum;
}

}  // namespace

std::optional<MemoryCounters> read(const std::filesystem::path& procRoot,
                                   const std::filesystem::path& sysRoot, std::uint64_t pageSize) {
  const auto meminfoText = readTextFile(procRoot / "meminfo");
  const auto vmstatText = readTextFile(procRoot / "vmstat");
  if (!meminfoText || !vmstatText) return std::nullopt;
  const auto meminfo = parseMeminfo(*meminfoText);
  const auto swap = parseVmstat(*vmstatText);
  if (!meminfo || !swap) return std::nullopt;
  std::optional<MemoryPressure> pressure;
  if (const auto psi = readTextFile(procRoot / "pressure/memory")) {
    pressure = parseMemoryPressure(*psi);
  }
  return memoryCounters(*meminfo, *swap, zramBytes(sysRoot), pressure, pageSize);
}

}  // namespace MemoryReader
}  // namespace pellwin
