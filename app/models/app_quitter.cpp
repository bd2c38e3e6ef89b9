#include "app/models/app_quitter.h"

#include <signal.h>

#include <algorithm>
#include <cerrno>
#include <unordered_set>
#include <utility>
#include <vector>

#include "core/base/format.h"
#include "core/monitor/quit_policy.h"

namespace pellwin {
namespace {

struct QuitOutcome {
  int stillRunning = 0;
  bool anotherUser = false;  // a signal was refused with EPERM
};

// The top of the tree: processes whose parent is not one of the app's. They are what a logout
// would ask to quit; the app then ends its own helpers.
struct Tree {
  std::vector<std::int32_t> top;
  std::vector<std::int32_t> rest;
};

Tree tree(const AppUsage& app) {
  const std::unordered_set<std::int32_t> members(app.pids.begin(), app.pids.end());
  Tree t;
  for (std::size_t i = 0; i < app.pids.size(); ++i) {
    const std::int32_t pid = app.pids[i];
    if (pid <= 0) continue;
    const std::int32_t parent = i < app.parentPids.size() ? app.parentPids[i] : 0;
    (parent != pid && members.contains(parent) ? t.rest : t.top).push_back(pid);
  }
  return t;
}

class QuitRun {
 public:
  QuitRun(ProcessSignals& signals, const std::function<void(std::chrono::milliseconds)>& sleep,
          const std::atomic<bool>& stopping)
      : signals_(signals), sleep_(sleep), stopping_(stopping) {}

  QuitOutcome run(const AppUsage& app, bool force) {
    const Tree t = tree(app);
    std::vector<std::int32_t> running = t.top;
    running.insert(running.end(), t.rest.begin(), t.rest.end());
    if (force) {
      signalAll(running, SIGKILL);
    } else {
      signalAll(t.top, SIGTERM);
    }
    bool restAsked = force || t.rest.empty();
    for (int check = 1; check <= AppQuitter::maxChecks && !running.empty() && !stopping_;
         ++check) {
      sleep_(AppQuitter::checkInterval);
      std::erase_if(running, [&](std::int32_t pid) { return !signals_.isRunning(pid); });
      const bool topGone = std::ranges::none_of(t.top, [&](std::int32_t pid) {
        return std::ranges::find(running, pid) != running.end();
      });
      // Helpers of an app that is still open (perhaps asking about unsaved work) are left
      // alone: quitting them would break the app under the user's hands.
      if (!restAsked && check >= AppQuitter::graceChecks && topGone) {
        signalAll(running, SIGTERM);
        restAsked = true;
      }
    }
    return {.stillRunning = static_cast<int>(running.size()), .anotherUser = anotherUser_};
  }

 private:
  void signalAll(const std::vector<std::int32_t>& pids, int signal) {
    for (std::int32_t pid : pids) {
      const auto sent = signals_.send(pid, signal);
      if (!sent && sent.error().code == EPERM) anotherUser_ = true;
    }
  }

  ProcessSignals& signals_;
  const std::function<void(std::chrono::milliseconds)>& sleep_;
  const std::atomic<bool>& stopping_;
  bool anotherUser_ = false;
};

std::string sentence(const AppUsage& app, const QuitOutcome& outcome, bool force) {
  const std::string& name = app.name;
  if (outcome.stillRunning == 0) {
    return "Quit " + name + ", freeing about " + Format::memory(app.footprintBytes) + ".";
  }
  if (outcome.anotherUser) {
    return "macOS doesn't let Tovrin quit " + name + ". It runs as another user.";
  }
  if (force) {
    return std::to_string(outcome.stillRunning) + " of " + name +
           "'s processes are still running. macOS keeps them alive.";
  }
  return name + " is still open. It may be asking about unsaved work.";
}

}  // namespace

struct AppQuitter::State {
  std::set<std::string> working;
  std::optional<Result> result;
};

AppQuitter::AppQuitter(Services services)
    : services_(std::move(services)), state_(std::make_shared<State>()) {
  if (!services_.sleep) {
    services_.sleep = [](std::chrono::milliseconds wait) { std::this_thread::sleep_for(wait); };
  }
}

AppQuitter::~AppQuitter() {
  *stopping_ = true;
  for (Worker& worker : workers_) worker.thread.join();
}

QuitConfirmation AppQuitter::confirmation(const AppUsage& app, bool force) {
  const std::string memory = Format::memory(app.footprintBytes);
  if (force) {
    return {.message = "Force quit " + app.name + "?",
            .informativeText = "Anything you haven't saved in " + app.name +
                               " is lost. This frees " + memory + " of memory.",
            .confirmButton = "Force quit",
            .cancelButton = "Cancel",
            .destructive = true};
  }
  return {.message = "Quit " + app.name + "?",
          .informativeText = app.name +
                             " closes the way it does with ⌘Q, and asks about unsaved work "
                             "first. This frees about " +
                             memory + " of memory.",
          .confirmButton = "Quit",
          .cancelButton = "Cancel"};
}

void AppQuitter::confirmAndQuit(const AppUsage& app, bool force) {
  if (auto refusal = QuitPolicy::refusal(app, services_.ownPID)) {
    refuse(app, std::move(*refusal));
    return;
  }
  if (services_.confirm(confirmation(app, force))) quit(app, force);
}

void AppQuitter::quit(const AppUsage& app, bool force) {
  if (auto refusal = QuitPolicy::refusal(app, services_.ownPID)) {
    refuse(app, std::move(*refusal));
    return;
  }
  if (!state_->working.insert(app.id).second) return;
  if (services_.changed) services_.changed();
  joinFinishedWorkers();
  auto done = std::make_shared<std::atomic<bool>>(false);
  std::thread thread([app, force, done, signals = services_.processSignals, sleep = services_.sleep,
                      post = services_.post, changed = services_.changed,
                      stopping = stopping_, weak = std::weak_ptr<State>(state_)] {
    const QuitOutcome outcome = QuitRun(*signals, sleep, *stopping).run(app, force);
    post([weak, changed, id = app.id, text = sentence(app, outcome, force)] {
      const auto state = weak.lock();
      if (!state) return;
      state->working.erase(id);
      state->result = Result{.appID = id, .text = text};
      if (changed) changed();
    });
    *done = true;
  });
  workers_.push_back({.thread = std::move(thread), .done = std::move(done)});
}

void AppQuitter::dismissResult() {
  if (!state_->result) return;
  state_->result.reset();
  if (services_.changed) services_.changed();
}

const std::set<std::string>& AppQuitter::working() const { return state_->working; }

const std::optional<AppQuitter::Result>& AppQuitter::result() const { return state_->result; }

void AppQuitter::refuse(const AppUsage& app, std::string sentence) {
  state_->result = Result{.appID = app.id, .text = std::move(sentence)};
  if (services_.changed) services_.changed();
}

void AppQuitter::joinFinishedWorkers() {
  std::erase_if(workers_, [](Worker& worker) {
    if (!*worker.done) return false;
    worker.thread.join();
    return true;
  });
}

}  // namespace pellwin
