#include "probe/system/desktop_entry.h"

#include <algorithm>
#include <array>
#include <utility>

#include "core/base/path_text.h"
#include "probe/key_value_text.h"

namespace pellwin {

namespace {

// The string type's escapes: \s \n \t \r \\ (and \; inside lists, kept for the split).
std::string unescapeValue(std::string_view value) {
  std::string out;
  out.reserve(value.size());
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (value[i] != '\\' || i + 1 == value.size()) {
      out += value[i];
      continue;
    }
    switch (const char next = value[++i]) {
      case 's': out += ' '; break;
      case 'n': out += '\n'; break;
      case 't': out += '\t'; break;
      case 'r': out += '\r'; break;
      case '\\': out += '\\'; break;
      default:
        out += '\\';
        out += next;
        break;
    }
  }
  return out;
}

std::vector<std::string> splitList(std::string_view value) {
  std::vector<std::string> items;
  std::string item;
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (value[i] == '\\' && i + 1 < value.size() && value[i + 1] == ';') {
      item += ';';
      ++i;
    } else if (value[i] == ';') {
      if (!item.empty()) items.push_back(std::move(item));
      item.clear();
    } else {
      item += value[i];
    }
  }
  if (!item.empty()) items.push_back(std::move(item));
  return items;
}

// The keys Name may carry, best first, for a POSIX locale lang_COUNTRY.ENCODING@MODIFIER.
std::vector<std::string> localeKeys(std::string_view locale) {
  std::string_view modifier;
  if (const auto at = locale.find('@'); at != std::string_view::npos) {
    modifier = locale.substr(at + 1);
    locale = locale.substr(0, at);
  }
  if (const auto dot = locale.find('.'); dot != std::string_view::npos)
    locale = locale.substr(0, dot);
  std::string_view lang = locale, country;
  if (const auto underscore = locale.find('_'); underscore != std::string_view::npos) {
    lang = locale.substr(0, underscore);
    country = locale.substr(underscore + 1);
  }
  std::vector<std::string> keys;
  if (lang.empty() || lang == "C" || lang == "POSIX") return keys;
  const std::string l(lang), c(country), m(modifier);
  if (!c.empty() && !m.empty()) keys.push_back(l + "_" + c + "@" + m);
  if (!c.empty()) keys.push_back(l + "_" + c);
  if (!m.empty()) keys.push_back(l + "@" + m);
  keys.push_back(l);
  return keys;
}

bool isFieldCode(std::string_view token) {
  return token.size() == 2 && token[0] == '%' &&
         std::string_view("fFuUdDnNickvm").find(token[1]) != std::string_view::npos;
}

}  // namespace

std::optional<DesktopEntry> parseDesktopEntry(std::string_view text, std::string_view locale) {
  const auto wanted = localeKeys(locale);
  std::optional<DesktopEntry> entry;
  std::size_t nameRank = wanted.size() + 1;  // lower is better; the plain Name ranks last
  bool inGroup = false;
  bool seen[12] = {};
  forEachLine(text, [&](std::string_view line) {
    line = trimSpaces(line);
    if (line.empty() || line.front() == '#') return;
    if (line.front() == '[') {
      inGroup = line == "[Desktop Entry]" && !entry;
      if (inGroup) entry = DesktopEntry{};
      return;
    }
    if (!inGroup) return;
    const auto equals = line.find('=');
    if (equals == std::string_view::npos) return;
    const auto key = trimSpaces(line.substr(0, equals));
    const auto raw = trimSpaces(line.substr(equals + 1));
    if (key.starts_with("Name[") && key.ends_with("]")) {
      const auto tag = key.substr(5, key.size() - 6);
      for (std::size_t rank = 0; rank < wanted.size() && rank < nameRank; ++rank) {
        if (wanted[rank] == tag) {
          entry->name = unescapeValue(raw);
          nameRank = rank;
        }
      }
      return;
    }
    // A key given twice is an error in the file; the first one counts.
    auto once = [&](int slot) { return !std::exchange(seen[slot], true); };
    if (key == "Name" && once(0) && nameRank > wanted.size()) {
      entry->name = unescapeValue(raw);
      nameRank = wanted.size();
    } else if (key == "Type" && once(1))
      entry->type = unescapeValue(raw);
    else if (key == "Exec" && once(2))
      entry->exec = splitExec(unescapeValue(raw));
    else if (key == "TryExec" && once(3))
      entry->tryExec = unescapeValue(raw);
    else if (key == "StartupWMClass" && once(4))
      entry->startupWMClass = unescapeValue(raw);
    else if (key == "Categories" && once(5))
      entry->categories = splitList(raw);
    else if (key == "X-Flatpak" && once(6))
      entry->flatpakId = unescapeValue(raw);
    else if (key == "X-SnapInstanceName" && once(7))
      entry->snapName = unescapeValue(raw);
    else if (key == "NoDisplay" && once(8))
      entry->noDisplay = raw == "true";
    else if (key == "Hidden" && once(9))
      entry->hidden = raw == "true";
  });
  return entry;
}

std::vector<std::string> splitExec(std::string_view exec) {
  std::vector<std::string> tokens;
  std::string current;
  bool quoted = false, started = false;
  for (std::size_t i = 0; i < exec.size(); ++i) {
    const char c = exec[i];
    if (quoted) {
      if (c == '\\' && i + 1 < exec.size() &&
          std::string_view("\"`$\\").find(exec[i + 1]) != std::string_view::npos) {
        current += exec[++i];
      } else if (c == '"') {
        quoted = false;
      } else {
        current += c;
      }
    } else if (c == '"') {
      quoted = started = true;
    } else if (c == ' ' || c == '\t' || c == '\n') {
      if (started) tokens.push_back(std::exchange(current, {}));
      started = false;
    } else {
      current += c;
      started = true;
    }
  }
  if (started) tokens.push_back(std::move(current));
  std::vector<std::string> arguments;
  for (auto& token : tokens) {
    if (isFieldCode(token)) continue;
    std::string plain;
    for (std::size_t i = 0; i < token.size(); ++i) {
      plain += token[i];
      if (token[i] == '%' && i + 1 < token.size() && token[i + 1] == '%') ++i;
    }
    arguments.push_back(std::move(plain));
  }
  return arguments;
}

LaunchTarget launchTarget(std::vector<std::string> exec) {
  static constexpr std::array<std::string_view, 10> wrappers = {
      "pkexec",   "sudo",      "nice",    "ionice",      "taskset",
      "firejail", "prime-run", "optirun", "gamemoderun", "torsocks"};
  // "nice -n 5", "taskset -c 0-3": the value that follows a launcher's option.
  auto isOptionValue = [](const std::string& token) {
    return !token.empty() && token.find_first_not_of("0123456789,-") == std::string::npos;
  };
  auto dropFront = [&] { exec.erase(exec.begin()); };
  for (int depth = 0; depth < 8 && !exec.empty(); ++depth) {
    const std::string program = std::string(lastPathComponent(exec.front()));
    if (program == "env") {
      dropFront();
      while (!exec.empty() &&
             (exec.front().find('=') != std::string::npos || exec.front().starts_with("-"))) {
        // -u NAME and -C FOLDER take the next word with them.
        const bool takesValue = exec.front() == "-u" || exec.front() == "--unset" ||
                                exec.front() == "-C" || exec.front() == "--chdir";
        dropFront();
        if (takesValue && !exec.empty()) dropFront();
      }
    } else if ((program == "sh" || program == "bash" || program == "dash") && exec.size() > 2 &&
               exec[1] == "-c") {
      exec = splitExec(exec[2]);
    } else if (std::find(wrappers.begin(), wrappers.end(), program) != wrappers.end()) {
      dropFront();
      while (!exec.empty() && exec.front().starts_with("-")) {
        dropFront();
        if (exec.size() > 1 && isOptionValue(exec.front())) dropFront();
      }
    } else {
      break;
    }
  }
  LaunchTarget target;
  if (exec.empty()) return target;
  const std::string program = std::string(lastPathComponent(exec.front()));
  if (program == "flatpak") {
    // flatpak run --branch=stable --command=x <app id> @@u %U @@
    for (std::size_t i = 2; i < exec.size(); ++i) {
      if (exec[i].starts_with("-") || exec[i].starts_with("@@")) continue;
      target.kind = LaunchTarget::Kind::flatpak;
      target.sandboxId = exec[i];
      return target;
    }
    return target;
  }
  if (exec.front().starts_with("/snap/bin/")) {
    target.kind = LaunchTarget::Kind::snap;
    target.sandboxId = program;
    return target;
  }
  if (program == "snap" && exec.size() > 2 && exec[1] == "run") {
    target.kind = LaunchTarget::Kind::snap;
    target.sandboxId = exec[2];
    return target;
  }
  target.arguments = std::move(exec);
  return target;
}

bool isGenericProgramName(std::string_view name) {
  static constexpr std::array<std::string_view, 33> generic = {
      "sh",      "bash",   "dash",     "zsh",      "fish",       "ksh",    "csh",
      "tcsh",    "env",    "python",   "perl",     "ruby",       "node",   "nodejs",
      "java",    "mono",   "dotnet",   "gjs",      "lua",        "php",    "bwrap",
      "flatpak", "snap",   "xdg-open", "gio",      "gtk-launch", "pkexec", "sudo",
      "wine",    "wine64", "electron", "qmlscene", "tclsh"};
  auto known = [](std::string_view candidate) {
    return std::find(generic.begin(), generic.end(), candidate) != generic.end() ||
           candidate == "qml" || candidate == "wish" || candidate == "wine-preloader";
  };
  if (known(name)) return true;
  // "python3.11" → "python", "electron33" → "electron".
  const auto end = name.find_last_not_of("0123456789.");
  return end != std::string_view::npos && end + 1 < name.size() && known(name.substr(0, end + 1));
}

}  // namespace pellwin
