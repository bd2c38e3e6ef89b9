#include "app/commands/storage_check_command.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <regex>
#include <sstream>

#include "core/base/format.h"
#include "probe/files/disk_scanner.h"
#include "probe/files/scan_cache.h"
#include "testing/scratch_folder.h"
#include "testing/trash_test_support.h"
#include "testing/walk_test_support.h"

namespace pellwin {
namespace {

namespace fs = std::filesystem;
using testing::allocateFile;

TEST(StorageCheck, ParsesTheArgumentsAfterTheSwitch) {
  using Args = std::vector<std::string>;
  const struct {
    const char* why;
    Args arguments;
    StorageCheckOptions expected;
  } cases[] = {
      {"nothing: home, ten items", {}, {}},
      {"path, top and rebuild in any order",
       {"--top", "5", "/d", "--rebuild"},
       {.path = "/d", .top = 5, .rebuild = true}},
      {"a leading plus", {"--top", "+3", "x"}, {.path = "x", .top = 3}},
      {"the history file is the entry's", {"/a", "--history-db", "/h.sqlite"}, {.path = "/a"}},
      {"a top value is not the path", {"--top", "7"}, {.top = 7}},
      {"json", {"--json", "/d"}, {.path = "/d", .json = true}},
      {"self-tests beat everything, in their order",
       {"/d", "--clean-plan", "--flow-test", "--trash-test"},
       {.mode = StorageCheckMode::trashTest}},
      {"flow test before clean plan",
       {"--clean-plan", "--flow-test"},
       {.mode = StorageCheckMode::flowTest}},
      {"clean plan", {"--clean-plan"}, {.mode = StorageCheckMode::cleanPlan}},
      {"help", {"/d", "--help"}, {.mode = StorageCheckMode::help}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    const auto parsed = parseStorageCheck(c.arguments);
    ASSERT_TRUE(parsed.has_value()) << parsed.error();
    EXPECT_EQ(*parsed, c.expected);
  }
  const struct {
    const char* why;
    Args arguments;
    std::string error;
  } bad[] = {
      {"top without a number", {"/d", "--top"}, "--top needs a number"},
      {"top with words", {"--top", "five"}, "--top needs a whole number, not \"five\""},
      {"negative top", {"--top", "-1"}, "--top needs a whole number, not \"-1\""},
      {"top with a tail", {"--top", "5x"}, "--top needs a whole number, not \"5x\""},
      {"unknown option", {"--fast"}, "--check-storage doesn't know the option --fast"},
      {"a second folder", {"/a", "/b"}, "--check-storage scans one folder; leave out /b"},
      {"json with a plan",
       {"--json", "--rebuild"},
       "--json prints the scan alone; leave out --rebuild"},
  };
  for (const auto& c : bad) {
    SCOPED_TRACE(c.why);
    const auto parsed = parseStorageCheck(c.arguments);
    ASSERT_FALSE(parsed.has_value());
    EXPECT_EQ(parsed.error(), c.error);
  }
}

struct Outcome {
  int status = 0;
  std::string out;
  std::string err;
};

Outcome run(const std::vector<std::string>& arguments, const std::string& home) {
  std::ostringstream out;
  std::ostringstream err;
  const Environment environment{.home = home, .xdgDataHome = home + "/.local/share"};
  const int status = runStorageCheck(arguments, environment, out, err);
  return {status, out.str(), err.str()};
}

// Timings differ from run to run.
std::string withoutTimes(std::string text) {
  text = std::regex_replace(text, std::regex(R"( in [0-9]+\.[0-9] s,)"), " in T s,");
  return std::regex_replace(text, std::regex(R"(plan in [0-9]+\.[0-9]{3} s:)"), "plan in T s:");
}

// A home with developer projects of several kinds, a large model and a disk mounted inside.
struct ProjectsHome {
  testing::ScratchFolder scratch;
  std::string home = fs::canonical(scratch.path()).string();
  std::string code = home + "/code";

  ProjectsHome() {
    allocateFile(code + "/rusty/Cargo.toml", 100);
    allocateFile(code + "/rusty/target/debug/app", 6'000'000);
    allocateFile(code + "/web/package.json", 100);
    allocateFile(code + "/web/yarn.lock", 100);
    allocateFile(code + "/web/node_modules/react/index.js", 7'000'000);
    allocateFile(code + "/py/requirements.txt", 100);
    allocateFile(code + "/py/.venv/pyvenv.cfg", 100);
    allocateFile(code + "/py/.venv/lib/site.so", 8'000'000);
    allocateFile(code + "/py/model.gguf", 50'000'000);
    fs::create_hard_link(code + "/rusty/target/debug/app", code + "/rusty/app-copy");
  }
};

TEST(StorageCheck, ScansAFolderAndPrintsItsBiggestItemsAndRebuildPlan) {
  ProjectsHome fixture;
  testing::ScratchMount mount(fixture.code + "/mnt");
  if (mount.mounted()) allocateFile(fixture.code + "/mnt/elsewhere", 9'000'000);

  const Outcome result = run({fixture.code, "--top", "5", "--rebuild"}, fixture.home);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, "");  // no ticker when standard error is not a terminal
  const auto walked = DiskScanner(fixture.home).scan(fixture.code, std::nullopt, {});
  ASSERT_TRUE(walked.has_value());
  EXPECT_EQ(walked->tree.bytes, testing::duBytes(fixture.code));
  std::size_t nodes = 0;
  walked->tree.forEach([&](const SizeNode&) { ++nodes; });

  const std::string& c = fixture.code;
  EXPECT_EQ(withoutTimes(result.out),
            "scanned " + c + " in T s, " + Format::disk(walked->tree.bytes) + ", " +
                std::to_string(nodes) + " nodes, 0 locked\n" +
                Format::disk(walked->tree.children[0].bytes) + "\t" + c + "/py\n" +
                Format::disk(walked->tree.children[1].bytes) + "\t" + c + "/web\n" +
                Format::disk(walked->tree.children[2].bytes) + "\t" + c +
                "/rusty\n"
                "rebuild plan in T s: 71 MB in 3 folders across 3 projects, nothing was changed\n"
                "project\tPython project\t" +
                c + "/py\n" + Format::disk(walked->tree.find(c + "/py/.venv")->bytes) +
                "\tA Python environment. Reinstall the project's packages to get it back."
                "\tpy/.venv\n"
                "project\tJavaScript project\t" +
                c + "/web\n" + Format::disk(walked->tree.find(c + "/web/node_modules")->bytes) +
                "\tPackages the project downloaded. Run yarn install to get them back."
                "\tweb/node_modules\n"
                "project\tRust project\t" +
                c + "/rusty\n" + Format::disk(walked->tree.find(c + "/rusty/target")->bytes) +
                "\tRust build output. cargo build makes it again.\trusty/target\n"
                "model\t50 MB\t" +
                c + "/py/model.gguf\n");
}

TEST(StorageCheck, PrintsTheScanAsOneCachedScanForScripts) {
  ProjectsHome fixture;
  const Outcome result = run({"--json", fixture.code}, fixture.home);
  EXPECT_EQ(result.status, 0);
  ASSERT_TRUE(result.out.ends_with("}\n"));
  EXPECT_EQ(std::count(result.out.begin(), result.out.end(), '\n'), 1);
  const auto scan = CachedScan::decode(result.out);
  ASSERT_TRUE(scan.has_value());
  EXPECT_EQ(scan->root, fixture.code);
  EXPECT_EQ(scan->access, FullDiskAccess::State::unknown);
  const auto walked = DiskScanner(fixture.home).scan(fixture.code, std::nullopt, {});
  EXPECT_EQ(scan->tree, walked->tree);
}

TEST(StorageCheck, KeepsEveryPrintedLineWholeWhateverTheNames) {
  testing::ScratchFolder scratch;
  const std::string root = fs::canonical(scratch.path()).string();
  allocateFile(root + "/two\nlines\xff.bin", 2'000'000);
  allocateFile(root + "/plain", 3'000'000);
  const Outcome result = run({root}, root);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(std::count(result.out.begin(), result.out.end(), '\n'), 3);
  EXPECT_NE(result.out.find(root + "/two?lines?.bin\n"), std::string::npos) << result.out;
}

TEST(StorageCheck, ScansHomeByDefaultAndResolvesRelativeFolders) {
  EXPECT_EQ(StorageCheck::folderToScan(std::nullopt, "/home/ann"), "/home/ann");
  EXPECT_EQ(StorageCheck::folderToScan("/a/b/../c//", "/h"), "/a/c");
  EXPECT_EQ(StorageCheck::folderToScan("/", "/h"), "/");
  EXPECT_EQ(StorageCheck::folderToScan("rel", "/h"), (fs::current_path() / "rel").string());
}

TEST(StorageCheck, SaysWhyAScanFailedAndReturnsOne) {
  const Outcome result = run({"/nonexistent/tovrin"}, "/h");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "scan failed: No such file or directory: /nonexistent/tovrin\n");
  const Outcome usage = run({"--top"}, "/h");
  EXPECT_EQ(usage.status, 2);
  EXPECT_EQ(usage.err, "--top needs a number\n");
}

TEST(StorageCheck, AFolderThatCanBeListedButNotEnteredIsLockedNotEmpty) {
  testing::ScratchFolder scratch;
  scratch.write("noexec/file", std::string(4096, 'x'));
  const std::string root = scratch.path().string();
  ::chmod(root.c_str(), 0755);
  ::chmod((scratch / "noexec").c_str(), 0744);  // read without execute
  // Root ignores permissions: the scan runs as an ordinary user.
  const std::string summary = testing::runUnprivileged([&] {
    const Outcome result = run({root}, root);
    return result.out.substr(0, result.out.find('\n'));
  });
  ::chmod((scratch / "noexec").c_str(), 0755);
  EXPECT_TRUE(summary.ends_with(", 2 nodes, 1 locked")) << summary;
}

TEST(StorageCheck, AFileIsNoFolderToScan) {
  testing::ScratchFolder scratch;
  const std::string file = scratch.write("notes.txt", "x").string();
  const Outcome result = run({file}, scratch.path().string());
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "--check-storage scans a folder, and " + file + " isn't one\n");
}

}  // namespace
}  // namespace pellwin
