// The advice lines about one app, in the product's words. An app in the system category is a
// part of the operating system; one in the browsers category is a web browser.
#pragma once

#include <string>

#include "core/monitor/app_usage.h"

namespace pellwin::Advice {

// What a system part is, with the catalog's sentence when there is one.
[[nodiscard]] std::string systemLine(const AppUsage& app);
// For memory: close a browser's tabs, or quit the app.
[[nodiscard]] std::string quitLine(const AppUsage& app);
// For CPU: quit the app unless it is doing something needed.
[[nodiscard]] std::string cpuLine(const AppUsage& app);
// For an app's detail view: what quitting it would free.
[[nodiscard]] std::string appHelp(const AppUsage& app);

}  // namespace pellwin::Advice
