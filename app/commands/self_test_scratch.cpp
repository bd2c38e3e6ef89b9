#include "app/commands/self_test_scratch.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <tuple>

#include "probe/exclusive_file.h"
#include "probe/files/folder_walk.h"

namespace pellwin {

namespace {

namespace fs = std::filesystem;

bool isWithin(const std::string& path, const std::string& folder) {
  return !folder.empty() && (path == folder || path.starts_with(folder + "/"));
}

std::optional<std::string> readFile(const std::string& path) {
  std::error_code error;
  if (!fs::is_regular_file(fs::symlink_status(path, error))) return std::nullopt;
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

// The folder and those of its ancestors that do not exist yet, up to the first that does.
std::vector<std::string> missingChain(fs::path folder) {
  std::vector<std::string> missing;
  std::error_code error;
  while (!folder.empty() && !fs::exists(fs::symlink_status(folder, error))) {
    missing.push_back(folder.string());
    if (folder == folder.parent_path()) break;
    folder = folder.parent_path();
  }
  return missing;
}

std::vector<std::string> entryNames(const std::string& trashDirectory) {
  std::vector<std::string> names;
  for (const auto& entry : FreedesktopTrash::entries(trashDirectory)) names.push_back(entry.name);
  return names;
}

std::optional<std::string> removeFolder(const std::string& path) {
  const fs::path folder(path);
  auto parent = openFolderWithoutLinks(folder.parent_path().string(), O_PATH);
  if (!parent) return sentence(parent.error(), ErrorWording::reason);
  auto removed = removeTree(parent->get(), folder.filename().string());
  if (!removed) return removed.error();
  return std::nullopt;
}

// directorysizes goes back exactly as it was, or away when there was none.
void restoreSizes(const std::string& trashDirectory, const std::optional<std::string>& before) {
  const std::string path = trashDirectory + "/directorysizes";
  if (readFile(path) == before) return;
  std::error_code error;
  if (!before) {
    fs::remove(path, error);
    return;
  }
  const FileDescriptor folder(
      ::open(trashDirectory.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!folder.valid()) return;
  // Best effort, as the rest of the clean-up: a file manager rebuilds a lost size cache.
  std::ignore = replaceFileAt(folder.get(), "directorysizes", *before, 0600, trashDirectory);
}

}  // namespace

std::expected<SelfTestScratch, std::string> SelfTestScratch::create(const std::string& home,
                                                                    const std::string& dataHome,
                                                                    const std::string& label) {
  std::string pattern = home + "/.tovrin-" + label + "-XXXXXX";
  if (::mkdtemp(pattern.data()) == nullptr) {
    return std::unexpected(
        "couldn't make a scratch folder in " + home + ": " +
        sentence(SystemError::fromErrno("mkdir", pattern), ErrorWording::reason));
  }
  char* real = ::realpath(pattern.c_str(), nullptr);
  const std::string folder = real != nullptr ? real : pattern;
  std::free(real);

  FreedesktopTrash trash(dataHome, ::getuid());
  std::vector<std::string> directories = {trash.homeTrash()};
  const std::string top = FreedesktopTrash::mountTop(folder);
  const std::string base = top == "/" ? "" : top;
  const std::string uid = std::to_string(::getuid());
  directories.push_back(base + "/.Trash-" + uid);
  directories.push_back(base + "/.Trash/" + uid);

  std::vector<TrashState> states;
  for (const std::string& directory : directories) {
    TrashState state{.directory = directory,
                     .missingFolders = missingChain(directory),
                     .sizes = readFile(directory + "/directorysizes"),
                     .names = entryNames(directory)};
    for (const char* inside : {"/files", "/info"}) {
      for (const std::string& missing : missingChain(directory + inside)) {
        if (std::ranges::find(state.missingFolders, missing) == state.missingFolders.end()) {
          state.missingFolders.push_back(missing);
        }
      }
    }
    states.push_back(std::move(state));
  }
  return SelfTestScratch(home, std::move(trash), std::move(states), folder);
}

SelfTestScratch::SelfTestScratch(SelfTestScratch&& other) noexcept
    : home_(std::move(other.home_)),
      trash_(std::move(other.trash_)),
      trashes_(std::move(other.trashes_)),
      folder_(std::move(other.folder_)),
      outside_(std::move(other.outside_)),
      cleaned_(other.cleaned_) {
  other.cleaned_ = true;
}

// A destructor has no one to tell: callers that want the problem call cleanUp themselves first,
// and a second call finds nothing left to do.
SelfTestScratch::~SelfTestScratch() { std::ignore = cleanUp(); }

std::expected<std::string, std::string> SelfTestScratch::outsideFolder() {
  if (!outside_.empty()) return outside_;
  std::error_code error;
  std::vector<std::string> candidates = {fs::temp_directory_path(error).string(), "/tmp",
                                         "/var/tmp", "/dev/shm"};
  char* realHome = ::realpath(home_.c_str(), nullptr);
  const std::string resolvedHome = realHome != nullptr ? realHome : home_;
  std::free(realHome);
  for (const std::string& candidate : candidates) {
    char* real = candidate.empty() ? nullptr : ::realpath(candidate.c_str(), nullptr);
    if (real == nullptr) continue;
    const std::string base = real;
    std::free(real);
    if (isWithin(base, resolvedHome) || isWithin(resolvedHome, base)) continue;
    std::string pattern = (base == "/" ? "" : base) + "/tovrin-self-test-XXXXXX";
    if (::mkdtemp(pattern.data()) != nullptr) {
      outside_ = pattern;
      return outside_;
    }
  }
  return std::unexpected(std::string("couldn't make a folder outside the home folder"));
}

std::vector<FreedesktopTrash::Entry> SelfTestScratch::newEntries() const {
  std::vector<FreedesktopTrash::Entry> found;
  for (const TrashState& state : trashes_) {
    for (auto& entry : FreedesktopTrash::entries(state.directory)) {
      const bool isNew = std::ranges::find(state.names, entry.name) == state.names.end();
      if (isNew &&
          (isWithin(entry.originalPath, folder_) || isWithin(entry.originalPath, outside_))) {
        found.push_back(std::move(entry));
      }
    }
  }
  return found;
}

std::optional<std::string> SelfTestScratch::cleanUp() {
  if (cleaned_) return std::nullopt;
  cleaned_ = true;
  std::optional<std::string> problem;
  const auto note = [&](std::optional<std::string> found) {
    if (found && !problem) problem = std::move(found);
  };
  for (const auto& entry : newEntries()) {
    if (auto erased = FreedesktopTrash::erase(entry); !erased) note(erased.error());
  }
  note(removeFolder(folder_));
  if (!outside_.empty()) note(removeFolder(outside_));
  for (const TrashState& state : trashes_) {
    restoreSizes(state.directory, state.sizes);
    std::vector<std::string> made = state.missingFolders;
    std::ranges::sort(made, [](const auto& a, const auto& b) { return a.size() > b.size(); });
    // rmdir only ever removes an empty folder, so nothing of anyone else's can go here.
    for (const std::string& folder : made) ::rmdir(folder.c_str());
  }
  return problem;
}

void writeScratchFile(const std::string& path, std::size_t bytes) {
  std::error_code error;
  fs::create_directories(fs::path(path).parent_path(), error);
  auto fd = createExclusive(AT_FDCWD, path, 0600, path);
  // A file that cannot be made shows up as a failed check, which names what went wrong.
  if (fd) std::ignore = writeAll(fd->get(), std::string(bytes, 't'), path);
}

std::string describe(const TrashResult& result) {
  std::string text(rawValue(result.outcome));
  if (!result.reason.empty()) text += ": " + result.reason;
  return text;
}

}  // namespace pellwin
