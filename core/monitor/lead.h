// The app that leads a resource right now: the first contributor of that resource's verdict.
// Handed to the history side with each snapshot.
#pragma once

#include <string>

namespace pellwin {

struct Lead {
  std::string appID;
  std::string name;
  std::string value;  // the app's figure, already formatted
  friend bool operator==(const Lead&, const Lead&) = default;
};

}  // namespace pellwin
