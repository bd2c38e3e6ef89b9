#include "app/models/space_map_model.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <condition_variable>
#include <mutex>

#include "testing/enum_text_round_trip.h"
#include "testing/home_tree.h"
#include "testing/owner_loop.h"

namespace pellwin {
namespace {

using testing::OwnerLoop;
using Outcome = TrashResult::Outcome;
using Phase = SpaceMapModel::Phase;

using namespace testing::home_tree;

// 100 MB of home: a JavaScript project with its packages, documents, a film, a guarded folder,
// a cache that may be deleted for good, security keys and a folder that could not be read.
SizeNode sampleHome() {
  using enum StorageCategory;
  SizeNode app = folder("code/app", 2'000'000,
                        {folder("code/app/node_modules", 30'000'000, {}, developer),
                         file("code/app/data.bin", 8'000'000, developer)},
                        developer);
  app.markers = std::vector<std::string>{"package.json"};
  SizeNode locked{.name = "locked",
                  .path = home + "/locked",
                  .isDirectory = true,
                  .isLocked = true,
                  .category = system};
  return folder("", 1'000'000,
                {folder("code", 0, {std::move(app)}, developer),
                 folder("Documents", 10'000'000, {file("Documents/old.mov", 20'000'000, yourFiles)},
                        yourFiles),
                 file("film.mov", 20'000'000, yourFiles), folder("keep", 5'000'000, {}),
                 folder(".cache", 0, {folder(".cache/pip", 3'000'000, {})}),
                 folder(".ssh", 1'000'000, {}), std::move(locked)});
}

CachedScan cachedHome(SizeNode tree = sampleHome()) {
  return CachedScan{.tree = std::move(tree),
                    .scannedAt = 1000,
                    .root = home,
                    .access = FullDiskAccess::State::unknown};
}

using ScanResult = std::expected<WalkResult, ScanError>;
using Scanner =
    std::function<ScanResult(const ScanRoot&, const ScanProgressHandler&, std::stop_token)>;

// The fakes behind the model. Fields the worker writes are read by the test only after the
// posted result ran, which the owner loop's lock orders.
struct Harness {
  OwnerLoop main;
  std::optional<CachedScan> cache;
  FullDiskAccess::State accessState = FullDiskAccess::State::unknown;
  Scanner scanner = [](const ScanRoot&, const ScanProgressHandler&, std::stop_token) {
    return ScanResult(WalkResult{.tree = sampleHome()});
  };
  std::function<TrashResult(const TrashItem&)> outcome = [](const TrashItem& item) {
    return TrashResult{.path = item.path, .bytes = item.bytes, .outcome = Outcome::moved};
  };
  std::vector<ScanRoot> scanned;
  std::vector<CachedScan> saved;
  std::vector<std::pair<std::vector<TrashItem>, CleanAction>> removed;
  double wallNow = 5000;
  double steadyNow = 0;
  std::vector<std::int64_t> progressSeen;
  std::function<void()> onChange;

  SpaceMapModel::Services services() {
    return {
        .access = [this] { return accessState; },
        .loadCache = [this] { return cache; },
        .saveCache = [this](const CachedScan& scan) { saved.push_back(scan); },
        .scan =
            [this](const ScanRoot& root, const ScanProgressHandler& progress,
                   std::stop_token stop) {
              scanned.push_back(root);
              return scanner(root, progress, stop);
            },
        .remove =
            [this](const std::vector<TrashItem>& items, CleanAction action) {
              removed.emplace_back(items, action);
              std::vector<TrashResult> results;
              for (const TrashItem& item : items) results.push_back(outcome(item));
              return results;
            },
        .now = [this] { return wallNow; },
        .steadyNow = [this] { return steadyNow; },
        .post = main.poster(),
        .changed =
            [this] {
              if (onChange) onChange();
            },
    };
  }

  // A model opened on the cache, ready.
  std::unique_ptr<SpaceMapModel> opened(RemovalGuards guards = {}) {
    auto model = std::make_unique<SpaceMapModel>(home, std::move(guards), services());
    model->open();
    EXPECT_TRUE(main.runUntil([&] { return model->phase() == Phase::ready; }));
    return model;
  }
};

// A scanner that reports once, then waits until it is told to stop and returns what `after`
// says: what a long walk does when cancelled.
Scanner waitingScanner(std::function<ScanResult()> after) {
  return [after](const ScanRoot&, const ScanProgressHandler& progress, std::stop_token stop) {
    progress({.items = 1, .currentPath = home});
    std::mutex mutex;
    std::condition_variable_any stopped;
    std::unique_lock lock(mutex);
    stopped.wait(lock, stop, [] { return false; });
    return after();
  };
}

TEST(SpaceMapModel, OpensOnTheCachedScanAtOnceThenAFreshScanReplacesAndSavesIt) {
  Harness h;
  const SizeNode older = folder("", 4'000'000, {file("film.mov", 20'000'000)});
  h.cache = cachedHome(older);
  SpaceMapModel model(home, {}, h.services());
  model.open();
  EXPECT_EQ(model.phase(), Phase::loading);
  ASSERT_TRUE(h.main.runNext());
  EXPECT_EQ(model.phase(), Phase::ready);
  ASSERT_NE(model.tree(), nullptr);
  EXPECT_EQ(*model.tree(), older);
  EXPECT_EQ(model.scannedAt(), 1000.0);
  EXPECT_TRUE(model.isFromCache());
  EXPECT_TRUE(h.scanned.empty()) << "a cache is shown without scanning";

  model.scanHome();
  EXPECT_EQ(model.phase(), Phase::scanning);
  EXPECT_EQ(*model.tree(), older) << "the cached tree stays while the scan runs";
  ASSERT_TRUE(h.main.runUntil([&] { return model.phase() == Phase::ready; }));
  EXPECT_EQ(*model.tree(), sampleHome());
  EXPECT_EQ(model.scannedAt(), 5000.0);
  EXPECT_FALSE(model.isFromCache());
  EXPECT_EQ(h.scanned, (std::vector<ScanRoot>{{.path = home}}));
  ASSERT_EQ(h.saved.size(), 1u);
  EXPECT_EQ(h.saved[0], (CachedScan{.tree = sampleHome(),
                                    .scannedAt = 5000,
                                    .root = home,
                                    .access = FullDiskAccess::State::unknown}));
}

TEST(SpaceMapModel, OpeningWithoutACacheScansTheRootTheAccessStateGives) {
  const struct {
    FullDiskAccess::State access;
    ScanRoot root;
  } cases[] = {
      {FullDiskAccess::State::unknown, {.path = home}},
      {FullDiskAccess::State::denied, {.path = home}},
      {FullDiskAccess::State::granted, ScanRoot::wholeDisk()},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(rawValue(c.access));
    Harness h;
    h.accessState = c.access;
    const auto model = h.opened();
    EXPECT_EQ(h.scanned, std::vector<ScanRoot>{c.root});
    ASSERT_NE(model->tree(), nullptr);
    EXPECT_FALSE(model->isFromCache());
    EXPECT_EQ(model->access(), c.access);
    ASSERT_EQ(h.saved.size(), 1u);
    EXPECT_EQ(h.saved[0].root, c.root.path);
  }
}

TEST(SpaceMapModel, ProgressReachesTheOwnerAtMostEveryTenthOfASecond) {
  Harness h;
  // Thirteen reports 1/32 s apart (exact in binary): only those at 0, 1/8, 1/4 and 3/8 s pass.
  h.scanner = [&h](const ScanRoot&, const ScanProgressHandler& progress, std::stop_token) {
    for (int i = 0; i < 13; ++i) {
      h.steadyNow = i / 32.0;
      progress({.items = i, .currentPath = home});
    }
    return ScanResult(WalkResult{.tree = sampleHome()});
  };
  SpaceMapModel model(home, {}, h.services());
  h.onChange = [&] {
    if (model.progress()) h.progressSeen.push_back(model.progress()->items);
  };
  model.scanHome();
  ASSERT_TRUE(h.main.runUntil([&] { return model.phase() == Phase::ready; }));
  EXPECT_EQ(h.progressSeen, (std::vector<std::int64_t>{0, 4, 8, 12}));
  EXPECT_EQ(model.progress(), std::nullopt) << "no progress once the scan is over";
}

TEST(SpaceMapModel, CancellingKeepsTheTreeShownBeforeAndSavesNothing) {
  const struct {
    const char* why;
    std::function<ScanResult()> after;
  } cases[] = {
      {"the walk stops",
       [] { return ScanResult(std::unexpected(ScanError{.kind = ScanErrorKind::cancelled})); }},
      {"the walk finished anyway", [] { return ScanResult(WalkResult{.tree = sampleHome()}); }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    Harness h;
    const SizeNode older = folder("", 4'000'000, {file("film.mov", 20'000'000)});
    h.cache = cachedHome(older);
    const auto model = h.opened();
    h.scanner = waitingScanner(c.after);
    model->scanHome();
    ASSERT_TRUE(h.main.runNext()) << "the first progress report";
    EXPECT_TRUE(model->progress().has_value());
    model->cancelScan();
    EXPECT_EQ(model->phase(), Phase::scanning) << "until the walk has stopped";
    EXPECT_TRUE(model->isCancelling());
    ASSERT_TRUE(h.main.runUntil([&] { return model->phase() == Phase::ready; }));
    EXPECT_EQ(*model->tree(), older);
    EXPECT_TRUE(model->isFromCache());
    EXPECT_EQ(model->scanProblem(), std::nullopt);
    EXPECT_TRUE(h.saved.empty());
  }
}

TEST(SpaceMapModel, DestroyingTheModelStopsARunningScan) {
  Harness h;
  h.scanner = waitingScanner(
      [] { return ScanResult(std::unexpected(ScanError{.kind = ScanErrorKind::cancelled})); });
  {
    SpaceMapModel model(home, {}, h.services());
    model.scanHome();
    ASSERT_TRUE(h.main.runNext());
  }  // would hang here if the walk were not told to stop
  EXPECT_TRUE(h.saved.empty());
}

TEST(SpaceMapModel, AFailedScanSaysWhyAndKeepsWhatWasShown) {
  Harness h;
  h.cache = cachedHome();
  const auto model = h.opened();
  const ScanError missing{.kind = ScanErrorKind::rootNotFound,
                          .failure = {.operation = "stat", .path = "/media/usb", .code = ENOENT}};
  h.scanner = [&](const ScanRoot&, const ScanProgressHandler&, std::stop_token) {
    return ScanResult(std::unexpected(missing));
  };
  model->scanFolder("/media/usb");
  ASSERT_TRUE(h.main.runUntil([&] { return model->phase() == Phase::ready; }));
  EXPECT_EQ(model->scanProblem(), missing.description());
  EXPECT_EQ(*model->tree(), sampleHome());
  EXPECT_TRUE(h.saved.empty());
}

TEST(SpaceMapModel, TheDeleteListRefusesWithTheRulesSentencesAndKeepsThemBesideIt) {
  Harness h;
  h.cache = cachedHome();
  const auto model = h.opened({.kept = {home + "/keep"}});
  const struct {
    const char* path;
    std::optional<std::string> refusal;
  } picks[] = {
      {"Documents", "It's one of your main folders"},
      {".ssh", "It holds your security keys"},
      {"locked", "macOS keeps it private. Allow whole-disk scan to see and delete it"},
      {"keep", "Tovrin needs it to run"},
      {"film.mov", std::nullopt},
      {"Documents/old.mov", std::nullopt},
      {"Documents/old.mov", std::nullopt},  // already picked: counted once
  };
  std::vector<SpaceMapModel::Refused> expected;
  for (const auto& p : picks) {
    SCOPED_TRACE(p.path);
    const std::string path = home + "/" + p.path;
    const auto refused = model->addToDeleteList(path);
    EXPECT_EQ(refused ? std::optional(refused->reason) : std::nullopt, p.refusal);
    if (p.refusal) expected.push_back({.path = path, .name = p.path, .reason = *p.refusal});
  }
  EXPECT_EQ(model->addToDeleteList(home + "/not/in/the/tree"), std::nullopt);
  EXPECT_EQ(model->refusals(), expected);
  EXPECT_EQ(model->deleteList().count(), 2u);
  EXPECT_EQ(model->deleteList().totalBytes(), 40'000'000u);
  EXPECT_TRUE(model->isInDeleteList(*model->tree()->find(home + "/film.mov")));
  EXPECT_FALSE(model->isInDeleteList(*model->tree()->find(home + "/Documents")));
  EXPECT_FALSE(model->isInDeleteList(SizeNode{.path = home + "/film"})) << "a name's prefix";
  (void)model->addToDeleteList(home + "/code/app");
  EXPECT_TRUE(model->isInDeleteList(*model->tree()->find(home + "/code/app/data.bin")))
      << "through the folder above it";

  (void)model->addToDeleteList(home + "/Documents");
  EXPECT_EQ(model->refusals().size(), expected.size()) << "a second try replaces the first";
  model->dismissRefusal(home + "/.ssh");
  EXPECT_EQ(model->refusals().size(), expected.size() - 1);
  EXPECT_EQ(model->toggleInDeleteList(home + "/film.mov"), std::nullopt);
  EXPECT_FALSE(model->deleteList().contains(home + "/film.mov"));
  model->clearDeleteList();
  EXPECT_TRUE(model->deleteList().isEmpty());
  EXPECT_TRUE(model->refusals().empty());
}

TEST(SpaceMapModel, RemovingReportsEachItemAndTakesWhatWentOutOfTheTreeAndTheCache) {
  Harness h;
  h.cache = cachedHome();
  const auto model = h.opened();
  h.outcome = [](const TrashItem& item) {
    TrashResult result{.path = item.path, .bytes = item.bytes, .outcome = Outcome::moved};
    if (item.path.ends_with("old.mov")) result.outcome = Outcome::alreadyGone;
    if (item.path.ends_with("data.bin")) {
      result.outcome = Outcome::refused;
      result.reason = "It's a shortcut to somewhere else";
    }
    if (item.path.ends_with("node_modules")) {
      result.outcome = Outcome::failed;
      result.reason = "Input/output error";
    }
    return result;
  };
  for (const char* path :
       {"film.mov", "Documents/old.mov", "code/app/data.bin", "code/app/node_modules"}) {
    ASSERT_EQ(model->addToDeleteList(home + "/" + path), std::nullopt) << path;
  }
  model->requestRemoval(CleanAction::trash);
  ASSERT_EQ(model->confirming(), CleanAction::trash);
  EXPECT_EQ(model->confirmationText(),
            std::vector<std::string>{"Move 4 items (78 MB) to the Trash. You can put it back, "
                                     "and emptying the Trash frees the space."});
  h.wallNow = 7000;
  model->confirmRemoval();
  EXPECT_EQ(model->phase(), Phase::removing);
  ASSERT_TRUE(h.main.runUntil([&] { return model->phase() == Phase::ready; }));

  ASSERT_EQ(h.removed.size(), 1u);
  EXPECT_EQ(h.removed[0].second, CleanAction::trash);
  EXPECT_EQ(h.removed[0].first,
            (std::vector<TrashItem>{{home + "/film.mov", 20'000'000},
                                    {home + "/Documents/old.mov", 20'000'000},
                                    {home + "/code/app/data.bin", 8'000'000},
                                    {home + "/code/app/node_modules", 30'000'000}}));
  ASSERT_TRUE(model->lastRemoval().has_value());
  EXPECT_EQ(
      model->lastRemoval()->sentences,
      (std::vector<std::string>{"film.mov is in the Trash; empty the Trash to free the space.",
                                "old.mov was already gone.",
                                "data.bin wasn't deleted. It's a shortcut to somewhere else",
                                "node_modules wasn't deleted. Input/output error"}));
  EXPECT_EQ(model->lastRemoval()->freedBytes, 20'000'000u);

  const SizeNode expected =
      sampleHome().removing({home + "/film.mov", home + "/Documents/old.mov"});
  EXPECT_EQ(*model->tree(), expected);
  EXPECT_EQ(model->tree()->bytes, 60'000'000u);
  EXPECT_NE(model->tree()->find(home + "/code/app/data.bin"), nullptr) << "refused items stay";
  ASSERT_EQ(h.saved.size(), 1u);
  EXPECT_EQ(h.saved[0].tree, expected);
  EXPECT_EQ(h.saved[0].scannedAt, 7000.0);
  EXPECT_EQ(model->scannedAt(), 7000.0);
  EXPECT_EQ(h.scanned.size(), 0u) << "no rescan";
  EXPECT_TRUE(model->deleteList().isEmpty());
}

TEST(SpaceMapModel, AfterRemovalTheFocusMovesUpAndThePlanForgetsWhatWent) {
  Harness h;
  h.cache = cachedHome();
  const auto model = h.opened();
  ASSERT_EQ(model->rebuildPlan().items.size(), 1u);
  EXPECT_EQ(model->rebuildPlan().items[0].path, home + "/code/app/node_modules");
  EXPECT_EQ(model->rebuildPlan().items[0].reason,
            "Packages the project downloaded. Run npm install to get them back.");
  model->addRebuildPlanToDeleteList();
  EXPECT_TRUE(model->deleteList().contains(home + "/code/app/node_modules"));

  model->zoomInto(home + "/code/app/node_modules");
  ASSERT_NE(model->focus(), nullptr);
  EXPECT_EQ(model->focus()->path, home + "/code/app/node_modules");
  EXPECT_EQ(model->breadcrumb().size(), 4u);
  model->requestRemoval(CleanAction::trash);
  model->confirmRemoval();
  ASSERT_TRUE(h.main.runUntil([&] { return model->phase() == Phase::ready; }));
  EXPECT_EQ(model->focus()->path, home + "/code/app");
  EXPECT_TRUE(model->rebuildPlan().isEmpty());
}

TEST(SpaceMapModel, ZoomingShowsTheFocusedFolderOnly) {
  Harness h;
  h.cache = cachedHome();
  const auto model = h.opened();
  EXPECT_EQ(model->focus()->path, home);
  for (const char* notAFolder : {"film.mov", "locked", "nowhere"}) {
    model->zoomInto(home + "/" + notAFolder);
    EXPECT_EQ(model->focus()->path, home) << notAFolder;
  }
  model->zoomInto(home + "/Documents");
  std::vector<std::string> crumbs;
  for (const SizeNode* node : model->breadcrumb()) crumbs.push_back(node->path);
  EXPECT_EQ(crumbs, (std::vector<std::string>{home, home + "/Documents"}));
  EXPECT_EQ(model->categoryTotals(),
            (std::vector<CategoryTotal>{{StorageCategory::yourFiles, 30'000'000}}));
  ASSERT_EQ(model->biggestFiles(5).size(), 1u);
  EXPECT_EQ(model->biggestFiles(5)[0].name, "old.mov");
  for (const SunburstArc& arc : model->arcs(3, 1.0)) {
    EXPECT_TRUE(pathIsWithin(arc.path, home + "/Documents")) << arc.path;
  }
  model->zoomOut();
  EXPECT_EQ(model->focus()->path, home);
  model->zoomOut();
  EXPECT_EQ(model->focus()->path, home) << "the root is as far out as it goes";
}

TEST(SpaceMapModel, DeletingForGoodIsOfferedOnlyWhereTheCatalogAllowsIt) {
  Harness h;
  h.cache = cachedHome();
  const auto model = h.opened();
  h.outcome = [](const TrashItem& item) {
    return TrashResult{.path = item.path, .bytes = item.bytes, .outcome = Outcome::deleted};
  };
  (void)model->addToDeleteList(home + "/film.mov");
  EXPECT_FALSE(model->canDeleteForGood());
  model->requestRemoval(CleanAction::delete_);
  EXPECT_EQ(model->confirming(), std::nullopt);
  model->removeFromDeleteList(home + "/film.mov");

  (void)model->addToDeleteList(home + "/.cache/pip");
  ASSERT_TRUE(model->canDeleteForGood());
  model->requestRemoval(CleanAction::delete_);
  EXPECT_EQ(model->confirmationText(),
            std::vector<std::string>{"Delete 1 item (3 MB) for good. This can't be undone."});
  model->confirmRemoval();
  ASSERT_TRUE(h.main.runUntil([&] { return model->phase() == Phase::ready; }));
  ASSERT_EQ(h.removed.size(), 1u);
  EXPECT_EQ(h.removed[0].second, CleanAction::delete_);
  EXPECT_EQ(model->lastRemoval()->sentences, std::vector<std::string>{"pip was deleted for good."});
  EXPECT_EQ(model->tree()->find(home + "/.cache/pip"), nullptr);
}

TEST(SpaceMapModel, TheConfirmationCarriesTheItemsWarnings) {
  Harness h;
  h.cache = cachedHome();
  const auto model = h.opened();
  (void)model->addToDeleteList(home + "/code/app");
  model->requestRemoval(CleanAction::trash);
  EXPECT_EQ(model->confirmationText(),
            (std::vector<std::string>{
                "Move 1 item (40 MB) to the Trash. You can put it back, and emptying the Trash "
                "frees the space.",
                "Deleting this JavaScript project deletes its code too, not only the parts that "
                "can be rebuilt."}));
  model->cancelRemoval();
  EXPECT_EQ(model->confirming(), std::nullopt);
  EXPECT_TRUE(model->confirmationText().empty());
}

TEST(SpaceMapModel, LockedFoldersAreReportedInWords) {
  const struct {
    FullDiskAccess::State access;
    const char* notice;
  } cases[] = {
      {FullDiskAccess::State::denied,
       "1 folder is private, so what's inside it isn't counted. Allow whole-disk scan to see "
       "inside."},
      {FullDiskAccess::State::unknown, "1 folder is private, so what's inside it isn't counted."},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(rawValue(c.access));
    Harness h;
    h.cache = cachedHome();
    h.cache->access = c.access;
    const auto model = h.opened();
    EXPECT_EQ(model->lockedFolders(), 1);
    EXPECT_EQ(model->accessNotice(), c.notice);
    EXPECT_EQ(model->explanation(home + "/locked"),
              "macOS keeps this folder private. Allow whole-disk scan to see inside");
  }
}

}  // namespace

namespace testing {

using SpaceMapModelEnums = ::testing::Types<SpaceMapModel::Phase>;
INSTANTIATE_TYPED_TEST_SUITE_P(SpaceMapModel, EnumTextRoundTrip, SpaceMapModelEnums);

}  // namespace testing
}  // namespace pellwin
