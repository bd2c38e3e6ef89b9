#include "app/models/quick_clean.h"

#include <unistd.h>

#include "app/models/history_recorder.h"
#include "app/removal_guards.h"
#include "app/system_calendar.h"
#include "probe/files/freedesktop_trash.h"
#include "probe/files/live_removal_disk.h"
#include "probe/files/trasher.h"
#include "probe/system/process_reader.h"

namespace pellwin {

CleanerPlaces cleanerPlaces(const Environment& environment) {
  return CleanerPlaces{.home = environment.home,
                       .xdgCacheHome = environment.xdgCacheHome,
                       .xdgConfigHome = environment.xdgConfigHome,
                       .xdgDataHome = environment.xdgDataHome,
                       .xdgStateHome = environment.xdgStateHome};
}

CleanerScanner cleanerScanner(const Environment& environment) {
  return CleanerScanner(environment.home, LinuxCleanerCatalog::groups(cleanerPlaces(environment)));
}

RunningSet readRunningSet(const Environment& environment, double now) {
  ProcessReader reader(environment.procRoot);
  return RunningSet::from(reader.read(now));
}

namespace {

Trasher trasherFor(const Environment& environment, RemovalDisk& disk) {
  return Trasher(environment.home, removalGuards(environment), disk,
                 LinuxCleanerCatalog::movedBases(cleanerPlaces(environment)));
}

}  // namespace

CleanPlan plannedClean(const Environment& environment, const RunningSet& running, double now) {
  CleanPlan plan = cleanerScanner(environment).plan(running, now);
  LiveRemovalDisk disk(FreedesktopTrash(applicationSupport(environment), ::getuid()));
  const Trasher trasher = trasherFor(environment, disk);
  for (CleanGroupPlan& group : plan.groups) {
    std::erase_if(group.items, [&](const CleanItem& item) {
      return trasher.ruleRefusal(item.path, group.group.action).has_value();
    });
  }
  return plan;
}

std::vector<TrashResult> removeBatch(const Environment& environment, const CleanBatch& batch) {
  const std::string dataHome = applicationSupport(environment);
  LiveRemovalDisk disk(FreedesktopTrash(dataHome, ::getuid()));
  const Trasher trasher = trasherFor(environment, disk);
  std::vector<TrashItem> items;
  items.reserve(batch.items.size());
  for (const CleanItem& item : batch.items)
    items.push_back({.path = item.path, .bytes = item.bytes});
  return trasher.perform(items, batch.action);
}

CleanerModel::Services quickCleanServices(const Environment& environment, HistoryRecorder& recorder,
                                          std::function<void(std::function<void()>)> post) {
  return CleanerModel::Services{
      .scan =
          [environment] {
            const double now = systemNow();
            return plannedClean(environment, readRunningSet(environment, now), now);
          },
      .remove = [environment](const CleanBatch& batch) { return removeBatch(environment, batch); },
      .logClean =
          [&recorder](std::string_view rules, std::uint64_t bytesDeleted,
                      std::uint64_t bytesTrashed, int items) {
            recorder.logClean(std::string(rules), bytesDeleted, bytesTrashed, items);
          },
      .post = std::move(post),
      .changed = nullptr,
  };
}

}  // namespace pellwin
