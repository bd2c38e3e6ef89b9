// Quitting an app the user picked from the list: refuses what must not be quit, asks for
// confirmation through the UI's function, then quits politely (SIGTERM to the top of the app's
// process tree, then to what is left of it) or by force (SIGKILL to every process), waits for
// the processes to go, and says in one sentence what happened. Every public call, and every
// change of `working` and `result`, happens on the owner's thread; the signalling and waiting
// run on a worker thread per quit, and come back through the owner's `post` function.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <thread>

#include "app/models/process_signals.h"
#include "core/monitor/app_usage.h"

namespace pellwin {

// The alert that asks before quitting. The first button goes on with the quit.
struct QuitConfirmation {
  std::string message{};
  std::string informativeText{};
  std::string confirmButton{};
  std::string cancelButton{};
  bool destructive = false;  // the first button is marked as destroying something
  friend bool operator==(const QuitConfirmation&, const QuitConfirmation&) = default;
};

class AppQuitter {
 public:
  // The outcome of the last quit or refusal, shown until dismissed.
  struct Result {
    std::string appID{};
    std::string text{};
    friend bool operator==(const Result&, const Result&) = default;
  };

  struct Services {
    // Used on the quit workers.
    std::shared_ptr<ProcessSignals> processSignals;
    // Shows the alert and says whether its first button was pressed. Owner's thread.
    std::function<bool(const QuitConfirmation&)> confirm;
    // Waits between two checks, on a worker; tests pass a shorter wait. Empty: really sleeps.
    std::function<void(std::chrono::milliseconds)> sleep;
    // Runs a step on the owner's thread, later. May be called from a worker.
    std::function<void(std::function<void()>)> post;
    // Told after every change of `working` or `result`, on the owner's thread. Optional.
    std::function<void()> changed;
    std::int32_t ownPID = 0;
  };

  static constexpr std::chrono::milliseconds checkInterval{200};
  static constexpr int maxChecks = 30;
  // Checks before the rest of the tree is asked to quit, once its top has gone: helpers that
  // end with their app are given time to do so on their own.
  static constexpr int graceChecks = 5;

  explicit AppQuitter(Services services);
  // Stops the waits at their next check and joins the workers; their results are dropped.
  ~AppQuitter();
  AppQuitter(const AppQuitter&) = delete;
  AppQuitter& operator=(const AppQuitter&) = delete;

  // The alert's texts for quitting `app`.
  [[nodiscard]] static QuitConfirmation confirmation(const AppUsage& app, bool force);

  // A refusal becomes the result at once; otherwise asks, and quits when confirmed.
  void confirmAndQuit(const AppUsage& app, bool force);
  // The quit itself, without asking (still never for an app that is refused). Does nothing
  // while the same app is being quit.
  void quit(const AppUsage& app, bool force);
  void dismissResult();

  [[nodiscard]] const std::set<std::string>& working() const;
  [[nodiscard]] const std::optional<Result>& result() const;

 private:
  struct State;
  struct Worker {
    std::thread thread;
    std::shared_ptr<std::atomic<bool>> done;
  };
  void refuse(const AppUsage& app, std::string sentence);
  void joinFinishedWorkers();

  Services services_;
  std::shared_ptr<State> state_;
  std::shared_ptr<std::atomic<bool>> stopping_ = std::make_shared<std::atomic<bool>>(false);
  std::list<Worker> workers_;
};

}  // namespace pellwin
