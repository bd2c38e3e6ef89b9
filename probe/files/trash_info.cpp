#include "probe/files/trash_info.h"

#include <charconv>
#include <cstdio>

namespace pellwin::TrashInfo {

namespace {

bool isKept(unsigned char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
         c == '.' || c == '_' || c == '~' || c == '/';
}

int hexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

template <typename Number>
std::optional<Number> wholeNumber(std::string_view field) {
  Number value{};
  const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), value);
  if (error != std::errc() || end != field.data() + field.size() || field.empty())
    return std::nullopt;
  return value;
}

// Lines split on "\n", a trailing "\r" dropped from each.
std::vector<std::string_view> lines(std::string_view text) {
  std::vector<std::string_view> out;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    out.push_back(line);
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + 1);
  }
  return out;
}

}  // namespace

std::string percentEncode(std::string_view bytes) {
  static constexpr char digits[] = "0123456789ABCDEF";
  std::string out;
  out.reserve(bytes.size());
  for (char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (isKept(byte)) {
      out += c;
    } else {
      out += '%';
      out += digits[byte >> 4];
      out += digits[byte & 0x0F];
    }
  }
  return out;
}

std::optional<std::string> percentDecode(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      out += text[i];
      continue;
    }
    if (i + 2 >= text.size()) return std::nullopt;
    const int high = hexValue(text[i + 1]);
    const int low = hexValue(text[i + 2]);
    if (high < 0 || low < 0) return std::nullopt;
    out += static_cast<char>(high * 16 + low);
    i += 2;
  }
  return out;
}

std::string deletionDate(const std::tm& localTime) {
  char buffer[96];  // room for any int in each field, which silences truncation warnings
  std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02dT%02d:%02d:%02d", localTime.tm_year + 1900,
                localTime.tm_mon + 1, localTime.tm_mday, localTime.tm_hour, localTime.tm_min,
                localTime.tm_sec);
  return buffer;
}

std::string text(std::string_view originalPath, std::string_view date) {
  return "[Trash Info]\nPath=" + percentEncode(originalPath) +
         "\nDeletionDate=" + std::string(date) + "\n";
}

std::optional<Parsed> parse(std::string_view contents) {
  const std::vector<std::string_view> all = lines(contents);
  if (all.empty() || all.front() != "[Trash Info]") return std::nullopt;
  std::optional<std::string> path;
  std::optional<std::string> date;
  for (std::size_t i = 1; i < all.size(); ++i) {
    const std::string_view line = all[i];
    if (!path && line.starts_with("Path=")) {
      path = percentDecode(line.substr(5));
      if (!path) return std::nullopt;
    } else if (!date && line.starts_with("DeletionDate=")) {
      date = std::string(line.substr(13));
    }
  }
  if (!path || path->empty()) return std::nullopt;
  return Parsed{.path = *path, .deletionDate = date.value_or("")};
}

std::string candidateName(std::string_view name, int attempt) {
  const std::string suffix = attempt <= 1 ? "" : "." + std::to_string(attempt);
  constexpr std::size_t nameMax = 255;
  constexpr std::size_t infoExtension = std::string_view(".trashinfo").size();
  const std::size_t room = nameMax - infoExtension - suffix.size();
  std::string_view base = name;
  if (base.size() > room) {
    base = base.substr(0, room);
    // Do not cut a UTF-8 sequence in two: drop continuation bytes and the lead byte they follow.
    std::size_t end = base.size();
    while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0) == 0x80) --end;
    base = base.substr(0, end);
  }
  return std::string(base) + suffix;
}

std::vector<DirectorySize> parseDirectorySizes(std::string_view contents) {
  std::vector<DirectorySize> entries;
  for (std::string_view line : lines(contents)) {
    const std::size_t first = line.find(' ');
    if (first == std::string_view::npos) continue;
    const std::size_t second = line.find(' ', first + 1);
    if (second == std::string_view::npos) continue;
    const auto bytes = wholeNumber<std::uint64_t>(line.substr(0, first));
    const auto modified = wholeNumber<std::int64_t>(line.substr(first + 1, second - first - 1));
    const auto name = percentDecode(line.substr(second + 1));
    if (!bytes || !modified || !name || name->empty() || name->find('/') != std::string::npos) {
      continue;
    }
    entries.push_back({.bytes = *bytes, .infoModified = *modified, .name = *name});
  }
  return entries;
}

std::string formatDirectorySizes(const std::vector<DirectorySize>& entries) {
  std::string out;
  for (const DirectorySize& entry : entries) {
    out += std::to_string(entry.bytes) + " " + std::to_string(entry.infoModified) + " " +
           percentEncode(entry.name) + "\n";
  }
  return out;
}

}  // namespace pellwin::TrashInfo
