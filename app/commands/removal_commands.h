// The two terminal modes that change the disk, so that the removal rules can be used and checked
// end to end: `--check-storage --clean` runs quick clean's plan now, and `--check-storage --trash
// PATH...` moves the given items to the Trash as the space map's delete list would. Both go
// through the same plan, running-program pauses, rules and trasher as the screens. Blocking.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "app/environment.h"
#include "core/space/trash_item.h"

namespace pellwin {

// Plans quick clean for this computer (what runs now pauses its places), removes every planned
// item by its group's action, prints the summary's sentences and one line per problem, and logs
// the run to the history file `historyFile` when something was removed (a failure to log is
// silent, as on the screen). Returns 0 when every item was cleaned, else 1.
[[nodiscard]] int runCleanNow(const Environment& environment, const std::string& historyFile,
                              std::ostream& out);

// Moves each path (made absolute from the working folder, never normalised: ".." stays for the
// rules to refuse) to the Trash; prints one line per item: "moved: PATH", or the outcome, the
// path and its reason. Returns 0 only when every item was moved.
[[nodiscard]] int runTrashItems(const std::vector<std::string>& paths,
                                const Environment& environment, std::ostream& out);

// One item's line, without its line end.
[[nodiscard]] std::string trashResultLine(const TrashResult& result);

}  // namespace pellwin
