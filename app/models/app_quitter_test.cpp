#include "app/models/app_quitter.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <cerrno>
#include <map>
#include <mutex>

#include "testing/owner_loop.h"

namespace pellwin {
namespace {

// Processes that exist only in the test: each ends on the signals it is told to end on, and
// may refuse every signal as another user's process would.
class FakeSignals final : public ProcessSignals {
 public:
  struct Process {
    std::set<int> endsOn{SIGTERM, SIGKILL};
    bool anotherUser = false;
    bool running = true;
  };

  void add(std::int32_t pid, Process process) { processes_[pid] = process; }

  std::expected<void, SystemError> send(std::int32_t pid, int signal) override {
    std::lock_guard lock(mutex_);
    sent_.push_back({pid, signal, checks_});
    const auto found = processes_.find(pid);
    if (found == processes_.end() || !found->second.running) {
      return std::unexpected(SystemError{.operation = "kill", .code = ESRCH});
    }
    if (found->second.anotherUser) {
      return std::unexpected(SystemError{.operation = "kill", .code = EPERM});
    }
    if (found->second.endsOn.contains(signal)) found->second.running = false;
    return {};
  }
  bool isRunning(std::int32_t pid) override {
    std::lock_guard lock(mutex_);
    const auto found = processes_.find(pid);
    return found != processes_.end() && found->second.running;
  }
  void sleep(std::chrono::milliseconds wait) {
    std::lock_guard lock(mutex_);
    ++checks_;
    slept_ += wait;
  }

  struct Sent {
    std::int32_t pid;
    int signal;
    int afterChecks;
    friend bool operator==(const Sent&, const Sent&) = default;
  };
  std::vector<Sent> sent() {
    std::lock_guard lock(mutex_);
    return sent_;
  }
  std::chrono::milliseconds slept() {
    std::lock_guard lock(mutex_);
    return slept_;
  }

 private:
  std::mutex mutex_;
  std::map<std::int32_t, Process> processes_;
  std::vector<Sent> sent_;
  int checks_ = 0;
  std::chrono::milliseconds slept_{0};
};

constexpr std::int32_t ownPID = 999;

struct QuitterRig {
  std::shared_ptr<FakeSignals> signals = std::make_shared<FakeSignals>();
  testing::OwnerLoop owner;
  std::vector<QuitConfirmation> asked;
  bool answer = true;
  int changes = 0;
  AppQuitter quitter{{.processSignals = signals,
                      .confirm =
                          [this](const QuitConfirmation& c) {
                            asked.push_back(c);
                            return answer;
                          },
                      .sleep = [this](std::chrono::milliseconds w) { signals->sleep(w); },
                      .post = owner.poster(),
                      .changed = [this] { ++changes; },
                      .ownPID = ownPID}};

  // Quits and runs the owner's loop until the result arrives; the result's text.
  std::string quit(const AppUsage& app, bool force) {
    quitter.confirmAndQuit(app, force);
    EXPECT_TRUE(owner.runUntil([&] { return quitter.working().empty(); }));
    return quitter.result() ? quitter.result()->text : "";
  }
};

AppUsage editor() {
  // 10 is the app; 11 and 12 are its helpers, 13 a helper's helper.
  return AppUsage{.id = "app:org.example.Editor",
                  .name = "Editor",
                  .processCount = 4,
                  .pids = {11, 10, 12, 13},
                  .parentPids = {10, 1, 10, 12},
                  .footprintBytes = 700ull << 20};
}

TEST(AppQuitter, AsksWithTheAlertsTexts) {
  const AppUsage app = editor();
  EXPECT_EQ(AppQuitter::confirmation(app, false),
            (QuitConfirmation{.message = "Quit Editor?",
                              .informativeText = "Editor closes the way it does with ⌘Q, and asks "
                                                 "about unsaved work first. This frees about "
                                                 "700 MB of memory.",
                              .confirmButton = "Quit",
                              .cancelButton = "Cancel"}));
  EXPECT_EQ(AppQuitter::confirmation(app, true),
            (QuitConfirmation{.message = "Force quit Editor?",
                              .informativeText = "Anything you haven't saved in Editor is lost. "
                                                 "This frees 700 MB of memory.",
                              .confirmButton = "Force quit",
                              .cancelButton = "Cancel",
                              .destructive = true}));
}

TEST(AppQuitter, ARefusedAppIsNeverAskedAboutNorSignalled) {
  AppUsage own = editor();
  own.pids.push_back(ownPID);
  AppUsage system = editor();
  system.category = AppCategory::system;
  AppUsage empty = editor();
  empty.pids.clear();
  const struct {
    const char* why;
    AppUsage app;
    const char* text;
  } cases[] = {
      {"the program itself", own, "This is Tovrin. Use Quit Tovrin in the menu bar panel."},
      {"a system part", system,
       "Editor is part of macOS. Quitting it can log you out or it starts again straight away."},
      {"no processes", empty, "Tovrin can't tell which processes belong to Editor."},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    QuitterRig rig;
    rig.quitter.confirmAndQuit(c.app, true);
    EXPECT_EQ(rig.quitter.result(), (AppQuitter::Result{.appID = c.app.id, .text = c.text}));
    rig.quitter.quit(c.app, true);
    EXPECT_TRUE(rig.quitter.working().empty());
    EXPECT_TRUE(rig.asked.empty());
    EXPECT_TRUE(rig.signals->sent().empty());
    EXPECT_GT(rig.changes, 0);
  }
}

TEST(AppQuitter, CancelQuitsNothing) {
  QuitterRig rig;
  rig.answer = false;
  rig.quitter.confirmAndQuit(editor(), false);
  ASSERT_EQ(rig.asked.size(), 1u);
  EXPECT_TRUE(rig.quitter.working().empty());
  EXPECT_FALSE(rig.quitter.result().has_value());
  EXPECT_TRUE(rig.signals->sent().empty());
}

TEST(AppQuitter, PoliteQuitAsksTheTopFirstAndTheRestOnceItHasGone) {
  QuitterRig rig;
  // The helpers stay after the app went, as orphans do when their app forgets them.
  rig.signals->add(10, {});
  for (std::int32_t helper : {11, 12, 13}) rig.signals->add(helper, {});
  rig.quitter.confirmAndQuit(editor(), false);
  EXPECT_EQ(rig.quitter.working(), (std::set<std::string>{"app:org.example.Editor"}));
  ASSERT_TRUE(rig.owner.runUntil([&] { return rig.quitter.working().empty(); }));

  EXPECT_EQ(rig.quitter.result(),
            (AppQuitter::Result{.appID = "app:org.example.Editor",
                                .text = "Quit Editor, freeing about 700 MB."}));
  using S = FakeSignals::Sent;
  EXPECT_EQ(rig.signals->sent(),
            (std::vector<S>{{10, SIGTERM, 0},
                            {11, SIGTERM, AppQuitter::graceChecks},
                            {12, SIGTERM, AppQuitter::graceChecks},
                            {13, SIGTERM, AppQuitter::graceChecks}}));
}

TEST(AppQuitter, HelpersOfAnAppThatStaysOpenAreLeftAlone) {
  QuitterRig rig;
  rig.signals->add(10, {.endsOn = {SIGKILL}});  // asking about unsaved work
  for (std::int32_t helper : {11, 12, 13}) rig.signals->add(helper, {});
  EXPECT_EQ(rig.quit(editor(), false), "Editor is still open. It may be asking about unsaved work.");
  EXPECT_EQ(rig.signals->sent(), (std::vector<FakeSignals::Sent>{{10, SIGTERM, 0}}));
  EXPECT_EQ(rig.signals->slept(), AppQuitter::maxChecks * AppQuitter::checkInterval);

  // The user goes on to force it: every process gets SIGKILL at once.
  EXPECT_EQ(rig.quit(editor(), true), "Quit Editor, freeing about 700 MB.");
  const auto sent = rig.signals->sent();
  ASSERT_EQ(sent.size(), 5u);
  for (std::size_t i = 1; i < sent.size(); ++i) EXPECT_EQ(sent[i].signal, SIGKILL);
}

TEST(AppQuitter, SaysWhyProcessesAreStillRunning) {
  const struct {
    const char* why;
    FakeSignals::Process helper;
    bool force;
    const char* text;
  } cases[] = {
      {"another user's helper", {.anotherUser = true}, true,
       "macOS doesn't let Tovrin quit Editor. It runs as another user."},
      {"another user's helper, politely", {.anotherUser = true}, false,
       "macOS doesn't let Tovrin quit Editor. It runs as another user."},
      {"a helper that survives SIGKILL (stuck in the kernel)", {.endsOn = {}}, true,
       "3 of Editor's processes are still running. macOS keeps them alive."},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    QuitterRig rig;
    rig.signals->add(10, {});
    for (std::int32_t helper : {11, 12, 13}) rig.signals->add(helper, c.helper);
    EXPECT_EQ(rig.quit(editor(), c.force), c.text);
  }
}

TEST(AppQuitter, QuittingTheSameAppTwiceAtOnceSignalsOnce) {
  QuitterRig rig;
  rig.signals->add(10, {});
  AppUsage app = editor();
  app.pids = {10};
  app.parentPids = {1};
  rig.quitter.quit(app, true);
  rig.quitter.quit(app, true);
  ASSERT_TRUE(rig.owner.runUntil([&] { return rig.quitter.working().empty(); }));
  EXPECT_EQ(rig.signals->sent().size(), 1u);
  rig.quitter.dismissResult();
  EXPECT_FALSE(rig.quitter.result().has_value());
}

}  // namespace
}  // namespace pellwin
