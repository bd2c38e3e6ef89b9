// How many malloc arenas the process keeps: one per processor (at least two). The tray app
// sets it first thing in main, and a benchmark of its screens does the same, so both allocate
// as the shipped program does. Call before any thread starts.
#pragma once

namespace pellwin::ui {

void limitMallocArenas();

}  // namespace pellwin::ui
