// Quits real child processes of the test through kill(2) and this machine's /proc.
#include "app/desktop/kernel_process_signals.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <chrono>
#include <filesystem>
#include <optional>
#include <thread>

#include "app/models/app_quitter.h"
#include "probe/proc_file.h"
#include "probe/system/process_files.h"
#include "testing/child_process.h"
#include "testing/owner_loop.h"

namespace pellwin {
namespace {

using testing::ChildProcess;

const std::filesystem::path proc = "/proc";

std::optional<std::int32_t> parentOf(std::int32_t pid) {
  const auto text = readTextFile(proc / std::to_string(pid) / "stat");
  if (!text) return std::nullopt;
  const auto stat = parseProcessStat(*text);
  if (!stat) return std::nullopt;
  return stat->parent;
}

// The running children of `parent`, found by walking /proc; waits up to 5 s for `count`.
std::vector<std::int32_t> childrenOf(std::int32_t parent, std::size_t count) {
  std::vector<std::int32_t> children;
  for (int attempt = 0; attempt < 500 && children.size() < count; ++attempt) {
    children.clear();
    for (const auto& entry : std::filesystem::directory_iterator(proc)) {
      std::int32_t pid = 0;
      const std::string name = entry.path().filename().string();
      if (std::from_chars(name.data(), name.data() + name.size(), pid).ec != std::errc{}) continue;
      if (parentOf(pid) == parent) children.push_back(pid);
    }
    if (children.size() < count) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return children;
}

// Kills what a test left behind, so that no grandchild outlives the test holding its output.
struct KillAtEnd {
  std::vector<std::int32_t> pids;
  ~KillAtEnd() {
    for (std::int32_t pid : pids) ::kill(pid, SIGKILL);
  }
};

// An app made of real processes, parents as /proc has them now.
AppUsage appOf(std::string name, std::vector<std::int32_t> pids) {
  AppUsage app{.id = "proc:" + name, .name = std::move(name), .footprintBytes = 5 << 20};
  for (std::int32_t pid : pids) {
    app.pids.push_back(pid);
    app.parentPids.push_back(parentOf(pid).value_or(0));
  }
  app.processCount = static_cast<int>(app.pids.size());
  return app;
}

// A quitter that checks every 20 ms instead of 200 ms, so a full wait takes 0.6 s.
struct LiveQuitter {
  testing::OwnerLoop owner;
  AppQuitter quitter{{.processSignals = std::make_shared<KernelProcessSignals>(proc),
                      .confirm = [](const QuitConfirmation&) { return true; },
                      .sleep =
                          [](std::chrono::milliseconds wait) {
                            std::this_thread::sleep_for(wait / 10);
                          },
                      .post = owner.poster(),
                      .ownPID = static_cast<std::int32_t>(::getpid())}};

  std::string quit(const AppUsage& app, bool force) {
    quitter.confirmAndQuit(app, force);
    EXPECT_TRUE(owner.runUntil([&] { return quitter.working().empty(); }));
    return quitter.result() ? quitter.result()->text : "";
  }
};

// How the child ended once collected: the signal that ended it, or 0.
int endingSignal(const ChildProcess& child) {
  int status = 0;
  if (::waitpid(child.pid(), &status, WNOHANG) != child.pid()) return 0;
  return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

TEST(KernelProcessSignals, AnExitedChildIsNotRunningBeforeItIsCollected) {
  ChildProcess child({"true"});
  ASSERT_GT(child.pid(), 0);
  KernelProcessSignals signals(proc);
  // Never collected here: `true` becomes a zombie that kill(pid, 0) still finds.
  bool running = true;
  for (int i = 0; i < 500 && running; ++i) {
    running = signals.isRunning(child.pid());
    if (running) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  EXPECT_FALSE(running);
  EXPECT_TRUE(signals.isRunning(::getpid()));
}

TEST(KernelProcessSignals, RefusesGroupsAndReportsAGoneProcess) {
  KernelProcessSignals signals(proc);
  for (std::int32_t pid : {0, -1}) {
    SCOPED_TRACE(pid);
    const auto sent = signals.send(pid, 0);
    ASSERT_FALSE(sent.has_value());
    EXPECT_EQ(sent.error().code, EINVAL);
    EXPECT_FALSE(signals.isRunning(pid));
  }
  ChildProcess child({"true"});
  ASSERT_GT(child.pid(), 0);
  ASSERT_EQ(::waitpid(child.pid(), nullptr, 0), child.pid());
  const auto sent = signals.send(child.pid(), SIGTERM);
  ASSERT_FALSE(sent.has_value());
  EXPECT_TRUE(sent.error().isGone());
}

TEST(AppQuitterWithRealProcesses, QuitsAProcessThatEndsOnSigterm) {
  ChildProcess sleeper({"sleep", "100"});
  ASSERT_GT(sleeper.pid(), 0);
  LiveQuitter live;
  EXPECT_EQ(live.quit(appOf("sleep", {sleeper.pid()}), false), "Quit sleep, freeing about 5 MB.");
  EXPECT_EQ(endingSignal(sleeper), SIGTERM);
}

TEST(AppQuitterWithRealProcesses, OneThatIgnoresSigtermStaysOpenUntilForced) {
  // An ignored signal stays ignored across exec, so `sleep` itself ignores SIGTERM.
  ChildProcess stubborn({"sh", "-c", "trap '' TERM; exec sleep 100"});
  ASSERT_GT(stubborn.pid(), 0);
  const std::string name = "stubborn";
  // Let the shell reach exec, so SIGTERM lands after the trap is set.
  for (int i = 0; i < 500 && readTextFile(proc / std::to_string(stubborn.pid()) / "comm") !=
                                 "sleep\n";
       ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  LiveQuitter live;
  const AppUsage app = appOf(name, {stubborn.pid()});
  EXPECT_EQ(live.quit(app, false), "stubborn is still open. It may be asking about unsaved work.");
  EXPECT_EQ(::kill(stubborn.pid(), 0), 0);
  EXPECT_EQ(live.quit(app, true), "Quit stubborn, freeing about 5 MB.");
  EXPECT_EQ(endingSignal(stubborn), SIGKILL);
}

TEST(AppQuitterWithRealProcesses, APoliteQuitTakesTheWholeTree) {
  // The shell dies on SIGTERM and leaves its two children behind, as a careless app would.
  ChildProcess shell({"sh", "-c", "sleep 100 & sleep 100 & wait"});
  ASSERT_GT(shell.pid(), 0);
  const auto children = childrenOf(shell.pid(), 2);
  const KillAtEnd cleanup{children};
  ASSERT_EQ(children.size(), 2u);
  std::vector<std::int32_t> pids = children;
  pids.push_back(shell.pid());
  const AppUsage app = appOf("tree", pids);

  LiveQuitter live;
  KernelProcessSignals signals(proc);
  EXPECT_EQ(live.quit(app, false), "Quit tree, freeing about 5 MB.");
  EXPECT_EQ(endingSignal(shell), SIGTERM);
  for (std::int32_t child : children) EXPECT_FALSE(signals.isRunning(child)) << child;
}

TEST(AppQuitterWithRealProcesses, NeverSignalsItself) {
  LiveQuitter live;
  EXPECT_EQ(live.quit(appOf("tovrin", {::getpid()}), true),
            "This is Tovrin. Use Quit Tovrin in the menu bar panel.");
}

}  // namespace
}  // namespace pellwin
