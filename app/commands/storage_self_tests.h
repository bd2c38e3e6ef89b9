// The storage check's self-tests, run on the user's real disk and Trash and leaving both as they
// were: everything they make lives in a scratch folder under home (and one outside home), and
// their Trash entries are erased at the end.
#pragma once

#include <iosfwd>
#include <string>

namespace pellwin {

// `--trash-test`: asks the trash mover to move a file and a folder (holding a nested folder and
// a link) from the scratch folder and a file from outside home; the outside file must be
// refused and the folder must be in the Trash. Prints "trash-test ok" and returns 0, or prints
// why it failed and returns 1.
[[nodiscard]] int runTrashSelfTest(const std::string& home, const std::string& dataHome,
                                   std::ostream& out);

// `--flow-test`: scans a scratch tree, picks items through the delete list (a protected folder
// and a folder holding one are refused), then changes the disk under it (a picked file becomes
// a link, a picked folder gains a disk's trash folder, one vanishes), moves the list with the
// trash mover plus a link, rescans and reconciles, and checks every outcome and size. Prints
// "flow-test ok" and returns 0, or "flow-test failed: " and the first difference, and 1.
[[nodiscard]] int runFlowSelfTest(const std::string& home, const std::string& dataHome,
                                  std::ostream& out);

}  // namespace pellwin
