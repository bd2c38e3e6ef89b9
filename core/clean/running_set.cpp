#include "core/clean/running_set.h"

#include <array>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

#include "core/base/ascii_case.h"
#include "core/base/path_text.h"

namespace pellwin {

namespace {

enum class Interpreter { python, node, ruby, perl, shell, java };

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// "python3.11" is python, "ruby3.1" ruby: the family name followed by digits and dots only.
bool isVersioned(std::string_view name, std::string_view family) {
  if (!name.starts_with(family)) return false;
  for (char c : name.substr(family.size())) {
    if (!isDigit(c) && c != '.') return false;
  }
  return true;
}

std::optional<Interpreter> interpreterOf(std::string_view name) {
  if (isVersioned(name, "python") || isVersioned(name, "pypy")) return Interpreter::python;
  if (name == "node" || name == "nodejs" || name == "bun") return Interpreter::node;
  if (isVersioned(name, "ruby")) return Interpreter::ruby;
  if (isVersioned(name, "perl")) return Interpreter::perl;
  if (name == "java") return Interpreter::java;
  for (std::string_view shell : {"sh", "bash", "dash", "zsh", "ksh", "mksh", "fish"}) {
    if (name == shell) return Interpreter::shell;
  }
  return std::nullopt;
}

// Options that take the next argument as their value, per interpreter. Options that end the
// option list without naming a script (an inline program) are handled by the caller.
bool takesValue(Interpreter interpreter, std::string_view option) {
  static constexpr std::array<std::string_view, 2> python = {"-W", "-X"};
  static constexpr std::array<std::string_view, 7> node = {
      "-r", "--require", "--import", "--loader", "--experimental-loader", "--conditions", "-C"};
  static constexpr std::array<std::string_view, 4> ruby = {"-r", "-I", "-C", "-E"};
  static constexpr std::array<std::string_view, 3> perl = {"-I", "-M", "-m"};
  static constexpr std::array<std::string_view, 2> shell = {"-o", "+o"};
  static constexpr std::array<std::string_view, 11> java = {
      "-cp",           "-classpath",
      "--class-path",  "-p",
      "--module-path", "--upgrade-module-path",
      "--add-modules", "--add-opens",
      "--add-exports", "--add-reads",
      "--patch-module"};
  std::span<const std::string_view> list;
  switch (interpreter) {
    case Interpreter::python: list = python; break;
    case Interpreter::node: list = node; break;
    case Interpreter::ruby: list = ruby; break;
    case Interpreter::perl: list = perl; break;
    case Interpreter::shell: list = shell; break;
    case Interpreter::java: list = java; break;
  }
  for (std::string_view candidate : list) {
    if (candidate == option) return true;
  }
  return false;
}

bool runsInlineCode(Interpreter interpreter, std::string_view option) {
  switch (interpreter) {
    case Interpreter::python: return option == "-c" || option == "-";
    case Interpreter::node:
      return option == "-e" || option == "--eval" || option == "-p" || option == "--print" ||
             option == "-";
    case Interpreter::ruby: return option == "-e" || option == "-";
    case Interpreter::perl: return option == "-e" || option == "-E" || option == "-";
    case Interpreter::shell: return option == "-c" || option == "-s" || option == "-";
    case Interpreter::java: return false;
  }
  return false;
}

// "npm-cli.js" is npm, "yarn-4.1.0.cjs" is yarn, "brew.rb" is brew.
std::string scriptName(std::string_view file) {
  std::string_view name = file;
  for (std::string_view extension : {".js", ".cjs", ".mjs", ".py", ".rb", ".pl", ".sh", ".jar"}) {
    if (name.size() > extension.size() && name.ends_with(extension)) {
      name.remove_suffix(extension.size());
      break;
    }
  }
  if (name.size() > 4 && name.ends_with("-cli")) name.remove_suffix(4);
  for (std::size_t i = 1; i + 1 < name.size(); ++i) {
    if (name[i] == '-' && isDigit(name[i + 1])) return std::string(name.substr(0, i));
  }
  return std::string(name);
}

// The build tools and IDEs that run on the JVM, known by their launchers' main classes.
std::optional<std::string_view> javaToolName(std::string_view mainClass) {
  static constexpr std::array<std::pair<std::string_view, std::string_view>, 6> known = {{
      {"org.gradle.launcher.daemon.bootstrap.gradledaemon", "gradle"},
      {"org.gradle.wrapper.gradlewrappermain", "gradle"},
      {"org.gradle.launcher.gradlemain", "gradle"},
      {"org.codehaus.plexus.classworlds.launcher.launcher", "mvn"},
      {"org.apache.maven.wrapper.mavenwrappermain", "mvn"},
      {"com.intellij.idea.main", "idea"},
  }};
  for (const auto& [name, tool] : known) {
    if (name == mainClass) return tool;
  }
  return std::nullopt;
}

void addJavaProgram(std::string_view option, std::string_view value, std::set<std::string>& names) {
  std::string program;
  if (option == "-jar") {
    program = scriptName(lastPathComponent(value));
  } else if (option == "-m" || option == "--module") {
    const auto slash = value.find('/');
    program = asciiLower(slash == std::string_view::npos ? value : value.substr(slash + 1));
  } else {
    program = asciiLower(value);
  }
  if (program.empty()) return;
  if (auto tool = javaToolName(program)) names.emplace(*tool);
  names.insert(std::move(program));
}

void addScript(std::string_view script, std::set<std::string>& names) {
  const std::string file = asciiLower(lastPathComponent(script));
  if (file.empty()) return;
  names.insert(file);
  names.insert(scriptName(file));
}

void addPythonModule(std::string_view module, std::set<std::string>& names) {
  const std::string name = asciiLower(module);
  if (name.empty()) return;
  names.insert(name.substr(0, name.find('.')));
  names.insert(name);
}

// The program an interpreter runs, found in its arguments after its own options.
void addInterpretedProgram(Interpreter interpreter, const std::vector<std::string>& arguments,
                           std::set<std::string>& names) {
  for (std::size_t i = 1; i < arguments.size(); ++i) {
    const std::string_view argument = arguments[i];
    if (runsInlineCode(interpreter, argument)) return;
    if (interpreter == Interpreter::python && argument.starts_with("-m")) {
      if (argument.size() > 2) return addPythonModule(argument.substr(2), names);
      if (i + 1 < arguments.size()) addPythonModule(arguments[i + 1], names);
      return;
    }
    if (interpreter == Interpreter::java &&
        (argument == "-jar" || argument == "-m" || argument == "--module")) {
      if (i + 1 < arguments.size()) addJavaProgram(argument, arguments[i + 1], names);
      return;
    }
    if (argument == "--") continue;
    if (argument.starts_with("-") ||
        (interpreter == Interpreter::shell && argument.starts_with("+"))) {
      if (takesValue(interpreter, argument)) ++i;
      continue;
    }
    if (interpreter == Interpreter::java) return addJavaProgram("", argument, names);
    return addScript(argument, names);
  }
}

// The first argument's file name up to the first space or "(": a retitled process ("npm
// install") or a server named after its workspace ("bazel(project)"). A login shell's "-".
std::string firstWord(std::string_view argument) {
  std::string_view name = lastPathComponent(argument);
  if (name.starts_with('-')) name.remove_prefix(1);
  const auto end = name.find_first_of(" (");
  return asciiLower(name.substr(0, end));
}

}  // namespace

std::set<std::string> programNames(const ProcessSample& process) {
  std::set<std::string> names;
  if (!process.name.empty()) names.insert(asciiLower(process.name));
  const std::string executable = asciiLower(lastPathComponent(process.path));
  if (!executable.empty()) names.insert(executable);
  if (!process.arguments.empty()) {
    if (std::string word = firstWord(process.arguments.front()); !word.empty()) {
      names.insert(std::move(word));
    }
  }
  const std::string& runner = executable.empty() ? asciiLower(process.name) : executable;
  if (auto interpreter = interpreterOf(runner)) {
    addInterpretedProgram(*interpreter, process.arguments, names);
  }
  return names;
}

RunningSet RunningSet::from(const std::vector<ProcessSample>& processes) {
  RunningSet running;
  for (const ProcessSample& process : processes) {
    if (process.kernelThread) continue;
    running.names.merge(programNames(process));
    if (process.app && !process.app->id.empty()) {
      running.bundleIDs.insert(asciiLower(process.app->id));
    }
  }
  return running;
}

}  // namespace pellwin
