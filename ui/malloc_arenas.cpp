#include "ui/malloc_arenas.h"

#include <malloc.h>

#include <algorithm>
#include <thread>

namespace pellwin::ui {

// By default every thread that allocates gets a malloc arena of its own, up to eight per
// processor, and an arena keeps what it once held: a disk scan's reading threads alone left
// 5 MB behind, and the tray app's idle threads their share. One arena per processor keeps
// every processor busy without the hoard.
void limitMallocArenas() {
  ::mallopt(M_ARENA_MAX, static_cast<int>(std::max(2U, std::thread::hardware_concurrency())));
}

}  // namespace pellwin::ui
