#include "app/models/space_map.h"

#include <chrono>

#include "app/models/quick_clean.h"
#include "app/removal_guards.h"
#include "app/system_calendar.h"
#include "core/base/data_folder.h"
#include "probe/files/scan_task.h"

namespace pellwin {

ScanCache spaceMapCache(const Environment& environment) {
  return ScanCache(ScanCache::defaultPath(DataFolder::path(applicationSupport(environment))));
}

SpaceMapModel::Services spaceMapServices(const Environment& environment,
                                         std::function<void(std::function<void()>)> post) {
  return SpaceMapModel::Services{
      .access = [home = environment.home] { return FullDiskAccess::state(home); },
      .loadCache = [cache = spaceMapCache(environment)] { return cache.load(); },
      // The screen never shows a failed save; the next scan or removal saves again.
      .saveCache =
          [cache = spaceMapCache(environment)](const CachedScan& scan) { (void)cache.save(scan); },
      .scan =
          [scanner = DiskScanner(environment.home, environment.sysRoot)](
              const ScanRoot& root, const ScanProgressHandler& progress, std::stop_token stop) {
            // The walk runs on the task's own low-priority thread; this worker only waits.
            ScanTask task(scanner, root.path, root.stripPrefix, progress);
            const std::stop_callback cancel(stop, [&task] { task.cancel(); });
            return task.result();
          },
      .remove =
          [environment](const std::vector<TrashItem>& items, CleanAction action) {
            CleanBatch batch{.action = action};
            for (const TrashItem& item : items)
              batch.items.push_back({.path = item.path, .bytes = item.bytes});
            return removeBatch(environment, batch);
          },
      .now = [] { return systemNow(); },
      .steadyNow =
          [] {
            return std::chrono::duration<double>(
                       std::chrono::steady_clock::now().time_since_epoch())
                .count();
          },
      .post = std::move(post),
      .changed = nullptr,
  };
}

std::unique_ptr<SpaceMapModel> makeSpaceMapModel(const Environment& environment,
                                                 std::function<void(std::function<void()>)> post) {
  return std::make_unique<SpaceMapModel>(environment.home, removalGuards(environment),
                                         spaceMapServices(environment, std::move(post)));
}

}  // namespace pellwin
