// The program a process's command line names, for a process whose exe link is not ours to read
// (another user's: the link needs ptrace access, the command line does not). The program is
// resolved as its owner's exe link would show it, symbolic links followed, so a process gets
// the same name and path whoever looks, wherever the command line allows.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace pellwin {

struct CommandProgram {
  std::string path{};  // an existing executable file as a real path; empty when none was found
  std::string name{};
  friend bool operator==(const CommandProgram&, const CommandProgram&) = default;
};

// Linux keeps 15 characters of a program's name as its comm (TASK_COMM_LEN less the NUL).
inline constexpr std::size_t commLength = 15;

// The words that may name the program, most likely first: the first argument, and, when a
// program rewrote its title as one line of blanks-separated words (Chrome, setproctitle), the
// text before the first blank. A login shell's leading "-" is dropped. Pure.
[[nodiscard]] std::vector<std::string_view> programWords(const std::vector<std::string>& arguments);

// The first word that is an executable file, as it stands when absolute, else looked up in
// `searchPath`. When none is: no path, and the name is the comm, unless the word is a path or
// the comm is its first 15 characters (a long name the kernel cut).
[[nodiscard]] CommandProgram commandProgram(const std::vector<std::string>& arguments,
                                            std::string_view comm,
                                            const std::vector<std::filesystem::path>& searchPath);

}  // namespace pellwin
