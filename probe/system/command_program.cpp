#include "probe/system/command_program.h"

#include <sys/stat.h>

#include "core/base/path_text.h"

namespace pellwin {

namespace fs = std::filesystem;

namespace {

bool isExecutableFile(const fs::path& path) {
  struct stat info {};
  return ::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode) && (info.st_mode & 0111) != 0;
}

// The real path of the file `word` names; empty when it is no executable file. A relative
// path with a folder in it would need the process's working directory, which is not ours.
std::string resolve(std::string_view word, const std::vector<fs::path>& searchPath) {
  std::error_code error;
  if (word.starts_with('/')) {
    if (!isExecutableFile(fs::path(word))) return {};
    const auto real = fs::canonical(fs::path(word), error);
    return error ? std::string() : real.string();
  }
  if (word.find('/') != std::string_view::npos) return {};
  for (const auto& folder : searchPath) {
    const fs::path candidate = folder / word;
    if (!isExecutableFile(candidate)) continue;
    const auto real = fs::canonical(candidate, error);
    if (!error) return real.string();
  }
  return {};
}

}  // namespace

std::vector<std::string_view> programWords(const std::vector<std::string>& arguments) {
  std::vector<std::string_view> words;
  if (arguments.empty()) return words;
  std::string_view first = arguments.front();
  if (first.starts_with('-')) first.remove_prefix(1);
  if (first.empty()) return words;
  words.push_back(first);
  const auto blank = first.find(' ');
  if (blank != std::string_view::npos && blank > 0) words.push_back(first.substr(0, blank));
  return words;
}

CommandProgram commandProgram(const std::vector<std::string>& arguments, std::string_view comm,
                              const std::vector<fs::path>& searchPath) {
  const auto words = programWords(arguments);
  for (const std::string_view word : words) {
    std::string path = resolve(word, searchPath);
    if (path.empty()) continue;
    std::string name(lastPathComponent(path));
    return CommandProgram{.path = std::move(path), .name = std::move(name)};
  }
  if (words.empty()) return CommandProgram{.name = std::string(comm)};
  const std::string_view word = words.back();
  const std::string_view last = lastPathComponent(word);
  const bool cut = comm.size() == commLength && last.size() > commLength && last.starts_with(comm);
  const bool isPath = word.find('/') != std::string_view::npos;
  return CommandProgram{.name = std::string(cut || isPath || comm.empty() ? last : comm)};
}

}  // namespace pellwin
