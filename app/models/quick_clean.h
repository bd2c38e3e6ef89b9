// Quick clean put together for this computer: the Linux catalog for the environment's home and
// XDG folders, what runs now from the process list, the trash mover with the data folders
// protected, and history's cleanup log. The screen model and `--clean-plan` both start here.
#pragma once

#include <string>

#include "app/environment.h"
#include "app/models/cleaner_model.h"
#include "core/clean/cleaner_running.h"
#include "core/clean/linux_cleaner_catalog.h"
#include "probe/files/cleaner_scanner.h"

namespace pellwin {

class HistoryRecorder;

[[nodiscard]] CleanerPlaces cleanerPlaces(const Environment& environment);
[[nodiscard]] CleanerScanner cleanerScanner(const Environment& environment);

// The catalog's plan for this computer, less every item the removal would refuse by its rules:
// a cache home moved onto ~/Documents or ~/.config offers nothing of theirs. Blocking.
[[nodiscard]] CleanPlan plannedClean(const Environment& environment, const RunningSet& running,
                                     double now);

// Everything running under the environment's proc root, read once. Blocking.
[[nodiscard]] RunningSet readRunningSet(const Environment& environment, double now);

// Removes one batch through a trash mover for the home folder that refuses the data folders.
// Blocking; the Trash is the environment's XDG data home's.
[[nodiscard]] std::vector<TrashResult> removeBatch(const Environment& environment,
                                                   const CleanBatch& batch);

// The model's services on this computer: scan and removal as above; finished runs go to
// `recorder` (which must outlive the model) as "quick clean"; `post` runs a step on the
// owner's thread.
[[nodiscard]] CleanerModel::Services quickCleanServices(
    const Environment& environment, HistoryRecorder& recorder,
    std::function<void(std::function<void()>)> post);

}  // namespace pellwin
