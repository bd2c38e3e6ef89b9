#include "probe/system/process_files.h"

#include "core/base/checked_math.h"
#include "probe/key_value_text.h"
#include "probe/text_number.h"

namespace pellwin {

namespace {

std::uint64_t kilobytesOrZero(std::string_view value) {
  if (value.ends_with(" kB")) value.remove_suffix(3);
  return parseUnsigned(trimSpaces(value)).value_or(0);
}

}  // namespace

std::optional<ProcessStat> parseProcessStat(std::string_view text) {
  const auto open = text.find('(');
  const auto close = text.rfind(')');
  if (open == std::string_view::npos || close == std::string_view::npos || close < open) {
    return std::nullopt;
  }
  ProcessStat stat{.comm = text.substr(open + 1, close - open - 1)};
  std::string_view rest = text.substr(close + 1);
  if (!rest.empty() && rest.back() == '\n') rest.remove_suffix(1);
  // Field n of proc(5) is word n − 3 after the ")": state is field 3.
  for (int field = 3; field <= 22; ++field) {
    const std::string_view word = nextWord(rest);
    if (word.empty()) break;
    switch (field) {
      case 3: stat.state = word.front(); break;
      case 4: stat.parent = static_cast<std::int32_t>(parseSigned(word).value_or(0)); break;
      case 7: stat.terminal = parseSigned(word).value_or(0); break;
      case 9: stat.flags = parseUnsigned(word).value_or(0); break;
      case 10: stat.minorFaults = parseUnsigned(word).value_or(0); break;
      case 12: stat.majorFaults = parseUnsigned(word).value_or(0); break;
      case 14: stat.userTicks = parseUnsigned(word).value_or(0); break;
      case 15: stat.systemTicks = parseUnsigned(word).value_or(0); break;
      case 16: stat.childUserTicks = parseUnsigned(word).value_or(0); break;
      case 17: stat.childSystemTicks = parseUnsigned(word).value_or(0); break;
      case 20: stat.threads = parseUnsigned(word).value_or(0); break;
      case 22: stat.startTicks = parseUnsigned(word).value_or(0); break;
      default: break;
    }
  }
  return stat;
}

namespace {

// The value after "\nKey:" from `from` on, up to its line end; empty when the key is absent.
std::string_view valueAfter(std::string_view text, std::string_view key, std::size_t& from) {
  const auto at = text.find(key, from);
  if (at == std::string_view::npos) return {};
  const auto start = at + key.size();
  const auto end = text.find('\n', start);
  from = end == std::string_view::npos ? text.size() : end;
  return trimSpaces(text.substr(start, end == std::string_view::npos ? end : end - start));
}

}  // namespace

ProcessStatus parseProcessStatus(std::string_view text) {
  // Read on every tick for every process: the few keys are sought in the order the kernel
  // prints them (fs/proc/array.c) instead of splitting all fifty lines. A missing key reads
  // as 0 and does not stop the search for the later ones.
  ProcessStatus status;
  std::size_t from = 0;
  auto next = [&](std::string_view key) {
    std::size_t probe = from;
    const auto value = valueAfter(text, key, probe);
    if (!value.empty()) from = probe;
    return value;
  };
  status.rssAnonKB = kilobytesOrZero(next("\nRssAnon:"));
  status.vmSwapKB = kilobytesOrZero(next("\nVmSwap:"));
  status.threads = parseUnsigned(next("\nThreads:")).value_or(0);
  status.voluntarySwitches = parseUnsigned(next("\nvoluntary_ctxt_switches:")).value_or(0);
  status.involuntarySwitches = parseUnsigned(next("\nnonvoluntary_ctxt_switches:")).value_or(0);
  return status;
}

std::uint64_t parseContextSwitches(std::string_view text) {
  // The two lines close the file; searching from the end skips fifty lines of other fields.
  const auto at = text.rfind("\nvoluntary_ctxt_switches:");
  if (at == std::string_view::npos) return 0;
  const auto status = parseProcessStatus(text.substr(at));
  return checkedSum(status.voluntarySwitches, status.involuntarySwitches).value_or(0);
}

ProcessIO parseProcessIO(std::string_view text) {
  ProcessIO io;
  forEachKeyValue(text, ':', [&](std::string_view key, std::string_view value) {
    if (key == "read_bytes")
      io.readBytes = parseUnsigned(value).value_or(0);
    else if (key == "write_bytes")
      io.writeBytes = parseUnsigned(value).value_or(0);
  });
  return io;
}

std::optional<std::uint64_t> parseUptimeTicks(std::string_view text,
                                             std::uint64_t ticksPerSecond) {
  const std::string_view field = nextWord(text);
  const auto dot = field.find('.');
  const auto whole = parseUnsigned(field.substr(0, dot));
  if (!whole) return std::nullopt;
  std::uint64_t fraction = 0, scale = 1;
  if (dot != std::string_view::npos) {
    const std::string_view digits = field.substr(dot + 1).substr(0, 6);
    const auto value = parseUnsigned(digits);
    if (!value) return std::nullopt;
    fraction = *value;
    for (std::size_t i = 0; i < digits.size(); ++i) scale *= 10;
  }
  const auto ticks = checkedProduct(*whole, ticksPerSecond);
  if (!ticks) return std::nullopt;
  return checkedSum(*ticks, fraction * ticksPerSecond / scale);
}

std::vector<std::string> parseCommandLine(std::string_view text) {
  std::vector<std::string> arguments;
  while (!text.empty()) {
    const auto end = text.find('\0');
    arguments.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + 1);
  }
  return arguments;
}

}  // namespace pellwin
