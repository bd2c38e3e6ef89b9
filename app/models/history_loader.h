// What the models of the History, Alerts and Report screens share: one view read through the
// recorder (its body runs on the history queue, so the layout happens off the owner's thread),
// read again only when the recorder's revision has moved, results of a superseded read
// dropped, and the screen's unavailable texts while history is off. Owner's thread only; a
// result that arrives after the loader is gone is dropped.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "app/models/history_recorder.h"
#include "core/history/history_unavailable.h"

namespace pellwin {

template <class View>
class HistoryLoader {
 public:
  using Body = std::function<SQLiteResult<View>(const HistoryStore&)>;

  // `changed` is told, on the owner's thread, after the view, the loading flag or the
  // unavailable texts changed.
  HistoryLoader(HistoryRecorder& recorder, HistoryScreen screen, std::function<void()> changed)
      : recorder_(recorder), screen_(screen), state_(std::make_shared<State>()) {
    state_->changed = std::move(changed);
  }

  // Reads with `body` unless the view was read at the recorder's current revision; `force`
  // reads anyway (another range, another week). While history is off nothing is read and the
  // unavailable texts are shown.
  void load(Body body, bool force) {
    if (recorder_.failure()) {
      showUnavailable(*state_);
      return;
    }
    const std::int64_t revision = recorder_.revision();
    if (!force && state_->revision == revision && (state_->view || state_->loading)) return;
    const std::uint64_t request = ++state_->request;
    state_->revision = revision;
    state_->loading = true;
    notify(*state_);
    recorder_.read<View>(std::move(body),
                         [weak = std::weak_ptr<State>(state_), request,
                          screen = screen_](std::expected<View, HistoryFailure> r) {
                           auto state = weak.lock();
                           if (!state || state->request != request) return;
                           state->loading = false;
                           if (r) {
                             state->view = std::move(*r);
                             state->unavailable.reset();
                           } else {
                             state->view.reset();
                             state->unavailable = historyUnavailable(screen);
                           }
                           notify(*state);
                         });
  }

  [[nodiscard]] const std::optional<View>& view() const { return state_->view; }
  [[nodiscard]] bool loading() const { return state_->loading; }
  // Present while history is off or the last read failed.
  [[nodiscard]] const std::optional<HistoryUnavailable>& unavailable() const {
    return state_->unavailable;
  }
  // Changes the loaded view in place (a row marked read), telling the owner.
  void edit(const std::function<void(View&)>& change) {
    if (!state_->view) return;
    change(*state_->view);
    notify(*state_);
  }

 private:
  struct State {
    std::optional<View> view;
    std::optional<HistoryUnavailable> unavailable;
    std::optional<std::int64_t> revision;
    std::uint64_t request = 0;
    bool loading = false;
    std::function<void()> changed;
  };

  static void notify(const State& state) {
    if (state.changed) state.changed();
  }

  void showUnavailable(State& state) const {
    const HistoryUnavailable texts = historyUnavailable(screen_);
    if (state.unavailable == texts && !state.view && !state.loading) return;
    ++state.request;  // a read still under way is superseded
    state.view.reset();
    state.loading = false;
    state.unavailable = texts;
    notify(state);
  }

  HistoryRecorder& recorder_;
  HistoryScreen screen_;
  std::shared_ptr<State> state_;
};

}  // namespace pellwin
