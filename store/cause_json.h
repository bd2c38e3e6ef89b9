// The causes of a day row as stored: a JSON array of objects with the keys "appID", "name" and
// "seconds".
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "core/history/day_row.h"

namespace pellwin {

// "[]" when the causes cannot be encoded (a name that is not valid UTF-8).
[[nodiscard]] std::string encodeCauses(const std::vector<Cause>& causes);
// An empty list when the text is not such an array.
[[nodiscard]] std::vector<Cause> decodeCauses(std::string_view text);

}  // namespace pellwin
