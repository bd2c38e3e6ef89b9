#include "probe/files/freedesktop_trash.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <tuple>
#include <utility>

#include "probe/exclusive_file.h"
#include "probe/files/folder_size.h"
#include "probe/files/folder_walk.h"
#include "probe/files/mount_point.h"
#include "probe/files/trash_info.h"

namespace pellwin {

namespace {

constexpr std::string_view infoExtension = ".trashinfo";
constexpr std::string_view sizesFile = "directorysizes";
constexpr const char* changedMeanwhile = "It changed while Tovrin was moving it";

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

// A folder of the trash, `name` below `parentFd` and `path` in full: made (0700) when missing,
// and accepted only as a real folder, not a link, owned by `uid` when `uid` is given.
std::expected<FileDescriptor, SystemError> trashFolder(int parentFd, const char* name,
                                                       const std::string& path,
                                                       std::optional<uid_t> owner) {
  if (::mkdirat(parentFd, name, 0700) != 0 && errno != EEXIST)
    return std::unexpected(SystemError::fromErrno("mkdir", path));
  struct stat info {};
  if (::fstatat(parentFd, name, &info, AT_SYMLINK_NOFOLLOW) != 0)
    return std::unexpected(SystemError::fromErrno("lstat", path));
  const auto refused = [&](int code) {
    return std::unexpected(SystemError{.operation = "open", .path = path, .code = code});
  };
  if (!S_ISDIR(info.st_mode)) return refused(ENOTDIR);
  if (owner && info.st_uid != *owner) return refused(EPERM);
  FileDescriptor fd(::openat(parentFd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!fd.valid()) return std::unexpected(SystemError::fromErrno("open", path));
  return fd;
}

std::expected<OpenTrash, SystemError> openTrashAt(int parentFd, const char* name, std::string path,
                                                  std::string topdir, std::optional<uid_t> owner) {
  auto folder = trashFolder(parentFd, name, path, owner);
  if (!folder) return std::unexpected(std::move(folder.error()));
  auto files = trashFolder(folder->get(), "files", path + "/files", owner);
  if (!files) return std::unexpected(std::move(files.error()));
  auto info = trashFolder(folder->get(), "info", path + "/info", owner);
  if (!info) return std::unexpected(std::move(info.error()));
  return OpenTrash{.path = std::move(path),
                   .topdir = std::move(topdir),
                   .folder = std::move(*folder),
                   .files = std::move(*files),
                   .info = std::move(*info)};
}

// mkdir -p with 0700 for the folders it makes, following links on the way as the user set them.
std::expected<void, SystemError> makeFolders(const std::string& path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) == 0) {
    if (S_ISDIR(info.st_mode)) return {};
    return std::unexpected(SystemError{.operation = "mkdir", .path = path, .code = ENOTDIR});
  }
  if (path != "/") {
    if (auto made = makeFolders(parentOf(path)); !made) return made;
  }
  if (::mkdir(path.c_str(), 0700) != 0 && errno != EEXIST)
    return std::unexpected(SystemError::fromErrno("mkdir", path));
  return {};
}

std::expected<OpenTrash, SystemError> openHomeTrash(const std::string& dataHome) {
  if (auto made = makeFolders(dataHome); !made) return std::unexpected(std::move(made.error()));
  FileDescriptor home(::open(dataHome.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!home.valid()) return std::unexpected(SystemError::fromErrno("open", dataHome));
  return openTrashAt(home.get(), "Trash", dataHome + "/Trash", "", std::nullopt);
}

// Method 1, then method 2, of a volume whose top folder is `topdir` (a path without links).
std::expected<OpenTrash, SystemError> openVolumeTrash(const std::string& topdir, uid_t uid) {
  auto top = openFolderWithoutLinks(topdir, O_PATH);
  if (!top) return std::unexpected(std::move(top.error()));
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
void rewriteSizes(int trashFd, const std::string& trashPath,
                  const std::vector<TrashInfo::DirectorySize>& sizes) {
  if (sizes.empty()) {
    ::unlinkat(trashFd, std::string(sizesFile).c_str(), 0);
    return;
  }
  // The cache of folder sizes is a convenience for file managers: failing to write it loses
  // nothing, so the item's own move stands.
  std::ignore = replaceFileAt(trashFd, std::string(sizesFile),
                              TrashInfo::formatDirectorySizes(sizes), 0600, trashPath);
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
  rewriteSizes(trash.folder.get(), trash.path, sizes);
}

// The item being moved: the open folder it is in, its name there, its whole path and what
// lstat said of it.
struct Item {
  int parentFd = -1;
  std::string name;
  std::string path;
  struct stat info {};
};

// renameat2 with RENAME_NOREPLACE never replaces an entry another program put there meanwhile;
// file systems without it get the plain rename after the existence check already made.
std::expected<void, SystemError> renameWithoutReplacing(const Item& item, int toFd,
                                                        const std::string& to) {
  if (::renameat2(item.parentFd, item.name.c_str(), toFd, to.c_str(), RENAME_NOREPLACE) == 0)
    return {};
  if (errno != EINVAL && errno != ENOSYS)
    return std::unexpected(SystemError::fromErrno("trash", item.path));
  if (::renameat(item.parentFd, item.name.c_str(), toFd, to.c_str()) == 0) return {};
  return std::unexpected(SystemError::fromErrno("trash", item.path));
}

// Moving a folder to another parent rewrites its ".." entry, which needs write permission on it;
// a read-only folder the user owns is opened for the move and given its mode back afterwards.
std::expected<void, SystemError> moveItem(const Item& item, int filesFd,
                                          const std::string& target) {
  auto moved = renameWithoutReplacing(item, filesFd, target);
  if (moved || moved.error().code != EACCES || !S_ISDIR(item.info.st_mode) ||
      item.info.st_uid != ::geteuid() || (item.info.st_mode & S_IWUSR) != 0) {
    return moved;
  }
  const mode_t mode = item.info.st_mode & 07777;
  if (::fchmodat(item.parentFd, item.name.c_str(), mode | S_IWUSR, 0) != 0) return moved;
  moved = renameWithoutReplacing(item, filesFd, target);
  if (moved) {
    ::fchmodat(filesFd, target.c_str(), mode, 0);
  } else {
    ::fchmodat(item.parentFd, item.name.c_str(), mode, 0);
  }
  return moved;
}

// Picks a free name, writes its info file first (O_EXCL), then renames the item into files/.
std::expected<std::string, SystemError> placeInTrash(const OpenTrash& trash, const Item& item,
                                                     const std::string& infoPath,
                                                     const std::string& date) {
  const std::string infoText = TrashInfo::text(infoPath, date);
  for (int attempt = 1; attempt < 10000; ++attempt) {
    const std::string candidate = TrashInfo::candidateName(item.name, attempt);
    struct stat existing {};
    // An item without its info file, left by a crash, keeps its name too.
    if (::fstatat(trash.files.get(), candidate.c_str(), &existing, AT_SYMLINK_NOFOLLOW) == 0)
      continue;
    const std::string infoName = candidate + std::string(infoExtension);
    FileDescriptor info(::openat(trash.info.get(), infoName.c_str(),
                                 O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    const std::string infoFile = trash.path + "/info/" + infoName;
    if (!info.valid()) {
      if (errno == EEXIST) continue;
      return std::unexpected(SystemError::fromErrno("create", infoFile));
    }
    const bool written = writeAll(info.get(), infoText, infoFile).has_value();
    const int closed = ::close(info.release());
    if (!written || closed != 0) {
      ::unlinkat(trash.info.get(), infoName.c_str(), 0);
      return std::unexpected(SystemError{.operation = "write", .path = infoFile, .code = EIO});
    }
    auto moved = moveItem(item, trash.files.get(), candidate);
    if (moved) return candidate;
    ::unlinkat(trash.info.get(), infoName.c_str(), 0);
    if (moved.error().code != EEXIST) return std::unexpected(std::move(moved.error()));
  }
  return std::unexpected(SystemError{.operation = "trash", .path = item.path, .code = EEXIST});
}

// A failure of moving or erasing an item, told by its reason alone: the words around it name
// the item.
std::unexpected<std::string> itemFailure(const SystemError& error) {
  return std::unexpected(sentence(error, ErrorWording::reason));
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
    const std::string& path, std::optional<FileIdentity> expected) const {
  if (path.empty() || path.front() != '/' || path == "/")
    return itemFailure({.operation = "trash", .path = path, .code = EINVAL});
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
  auto parentFd = openFolderWithoutLinks(parent, O_PATH);
  if (!parentFd) return itemFailure(parentFd.error());
  Item item{.parentFd = parentFd->get(), .name = nameOf(path), .path = path, .info = {}};
  if (::fstatat(item.parentFd, item.name.c_str(), &item.info, AT_SYMLINK_NOFOLLOW) != 0) {
    return itemFailure(SystemError::fromErrno("lstat", path));
  }
  if (S_ISLNK(item.info.st_mode))
    return std::unexpected(std::string("It's a shortcut to somewhere else"));
  if (S_ISDIR(item.info.st_mode) && isMountPoint(item.parentFd, item.name))
    return std::unexpected(std::string(mountPointRefusal));
  if (expected && (static_cast<std::uint64_t>(item.info.st_dev) != expected->device ||
                   static_cast<std::uint64_t>(item.info.st_ino) != expected->inode)) {
    return std::unexpected(std::string(changedMeanwhile));
  }

  const std::string date = localNow();
  const auto intoVolumeTrash = [&]() -> std::expected<Entry, std::string> {
    const std::string topdir = mountTop(parent);
    auto trash = openVolumeTrash(topdir, uid_);
    // Why the volume's trash could not be used matters less than that the item stays put.
    if (!trash) return itemFailure({.operation = "trash", .path = path, .code = EXDEV});
    const std::string relative = path.substr(topdir == "/" ? 1 : topdir.size() + 1);
    auto placed = placeInTrash(*trash, item, relative, date);
    if (!placed) return itemFailure(placed.error());
    if (S_ISDIR(item.info.st_mode)) recordFolderSize(*trash, *placed);
    return Entry{
        .trashDirectory = trash->path, .name = *placed, .originalPath = path, .deletionDate = date};
  };

  struct stat dataHomeInfo {};
  std::string probe = dataHome_;
  while (::stat(probe.c_str(), &dataHomeInfo) != 0 && probe != "/") probe = parentOf(probe);
  if (dataHomeInfo.st_dev != item.info.st_dev) return intoVolumeTrash();

  auto trash = openHomeTrash(dataHome_);
  if (!trash) return itemFailure(trash.error());
  auto placed = placeInTrash(*trash, item, path, date);
  // Same device but another mount (a bind mount): its own volume's trash takes it.
  if (!placed && placed.error().code == EXDEV) return intoVolumeTrash();
  if (!placed) return itemFailure(placed.error());
  if (S_ISDIR(item.info.st_mode)) recordFolderSize(*trash, *placed);
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
  // Entries are read as far as they can be: an info folder read in part lists what it could.
  std::ignore = walkFolder(info.get(), visitor);
  return found;
}

namespace {

// Drops the entry's line from the trash's size cache, when it has one.
void forgetSize(int trashFd, const FreedesktopTrash::Entry& entry) {
  auto sizes = TrashInfo::parseDirectorySizes(readAll(trashFd, std::string(sizesFile).c_str()));
  if (std::erase_if(sizes, [&](const auto& line) { return line.name == entry.name; }) > 0) {
    rewriteSizes(trashFd, entry.trashDirectory, sizes);
  }
}

bool isPlainName(const std::string& name) {
  return !name.empty() && name.find('/') == std::string::npos && name != "." && name != "..";
}

}  // namespace

std::expected<void, std::string> FreedesktopTrash::putBack(const Entry& entry) {
  if (!isPlainName(entry.name) || entry.originalPath.empty() || entry.originalPath == "/") {
    return itemFailure({.operation = "rename", .path = entry.name, .code = EINVAL});
  }
  FileDescriptor trash(::open(entry.trashDirectory.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!trash.valid()) return itemFailure(SystemError::fromErrno("open", entry.trashDirectory));
  FileDescriptor files(
      ::openat(trash.get(), "files", O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!files.valid()) return itemFailure(SystemError::fromErrno("open", entry.trashDirectory));
  auto parent = openFolderWithoutLinks(parentOf(entry.originalPath), O_PATH);
  if (!parent) return itemFailure(parent.error());
  const std::string name = nameOf(entry.originalPath);
  if (::renameat2(files.get(), entry.name.c_str(), parent->get(), name.c_str(), RENAME_NOREPLACE) !=
      0) {
    return itemFailure(SystemError::fromErrno("rename", entry.originalPath));
  }
  const std::string infoName = "info/" + entry.name + std::string(infoExtension);
  ::unlinkat(trash.get(), infoName.c_str(), 0);
  forgetSize(trash.get(), entry);
  return {};
}

std::expected<void, std::string> FreedesktopTrash::erase(const Entry& entry) {
  if (!isPlainName(entry.name)) {
    return itemFailure({.operation = "unlink", .path = entry.name, .code = EINVAL});
  }
  FileDescriptor trash(::open(entry.trashDirectory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!trash.valid()) return itemFailure(SystemError::fromErrno("open", entry.trashDirectory));
  FileDescriptor files(
      ::openat(trash.get(), "files", O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!files.valid()) {
    const int code = errno;
    return itemFailure(
        {.operation = "open", .path = entry.trashDirectory + "/files", .code = code});
  }
  if (auto removed = removeTree(files.get(), entry.name); !removed) return removed;
  const std::string infoName = "info/" + entry.name + std::string(infoExtension);
  if (::unlinkat(trash.get(), infoName.c_str(), 0) != 0 && errno != ENOENT) {
    const int code = errno;
    return itemFailure(
        {.operation = "unlink", .path = entry.trashDirectory + "/" + infoName, .code = code});
  }
  forgetSize(trash.get(), entry);
  return {};
}

}  // namespace pellwin
