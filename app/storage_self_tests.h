// `--check-storage --trash-test`: moves a scratch folder under home to the real Trash with the
// trash mover, checks that a file outside home was refused and that the folder is in the Trash,
// then erases everything it made, its Trash entries included.
#pragma once

#include <iosfwd>
#include <string>

namespace pellwin {

// Prints "trash-test ok" and returns 0, or prints why it failed and returns 1.
[[nodiscard]] int runTrashSelfTest(const std::string& home, const std::string& dataHome,
                                   std::ostream& out);

}  // namespace pellwin
