#include "probe/files/freedesktop_trash.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <utility>

#include "probe/files/folder_size.h"
#include "probe/files/folder_walk.h"
#include "probe/files/trash_info.h"

namespace pellwin {

namespace {

constexpr std::string_view infoExtension = ".trashinfo";
constexpr std::string_view sizesFile = "directorysizes";

std::string parentOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == 0 || slash == std::string::npos ? "/" : path.substr(0, slash);
}

std::string nameOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

// An open trash directory: $trash, $trash/files and $trash/info.
struct OpenTrash {
  std::string path;
  std::string topdir;  // empty for the home trash, whose Path= lines are absolute
  FileDescriptor folder;
  FileDescriptor files;
  FileDescriptor info;
};

// A folder of the trash: made (0700) when missing, and accepted only as a real folder, not a
// link, owned by `uid` when `uid` is given.
std::expected<FileDescriptor, int> trashFolder(int parentFd, const char* name,
                                               std::optional<uid_t> owner) {
  if (::mkdirat(parentFd, name, 0700) != 0 && errno != EEXIST) return std::unexpected(errno);
  struct stat info {};
  if (::fstatat(parentFd, name, &info, AT_SYMLINK_NOFOLLOW) != 0) return std::unexpected(errno);
  if (!S_ISDIR(info.st_mode)) return std::unexpected(ENOTDIR);
  if (owner && info.st_uid != *owner) return std::unexpected(EPERM);
  FileDescriptor fd(::openat(parentFd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!fd.valid()) return std::unexpected(errno);
  return fd;
}

std::expected<OpenTrash, int> openTrashAt(int parentFd, const char* name, std::string path,
                                          std::string topdir, std::optional<uid_t> owner) {
  auto folder = trashFolder(parentFd, name, owner);
  if (!folder) return std::unexpected(folder.error());
  auto files = trashFolder(folder->get(), "files", owner);
  if (!files) return std::unexpected(files.error());
  auto info = trashFolder(folder->get(), "info", owner);
  if (!info) return std::unexpected(info.error());
  return OpenTrash{.path = std::move(path),
                   .topdir = std::move(topdir),
                   .folder = std::move(*folder),
                   .files = std::move(*files),
                   .info = std::move(*info)};
}

// mkdir -p with 0700 for the folders it makes, following links on the way as the user set them.
int makeFolders(const std::string& path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) == 0) return S_ISDIR(info.st_mode) ? 0 : ENOTDIR;
  if (path != "/") {
    if (const int error = makeFolders(parentOf(path)); error != 0) return error;
  }
  if (::mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) return errno;
  return 0;
}

std::expected<OpenTrash, int> openHomeTrash(const std::string& dataHome) {
  if (const int error = makeFolders(dataHome); error != 0) return std::unexpected(error);
  FileDescriptor home(::open(dataHome.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!home.valid()) return std::unexpected(errno);
  return openTrashAt(home.get(), "Trash", dataHome + "/Trash", "", std::nullopt);
}

// Method 1, then method 2, of a volume whose top folder is `topdir` (a path without links).
std::expected<OpenTrash, int> openVolumeTrash(const std::string& topdir, uid_t uid) {
  auto top = openFolderWithoutLinks(topdir, O_PATH);
  if (!top) return std::unexpected(top.error());
  const std::string base = topdir == "/" ? "" : topdir;
  const std::string id = std::to_string(uid);

  struct stat shared {};
  if (::fstatat(top->get(), ".Trash", &shared, AT_SYMLINK_NOFOLLOW) == 0 &&
      S_ISDIR(shared.st_mode) && (shared.st_mode & S_ISVTX) != 0) {
    FileDescriptor sharedFd(
        ::openat(top->get(), ".Trash", O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (sharedFd.valid()) {
      auto trash = openTrashAt(sharedFd.get(), id.c_str(), base + "/.Trash/" + id, topdir, uid);
      if (trash) return trash;
    }
  }
  const std::string own = ".Trash-" + id;
  return openTrashAt(top->get(), own.c_str(), base + "/" + own, topdir, uid);
}

std::string localNow() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  ::localtime_r(&now, &local);
  return TrashInfo::deletionDate(local);
}

bool writeAll(int fd, const std::string& text) {
  std::size_t done = 0;
  while (done < text.size()) {
    const ssize_t written = ::write(fd, text.data() + done, text.size() - done);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    done += static_cast<std::size_t>(written);
  }
  return true;
}

std::string readAll(int folderFd, const char* name) {
  FileDescriptor fd(::openat(folderFd, name, O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
  std::string text;
  if (!fd.valid()) return text;
  char buffer[4096];
  ssize_t got = 0;
  while ((got = ::read(fd.get(), buffer, sizeof buffer)) > 0)
    text.append(buffer, static_cast<std::size_t>(got));
  return text;
}

// directorysizes is replaced through a temporary file and rename, so readers never see half.
void rewriteSizes(int trashFd, const std::vector<TrashInfo::DirectorySize>& sizes) {
  if (sizes.empty()) {
    ::unlinkat(trashFd, std::string(sizesFile).c_str(), 0);
    return;
  }
  const std::string temporary = ".directorysizes." + std::to_string(::getpid());
  FileDescriptor fd(::openat(trashFd, temporary.c_str(),
                             O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0600));
  if (!fd.valid()) return;
  if (!writeAll(fd.get(), TrashInfo::formatDirectorySizes(sizes)) ||
      ::renameat(trashFd, temporary.c_str(), trashFd, std::string(sizesFile).c_str()) != 0) {
    ::unlinkat(trashFd, temporary.c_str(), 0);
  }
}

void recordFolderSize(const OpenTrash& trash, const std::string& name) {
  struct stat info {};
  const std::string infoName = name + std::string(infoExtension);
  if (::fstatat(trash.info.get(), infoName.c_str(), &info, 0) != 0) return;
  auto sizes =
      TrashInfo::parseDirectorySizes(readAll(trash.folder.get(), std::string(sizesFile).c_str()));
  std::erase_if(sizes, [&](const auto& entry) { return entry.name == name; });
  sizes.push_back({.bytes = FolderSize::allocatedBytes(trash.path + "/files/" + name),
                   .infoModified = static_cast<std::int64_t>(info.st_mtime),
                   .name = name});
  rewriteSizes(trash.folder.get(), sizes);
}

// renameat2 with RENAME_NOREPLACE never replaces an entry another program put there meanwhile;
// file systems without it get the plain rename after the existence check already made.
int renameWithoutReplacing(int fromFd, const std::string& from, int toFd, const std::string& to) {
  if (::renameat2(fromFd, from.c_str(), toFd, to.c_str(), RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS) return errno;
  return ::renameat(fromFd, from.c_str(), toFd, to.c_str()) == 0 ? 0 : errno;
}

// Moving a folder to another parent rewrites its ".." entry, which needs write permission on it;
// a read-only folder the user owns is opened for the move and given its mode back afterwards.
int moveItem(int parentFd, const std::string& name, const struct stat& item, int filesFd,
             const std::string& target) {
  int error = renameWithoutReplacing(parentFd, name, filesFd, target);
  if (error != EACCES || !S_ISDIR(item.st_mode) || item.st_uid != ::geteuid() ||
      (item.st_mode & S_IWUSR) != 0) {
    return error;
  }
  const mode_t mode = item.st_mode & 07777;
  if (::fchmodat(parentFd, name.c_str(), mode | S_IWUSR, 0) != 0) return error;
  error = renameWithoutReplacing(parentFd, name, filesFd, target);
  if (error == 0) {
    ::fchmodat(filesFd, target.c_str(), mode, 0);
  } else {
    ::fchmodat(parentFd, name.c_str(), mode, 0);
  }
  return error;
}

// Picks a free name, writes its info file first (O_EXCL), then renames the item into files/.
std::expected<std::string, int> placeInTrash(const OpenTrash& trash, int parentFd,
                                             const std::string& name, const struct stat& item,
                                             const std::string& infoPath, const std::string& date) {
  const std::string infoText = TrashInfo::text(infoPath, date);
  for (int attempt = 1; attempt < 10000; ++attempt) {
    const std::string candidate = TrashInfo::candidateName(name, attempt);
    struct stat existing {};
    // An item without its info file, left by a crash, keeps its name too.
    if (::fstatat(trash.files.get(), candidate.c_str(), &existing, AT_SYMLINK_NOFOLLOW) == 0)
      continue;
    const std::string infoName = candidate + std::string(infoExtension);
    FileDescriptor info(::openat(trash.info.get(), infoName.c_str(),
                                 O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!info.valid()) {
      if (errno == EEXIST) continue;
      return std::unexpected(errno);
    }
    const bool written = writeAll(info.get(), infoText);
    const int closed = ::close(info.release());
    if (!written || closed != 0) {
      ::unlinkat(trash.info.get(), infoName.c_str(), 0);
      return std::unexpected(EIO);
    }
    const int error = moveItem(parentFd, name, item, trash.files.get(), candidate);
    if (error == 0) return candidate;
    ::unlinkat(trash.info.get(), infoName.c_str(), 0);
    if (error != EEXIST) return std::unexpected(error);
  }
  return std::unexpected(EEXIST);
}

std::string describeMoveError(int error) {
  if (error == EXDEV) return "It's on a disk whose Trash Tovrin can't use, so it was left in place";
  return describeError(error);
}

// The folder that relative Path= lines of a trash directory start from.
std::string topdirOfTrash(const std::string& trashDirectory) {
  const std::string parent = parentOf(trashDirectory);
  if (nameOf(trashDirectory).starts_with(".Trash-")) return parent;
  if (nameOf(parent) == ".Trash") return parentOf(parent);
  return parent;  // the home trash: relative to the XDG data home
}

}  // namespace

FreedesktopTrash::FreedesktopTrash(std::string dataHome, uid_t uid)
    : dataHome_(std::move(dataHome)), uid_(uid) {}

std::string FreedesktopTrash::mountTop(const std::string& path) {
  std::string current = path;
  while (current != "/") {
    struct statx here {};
    if (::statx(AT_FDCWD, current.c_str(), AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS, &here) == 0 &&
        (here.stx_attributes_mask & STATX_ATTR_MOUNT_ROOT) != 0 &&
        (here.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0) {
      return current;
    }
    const std::string parent = parentOf(current);
    struct stat a {};
    struct stat b {};
    if (::lstat(current.c_str(), &a) == 0 && ::lstat(parent.c_str(), &b) == 0 &&
        a.st_dev != b.st_dev) {
      return current;
    }
    current = parent;
  }
  return "/";
}

std::expected<FreedesktopTrash::Entry, std::string> FreedesktopTrash::moveToTrash(
    const std::string& path) const {
  if (path.empty() || path.front() != '/' || path == "/")
    return std::unexpected(describeError(EINVAL));
  // Trashing the trash, or a folder around it, would lose track of everything in it.
  if (char* real = ::realpath(homeTrash().c_str(), nullptr); real != nullptr) {
    const std::string trash = real;
    std::free(real);
    if (path == trash || path.starts_with(trash + "/"))
      return std::unexpected(std::string("It's your Trash"));
    if (trash.starts_with(path + "/")) {
      return std::unexpected(std::string("It holds Trash, which Tovrin keeps safe"));
    }
  }
  const std::string parent = parentOf(path);
  const std::string name = nameOf(path);
  auto parentFd = openFolderWithoutLinks(parent, O_PATH);
  if (!parentFd) return std::unexpected(describeError(parentFd.error()));
  struct stat item {};
  if (::fstatat(parentFd->get(), name.c_str(), &item, AT_SYMLINK_NOFOLLOW) != 0) {
    return std::unexpected(describeError(errno));
  }
  if (S_ISLNK(item.st_mode))
    return std::unexpected(std::string("It's a shortcut to somewhere else"));

  const std::string date = localNow();
  const auto intoVolumeTrash = [&]() -> std::expected<Entry, std::string> {
    const std::string topdir = mountTop(parent);
    auto trash = openVolumeTrash(topdir, uid_);
    if (!trash) return std::unexpected(describeMoveError(EXDEV));
    const std::string relative = path.substr(topdir == "/" ? 1 : topdir.size() + 1);
    auto placed = placeInTrash(*trash, parentFd->get(), name, item, relative, date);
    if (!placed) return std::unexpected(describeMoveError(placed.error()));
    if (S_ISDIR(item.st_mode)) recordFolderSize(*trash, *placed);
    return Entry{
        .trashDirectory = trash->path, .name = *placed, .originalPath = path, .deletionDate = date};
  };

  struct stat dataHomeInfo {};
  std::string probe = dataHome_;
  while (::stat(probe.c_str(), &dataHomeInfo) != 0 && probe != "/") probe = parentOf(probe);
  if (dataHomeInfo.st_dev != item.st_dev) return intoVolumeTrash();

  auto trash = openHomeTrash(dataHome_);
  if (!trash) return std::unexpected(describeError(trash.error()));
  auto placed = placeInTrash(*trash, parentFd->get(), name, item, path, date);
  // Same device but another mount (a bind mount): its own volume's trash takes it.
  if (!placed && placed.error() == EXDEV) return intoVolumeTrash();
  if (!placed) return std::unexpected(describeMoveError(placed.error()));
  if (S_ISDIR(item.st_mode)) recordFolderSize(*trash, *placed);
  return Entry{
      .trashDirectory = trash->path, .name = *placed, .originalPath = path, .deletionDate = date};
}

std::vector<FreedesktopTrash::Entry> FreedesktopTrash::entries(const std::string& trashDirectory) {
  std::vector<Entry> found;
  FileDescriptor info(
      ::open((trashDirectory + "/info").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!info.valid()) return found;
  const std::string topdir = topdirOfTrash(trashDirectory);
  const FolderWalkVisitor visitor{
      .entry =
          [&](int fd, const std::string& name, const std::string&, const struct stat& st) {
            if (!S_ISREG(st.st_mode) || !name.ends_with(infoExtension)) return WalkStep::skip;
            const auto parsed = TrashInfo::parse(readAll(fd, name.c_str()));
            if (!parsed) return WalkStep::skip;
            const std::string original = parsed->path.front() == '/'
                                             ? parsed->path
                                             : (topdir == "/" ? "" : topdir) + "/" + parsed->path;
            found.push_back({.trashDirectory = trashDirectory,
                             .name = name.substr(0, name.size() - infoExtension.size()),
                             .originalPath = original,
                             .deletionDate = parsed->deletionDate});
            return WalkStep::skip;
          },
      .leave = nullptr,
      .failed = nullptr,
  };
  (void)walkFolder(info.get(), visitor);
  return found;
}

std::expected<void, std::string> FreedesktopTrash::erase(const Entry& entry) {
  if (entry.name.empty() || entry.name.find('/') != std::string::npos || entry.name == "." ||
      entry.name == "..") {
    return std::unexpected(describeError(EINVAL));
  }
  FileDescriptor trash(::open(entry.trashDirectory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!trash.valid()) return std::unexpected(describeError(errno));
  FileDescriptor files(
      ::openat(trash.get(), "files", O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!files.valid()) return std::unexpected(describeError(errno));
  if (auto removed = removeTree(files.get(), entry.name); !removed) return removed;
  const std::string infoName = "info/" + entry.name + std::string(infoExtension);
  if (::unlinkat(trash.get(), infoName.c_str(), 0) != 0 && errno != ENOENT) {
    return std::unexpected(describeError(errno));
  }
  auto sizes = TrashInfo::parseDirectorySizes(readAll(trash.get(), std::string(sizesFile).c_str()));
  if (std::erase_if(sizes, [&](const auto& line) { return line.name == entry.name; }) > 0) {
    rewriteSizes(trash.get(), sizes);
  }
  return {};
}

}  // namespace pellwin
