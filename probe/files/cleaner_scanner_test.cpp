#include "probe/files/cleaner_scanner.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <cstdio>
#include <ctime>
#include <filesystem>
#include <map>
#include <string>

#include "core/clean/linux_cleaner_catalog.h"
#include "core/clean/macos_cleaner_catalog.h"
#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

namespace fs = std::filesystem;
using testing::ScratchFolder;

const double now = static_cast<double>(std::time(nullptr));
constexpr double day = 86400;

void age(const fs::path& path, double days) {
  const auto seconds = static_cast<time_t>(now - days * day);
  const timespec times[2] = {{seconds, 0}, {seconds, 0}};
  ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0) << path;
}

// Ages a whole tree, the deepest entries first so that folders keep their own dates.
void ageTree(const fs::path& root, double days) {
  std::vector<fs::path> paths;
  for (const auto& entry : fs::recursive_directory_iterator(root)) paths.push_back(entry.path());
  for (auto it = paths.rbegin(); it != paths.rend(); ++it) age(*it, days);
  age(root, days);
}

std::uint64_t duBytes(const fs::path& path) {
  FILE* pipe = ::popen(("du -s -x -B1 '" + path.string() + "'").c_str(), "r");
  unsigned long long bytes = 0;
  if (pipe == nullptr || std::fscanf(pipe, "%llu", &bytes) != 1) bytes = 0;
  if (pipe != nullptr) ::pclose(pipe);
  return bytes;
}

const CleanGroupPlan& group(const CleanPlan& plan, const std::string& id) {
  for (const CleanGroupPlan& g : plan.groups) {
    if (g.group.id == id) return g;
  }
  ADD_FAILURE() << "no group " << id;
  return plan.groups.front();
}

std::map<std::string, std::uint64_t> itemsByName(const CleanGroupPlan& g) {
  std::map<std::string, std::uint64_t> out;
  for (const CleanItem& item : g.items) out[item.name] = item.bytes;
  return out;
}

std::map<std::string, std::string> skipsByName(const CleanGroupPlan& g) {
  std::map<std::string, std::string> out;
  for (const CleanSkip& skip : g.skipped) out[skip.name] = skip.reason;
  return out;
}

// A home holding real caches of several tools, logs of different ages and IDE folders.
class ScratchHome : public ::testing::Test {
 protected:
  void SetUp() override {
    h.write(".npm/_cacache/content-v2/sha512/ab/cd", std::string(300'000, 'n'));
    h.write(".cache/pip/http-v2/a/b/c", std::string(200'000, 'p'));
    h.write(".cache/yarn/v6/npm-left-pad-1.3.0/package.json", std::string(100'000, 'y'));
    h.write(".cache/Homebrew/downloads/abc--wget.bottle.tar.gz", std::string(40'000, 'b'));
    h.write(".cache/Homebrew/Logs/wget/01.post_install", "old log");
    ageTree(h / ".cache/Homebrew/Logs", 10);
    h.write(".cache/thumbnails/normal/0a1b.png", std::string(50'000, 't'));
    h.write(".cache/spotify/Data/abc.file", std::string(80'000, 's'));
    h.write(".cache/mozilla/firefox/x.default-esr/cache2/entries/A", std::string(60'000, 'm'));
    h.write(".cache/fontconfig/abc-le64.cache-8", std::string(20'000, 'f'));
    h.write(".cache/doc/by-app/x", "portal");
    h.write(".cache/huggingface/token", "hf_secret");
    h.write(".cache/motd.legal-displayed", "");
    h.write(".cache/ksycoca6_en", std::string(30'000, 'k'));
    fs::create_directory_symlink(outside.path(), h / ".cache/link-to-elsewhere");
    outside.write("big.bin", std::string(500'000, 'o'));

    h.write(".config/Code/logs/20250101T100000/main.log", "old session");
    ageTree(h / ".config/Code/logs/20250101T100000", 10);
    h.write(".config/Code/logs/20250301T100000/main.log", "this session");
    h.write(".config/Code/logs/20250201T100000/window1/renderer.log", "still written");
    ageTree(h / ".config/Code/logs/20250201T100000", 10);
    age(h / ".config/Code/logs/20250201T100000/window1/renderer.log", 0);
    h.write(".npm/_logs/2025-01-01T00_00_00_000Z-debug-0.log", "eight days");
    age(h / ".npm/_logs/2025-01-01T00_00_00_000Z-debug-0.log", 8);
    h.write(".npm/_logs/2025-01-03T00_00_00_000Z-debug-0.log", "six days");
    age(h / ".npm/_logs/2025-01-03T00_00_00_000Z-debug-0.log", 6);
    h.write(".xsession-errors.old", "previous session");
    age(h / ".xsession-errors.old", 10);
    h.write(".xsession-errors", "this session");

    h.write(".cache/JetBrains/IntelliJIdea2025.2/caches/content.dat", std::string(120'000, 'c'));
    h.write(".cache/JetBrains/IntelliJIdea2025.2/index/stubs/x", std::string(90'000, 'i'));
    h.write(".cache/JetBrains/IntelliJIdea2025.2/LocalHistory/changes.storageData", "history");
    h.write(".cache/JetBrains/IntelliJIdea2025.2/log/idea.1.log", "old idea log");
    age(h / ".cache/JetBrains/IntelliJIdea2025.2/log/idea.1.log", 9);
    h.write(".cache/debuginfod_client/0123abcd/debuginfo", std::string(250'000, 'd'));
  }

  CleanPlan plan(const RunningSet& running) const {
    const CleanerScanner scanner(h.path().string(),
                                 LinuxCleanerCatalog::groups({.home = h.path().string()}));
    return scanner.plan(running, now);
  }

  ScratchFolder h;
  ScratchFolder outside;
};

TEST_F(ScratchHome, FindsEachGroupWithTrueSizesAndSkipsWhatRuns) {
  const RunningSet running{.bundleIDs = {"firefox-esr"}, .names = {"pip3", "spotify", "bash"}};
  const CleanPlan result = plan(running);

  const CleanGroupPlan& developer = group(result, "developer-caches");
  EXPECT_EQ(itemsByName(developer), (std::map<std::string, std::uint64_t>{
                                        {"npm cache", duBytes(h / ".npm/_cacache")},
                                        {"Yarn cache", duBytes(h / ".cache/yarn")},
                                        {"Homebrew cache", duBytes(h / ".cache/Homebrew")}}));
  EXPECT_EQ(skipsByName(developer),
            (std::map<std::string, std::string>{{"pip cache", "pip3 is running"}}));
  EXPECT_EQ(developer.detail(), "3 items, 1 skipped because it is in use");
  EXPECT_EQ(developer.items.front().name, "npm cache") << "largest first";

  const CleanGroupPlan& apps = group(result, "app-caches");
  EXPECT_EQ(itemsByName(apps), (std::map<std::string, std::uint64_t>{
                                   {"thumbnails", duBytes(h / ".cache/thumbnails")},
                                   {"fontconfig", duBytes(h / ".cache/fontconfig")},
                                   {"ksycoca6_en", duBytes(h / ".cache/ksycoca6_en")}}))
      << "no tool caches, portal, credentials, links or empty files";
  EXPECT_EQ(skipsByName(apps),
            (std::map<std::string, std::string>{{"mozilla", "firefox-esr is open"},
                                                {"spotify", "spotify is open"}}));
  EXPECT_EQ(apps.items.front().path, (h / ".cache/thumbnails").string());

  std::map<std::string, std::uint64_t> logs = itemsByName(group(result, "old-logs"));
  EXPECT_EQ(logs.size(), 4u);
  for (const char* name : {"20250101T100000", "2025-01-01T00_00_00_000Z-debug-0.log",
                           ".xsession-errors.old", "idea.1.log"}) {
    EXPECT_TRUE(logs.contains(name)) << name;
  }

  const CleanGroupPlan& ide = group(result, "ide-caches");
  EXPECT_EQ(
      itemsByName(ide),
      (std::map<std::string, std::uint64_t>{
          {"IntelliJIdea2025.2 caches", duBytes(h / ".cache/JetBrains/IntelliJIdea2025.2/caches")},
          {"IntelliJIdea2025.2 indexes",
           duBytes(h / ".cache/JetBrains/IntelliJIdea2025.2/index")}}));
  EXPECT_EQ(itemsByName(group(result, "debug-symbols")),
            (std::map<std::string, std::uint64_t>{
                {"debuginfod cache", duBytes(h / ".cache/debuginfod_client")}}));
}

TEST_F(ScratchHome, ARunningIdeSkipsEachOfItsFoldersAndNothingIsPlannedTwice) {
  const CleanPlan result = plan({.names = {"idea", "brew"}});
  const CleanGroupPlan& ide = group(result, "ide-caches");
  EXPECT_TRUE(ide.items.empty());
  EXPECT_EQ(skipsByName(ide), (std::map<std::string, std::string>{
                                  {"IntelliJIdea2025.2 caches", "idea is running"},
                                  {"IntelliJIdea2025.2 indexes", "idea is running"}}));
  EXPECT_TRUE(result.visibleGroups().size() == 4) << "the IDE group has nothing to show";

  // With brew running its cache is left alone, so its old logs are offered on their own.
  EXPECT_TRUE(itemsByName(group(result, "old-logs")).contains("wget"));
  const CleanPlan quiet = plan({});
  EXPECT_FALSE(itemsByName(group(quiet, "old-logs")).contains("wget"))
      << "inside the Homebrew cache item already";
  std::set<std::string> ids;
  for (const CleanGroupPlan& g : quiet.groups) {
    for (const CleanItem& item : g.items) EXPECT_TRUE(ids.insert(item.id()).second) << item.id();
  }
}

TEST_F(ScratchHome, PlanningChangesNothingOnDisk) {
  auto snapshot = [&] {
    std::map<std::string, std::uintmax_t> files;
    for (const auto& e : fs::recursive_directory_iterator(h.path())) {
      files[e.path().string()] = e.is_regular_file() && !e.is_symlink() ? e.file_size() : 0;
    }
    return files;
  };
  const auto before = snapshot();
  (void)plan({.names = {"pip3"}});
  EXPECT_EQ(snapshot(), before);
}

TEST(CleanerScanner, ASharedPnpmStoreCountsOnlyWhatRemovingItFrees) {
  ScratchFolder h;
  const fs::path shared =
      h.write(".local/share/pnpm/store/v3/files/ab/shared", std::string(400'000, 'x'));
  h.write(".local/share/pnpm/store/v3/files/cd/unused", std::string(100'000, 'u'));
  fs::create_directories(h / "code/app/node_modules/.pnpm");
  fs::create_hard_link(shared, h / "code/app/node_modules/.pnpm/shared");
  const CleanerScanner scanner(h.path().string(),
                               LinuxCleanerCatalog::groups({.home = h.path().string()}));
  const auto items = itemsByName(group(scanner.plan({}, now), "developer-caches"));
  ASSERT_TRUE(items.contains("pnpm store"));
  EXPECT_LT(items.at("pnpm store"), duBytes(h / ".local/share/pnpm/store"));
  EXPECT_GE(items.at("pnpm store"), 100'000u);
  EXPECT_LT(items.at("pnpm store"), 400'000u);
}

TEST(CleanerScanner, ACacheFolderReachedThroughALinkOrAMountedChildIsLeftOut) {
  ScratchFolder h;
  ScratchFolder elsewhere;
  elsewhere.write("pip/http/x", std::string(100'000, 'p'));
  elsewhere.write("thumbnails/x.png", std::string(100'000, 't'));
  fs::create_directory_symlink(elsewhere.path(), h / ".cache");
  const CleanerScanner linked(h.path().string(),
                              LinuxCleanerCatalog::groups({.home = h.path().string()}));
  const CleanPlan plan = linked.plan({}, now);
  EXPECT_TRUE(plan.visibleGroups().empty()) << "every item would lie outside home";

  ScratchFolder home;
  home.write(".cache/thumbnails/x.png", std::string(50'000, 't'));
  fs::create_directories(home / ".cache/mounted");
  if (::mount("tovrin-test", (home / ".cache/mounted").c_str(), "tmpfs", 0, "size=4m") != 0) {
    GTEST_SKIP() << "cannot mount a tmpfs here";
  }
  home.write(".cache/mounted/data.bin", std::string(1'000'000, 'm'));
  const CleanerScanner scanner(home.path().string(),
                               LinuxCleanerCatalog::groups({.home = home.path().string()}));
  const auto items = itemsByName(group(scanner.plan({}, now), "app-caches"));
  ::umount((home / ".cache/mounted").c_str());
  EXPECT_EQ(items.size(), 1u);
  EXPECT_TRUE(items.contains("thumbnails"));
}

TEST(CleanerScanner, TheMacosTableSkipsXcodeGroupsAndAgesLogsByTheDay) {
  ScratchFolder h;
  h.write("Library/Developer/Xcode/DerivedData/App-abc/Build/x", std::string(10'000, 'x'));
  h.write("Library/Logs/six/x.log", "6");
  h.write("Library/Logs/eight/x.log", "8");
  ageTree(h / "Library/Logs/six", 6);
  ageTree(h / "Library/Logs/eight", 8);
  const CleanerScanner scanner(h.path().string(), MacosCleanerCatalog::groups());
  const CleanPlan plan = scanner.plan({.bundleIDs = {"com.apple.dt.xcode"}}, now);
  EXPECT_EQ(skipsByName(group(plan, "xcode-build")),
            (std::map<std::string, std::string>{{"App-abc", "Xcode is open"}}));
  const auto logs = itemsByName(group(plan, "old-logs"));
  EXPECT_TRUE(logs.contains("eight"));
  EXPECT_FALSE(logs.contains("six"));
}

TEST(CleanerScanner, TheMacosTableOffersHomebrewsCacheOnlyAsItsToolCache) {
  ScratchFolder h;
  h.write("Library/Caches/Homebrew/downloads/abc--wget.bottle.tar.gz", std::string(40'000, 'b'));
  h.write("Library/Caches/com.example.Editor/Cache.db", std::string(20'000, 'e'));
  const CleanerScanner scanner(h.path().string(), MacosCleanerCatalog::groups());
  const CleanPlan plan = scanner.plan({}, now);
  EXPECT_TRUE(itemsByName(group(plan, "developer-caches")).contains("Homebrew cache"));
  EXPECT_EQ(itemsByName(group(plan, "app-caches")),
            (std::map<std::string, std::uint64_t>{
                {"com.example.Editor", duBytes(h / "Library/Caches/com.example.Editor")}}));
}

}  // namespace
}  // namespace pellwin
