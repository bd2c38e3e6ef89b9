// Another user's multi-process browser, read by an ordinary user: its exe links are closed to
// the reader, its command lines rewritten, its helpers renamed; it must still be one app, named
// as its owner would see it. Needs root, to run the browser and the reader as two other users.
#include <fcntl.h>
#include <grp.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <map>
#include <sstream>
#include <thread>

#include "core/monitor/app_grouper.h"
#include "probe/proc_file.h"
#include "probe/system/process_files.h"
#include "probe/system/process_reader.h"
#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

namespace fs = std::filesystem;

constexpr uid_t browserUser = 65534;  // nobody
constexpr uid_t readerUser = 65533;

void becomeUser(uid_t uid) {
  if (::setgroups(0, nullptr) != 0 || ::setgid(uid) != 0 || ::setuid(uid) != 0) ::_exit(99);
}

// The browser's main process and every process below it, as root sees them.
std::vector<int> family(int root) {
  std::map<int, int> parents;
  for (const auto& entry : fs::directory_iterator("/proc")) {
    const std::string name = entry.path().filename();
    if (name.find_first_not_of("0123456789") != std::string::npos) continue;
    const auto text = readTextFile(entry.path() / "stat");
    const auto stat = text ? parseProcessStat(*text) : std::nullopt;
    if (stat) parents[std::stoi(name)] = stat->parent;
  }
  std::vector<int> members = {root};
  for (std::size_t i = 0; i < members.size(); ++i) {
    for (const auto& [pid, parent] : parents) {
      if (parent == members[i]) members.push_back(pid);
    }
  }
  return members;
}

std::string comm(int pid) {
  auto text = readTextFile("/proc/" + std::to_string(pid) + "/comm").value_or("");
  if (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

struct Seen {
  std::string name, path, app;
  friend bool operator==(const Seen&, const Seen&) = default;
  friend void PrintTo(const Seen& s, std::ostream* out) {
    *out << "{" << s.name << ", " << s.path << ", " << s.app << "}";
  }
};

// One reading by `uid` (another process, so the test itself stays root): every process's
// name, path and app, and whether the browser's exe link was readable.
std::map<int, Seen> readAs(uid_t uid, const fs::path& share, int browser, int& exeErrno) {
  int pipeFds[2];
  if (::pipe(pipeFds) != 0) return {};
  const pid_t reader = ::fork();
  if (reader == 0) {
    ::close(pipeFds[0]);
    if (uid != 0) becomeUser(uid);
    std::ostringstream out;
    char target[256];
    const auto exe = "/proc/" + std::to_string(browser) + "/exe";
    out << (::readlink(exe.c_str(), target, sizeof target) < 0 ? errno : 0) << '\n';
    BundleIdentifierCache apps(DesktopSources{.dataDirs = {share}});
    ProcessReader processes("/proc", 0, &apps, {"/usr/bin", "/bin"});
    for (const ProcessSample& s : processes.read(0)) {
      out << s.pid << '\t' << s.name << '\t' << s.path << '\t' << (s.app ? s.app->id : "-")
          << '\n';
    }
    const std::string text = out.str();
    const bool written = ::write(pipeFds[1], text.data(), text.size()) ==
                         static_cast<ssize_t>(text.size());
    ::_exit(written ? 0 : 1);
  }
  ::close(pipeFds[1]);
  std::string text;
  char buffer[4096];
  for (ssize_t n; (n = ::read(pipeFds[0], buffer, sizeof buffer)) > 0;) text.append(buffer, n);
  ::close(pipeFds[0]);
  ::waitpid(reader, nullptr, 0);

  std::istringstream in(text);
  in >> exeErrno;
  in.ignore();
  std::map<int, Seen> seen;
  for (std::string line; std::getline(in, line);) {
    std::istringstream fields(line);
    int pid = 0;
    Seen s;
    fields >> pid;
    fields.ignore();
    std::getline(fields, s.name, '\t');
    std::getline(fields, s.path, '\t');
    std::getline(fields, s.app);
    seen[pid] = s;
  }
  return seen;
}

TEST(ProcessReaderLive, AnotherUsersBrowserIsOneAppToAnOrdinaryUser) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs root to run processes as two other users";
  testing::ScratchFolder scratch;
  fs::permissions(scratch.path(), fs::perms::owner_all | fs::perms::group_exec |
                                      fs::perms::others_read | fs::perms::others_exec);
  const fs::path program = scratch / "opt/fakefox/fakefox";
  fs::create_directories(program.parent_path());
  fs::copy_file(PELLWIN_STAND_IN_BROWSER, program);
  fs::permissions(program, fs::perms::owner_all | fs::perms::group_exec | fs::perms::others_exec);
  scratch.write("share/applications/fakefox.desktop",
                "[Desktop Entry]\nType=Application\nName=Fakefox\nExec=" + program.string() +
                    " %u\nCategories=Network;WebBrowser;\n");

  const pid_t browser = ::fork();
  if (browser == 0) {
    becomeUser(browserUser);
    const std::string room(300, 'x');
    ::execl(program.c_str(), program.c_str(), room.c_str(), nullptr);
    ::_exit(127);
  }
  ASSERT_GT(browser, 0);
  struct Ender {
    pid_t pid;
    ~Ender() {
      ::kill(pid, SIGKILL);
      ::waitpid(pid, nullptr, 0);
    }
  } ender{browser};

  std::vector<int> members;
  for (int attempt = 0; attempt < 100; ++attempt) {
    members = family(browser);
    if (members.size() == 4 && comm(members.back()) == "forkserver") break;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  ASSERT_EQ(members.size(), 4u);
  std::this_thread::sleep_for(std::chrono::milliseconds(50));  // the last title lands

  int userErrno = 0, rootErrno = 0;
  const auto asUser = readAs(readerUser, scratch / "share", browser, userErrno);
  const auto asRoot = readAs(0, scratch / "share", browser, rootErrno);
  EXPECT_EQ(userErrno, EACCES) << "the reader must not see the exe link";
  EXPECT_EQ(rootErrno, 0);

  std::vector<ProcessSample> samples;
  for (int pid : members) {
    SCOPED_TRACE(comm(pid));
    ASSERT_TRUE(asUser.contains(pid));
    ASSERT_TRUE(asRoot.contains(pid));
    const Seen& user = asUser.at(pid);
    EXPECT_EQ(user.app, "fakefox");
    EXPECT_EQ(asRoot.at(pid).app, "fakefox");
    // A title that names no file leaves the user only the comm; every other helper has the
    // owner's name and path.
    if (comm(pid) != "forkserver") {
      EXPECT_EQ(user, asRoot.at(pid));
    }
    samples.push_back(ProcessSample{.pid = pid,
                                    .name = user.name,
                                    .path = user.path,
                                    .app = AppIdentity{.id = user.app, .name = "Fakefox"}});
  }
  std::vector<ProcessUsage> usages;
  for (const auto& sample : samples) usages.push_back(ProcessUsage{.sample = &sample});
  const auto apps = AppGrouper::group(usages);
  ASSERT_EQ(apps.size(), 1u);
  EXPECT_EQ(apps[0].name, "Fakefox");
  EXPECT_EQ(apps[0].processCount, 4);
}

}  // namespace
}  // namespace pellwin
