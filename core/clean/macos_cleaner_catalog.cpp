#include "core/clean/macos_cleaner_catalog.h"

namespace pellwin::MacosCleanerCatalog {

namespace {

CleanSource tool(std::string path, std::string title, std::vector<std::string> tools) {
  return CleanSource{.path = std::move(path), .title = std::move(title), .tools = std::move(tools)};
}

std::vector<CleanGroup> makeGroups() {
  const std::vector<std::string> xcode = {"com.apple.dt.Xcode"};
  return {
      CleanGroup{
          .id = "developer-caches",
          .title = "Developer caches",
          .explanation = "Downloads that npm, pip, Homebrew and other tools keep. They download "
                         "again when needed",
          .action = CleanAction::delete_,
          .sources = {tool(".npm/_cacache", "npm cache", {"npm", "npx"}),
                      tool("Library/pnpm/store", "pnpm store", {"pnpm"}),
                      tool("Library/Caches/Yarn", "Yarn cache", {"yarn"}),
                      tool("Library/Caches/pip", "pip cache", {"pip", "pip3"}),
                      tool("Library/Caches/Homebrew", "Homebrew cache", {"brew"}),
                      tool(".cargo/registry/cache", "Cargo cache", {"cargo"}),
                      tool(".gradle/caches", "Gradle cache", {"gradle"}),
                      tool("Library/Caches/CocoaPods", "CocoaPods cache", {"pod"}),
                      tool("Library/Caches/go-build", "Go build cache", {"go"})},
      },
      CleanGroup{
          .id = "app-caches",
          .title = "App caches",
          .explanation = "Temporary files your apps rebuild when they need them. Apps that are "
                         "open are skipped",
          .action = CleanAction::delete_,
          .sources = {CleanSource{
              .path = "Library/Caches",
              .eachChild = true,
              .excludeChildren = {"yarn", "pip", "homebrew", "cocoapods", "go-build"}}},
      },
      CleanGroup{
          .id = "old-logs",
          .title = "Old logs",
          .explanation = "Diagnostic logs that apps and macOS wrote more than a week ago",
          .action = CleanAction::delete_,
          .sources = {CleanSource{.path = "Library/Logs", .eachChild = true, .olderThanDays = 7}},
      },
      CleanGroup{
          .id = "xcode-build",
          .title = "Xcode build files",
          .explanation = "Build output Xcode makes again the next time you build. Skipped while "
                         "Xcode is open",
          .action = CleanAction::trash,
          .sources = {CleanSource{.path = "Library/Developer/Xcode/DerivedData",
                                  .eachChild = true,
                                  .bundleIDs = xcode}},
      },
      CleanGroup{
          .id = "device-support",
          .title = "Old iPhone and iPad support files",
          .explanation = "Files Xcode copied from devices you connected. Xcode copies them again "
                         "when you connect one",
          .action = CleanAction::trash,
          .sources = {CleanSource{.path = "Library/Developer/Xcode/iOS DeviceSupport",
                                  .eachChild = true,
                                  .bundleIDs = xcode}},
      },
  };
}

}  // namespace

const std::vector<CleanGroup>& groups() {
  // Built once and never changed, so sharing it between threads is safe.
  static const std::vector<CleanGroup> table = makeGroups();
  return table;
}

}  // namespace pellwin::MacosCleanerCatalog
