#include "probe/files/scan_cache.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>
#include <vector>

#include "probe/files/size_node_json.h"
#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

namespace fs = std::filesystem;

SizeNode sampleTree() {
  return {.name = "ann",
          .path = "/home/ann",
          .bytes = 18'446'744'073'709'551'615ull,
          .isDirectory = true,
          .children = {{.name = "code",
                        .path = "/home/ann/code",
                        .bytes = 9'000'000,
                        .isDirectory = true,
                        .children = {{.name = "big.gguf",
                                      .path = "/home/ann/code/big.gguf",
                                      .bytes = 8'000'000,
                                      .lastUsed = 1'700'000'000.25}},
                        .restBytes = 999'999,
                        .restCount = 3,
                        .lastUsed = 1'600'000'000.0,
                        .category = StorageCategory::developer,
                        .markers = std::vector<std::string>{"Cargo.toml", "go.mod"}},
                       {.name = "private",
                        .path = "/home/ann/private",
                        .isDirectory = true,
                        .isLocked = true,
                        .category = StorageCategory::system}},
          .restBytes = 12,
          .restCount = 1,
          .category = StorageCategory::other};
}

CachedScan sampleScan() {
  return {.tree = sampleTree(),
          .scannedAt = SizeNodeJSON::referenceDateOffset + 12.5,
          .root = "/home/ann",
          .access = FullDiskAccess::State::denied};
}

TEST(ScanCache, RoundTripsEveryFieldInItsStoredFormat) {
  const CachedScan scan = sampleScan();
  const std::string text = scan.encode();
  EXPECT_EQ(CachedScan::decode(text), scan);

  const auto json = nlohmann::json::parse(text);
  EXPECT_EQ(json["version"], 2);
  EXPECT_EQ(json["scannedAt"], 12.5);  // seconds since 1 January 2001
  EXPECT_EQ(json["access"], "denied");
  EXPECT_EQ(json["tree"]["children"][0]["category"], "developer");
  EXPECT_EQ(json["tree"]["children"][0]["lastUsed"], 1'600'000'000.0 - 978'307'200.0);
  EXPECT_FALSE(json["tree"].contains("lastUsed"));
  EXPECT_FALSE(json["tree"].contains("markers"));
}

TEST(ScanCache, DecodesAFileWrittenByTheOriginalEncoder) {
  const std::string text = R"({"root":"\/Users\/ann","access":"granted","version":2,
    "scannedAt":700000000.5,"tree":{"restCount":0,"children":[],"isLocked":false,
    "name":"ann","path":"\/Users\/ann","bytes":4096,"isDirectory":true,"restBytes":0,
    "category":"other","someLaterKey":{"x":[1,{"y":2}]}}})";
  const auto scan = CachedScan::decode(text);
  ASSERT_TRUE(scan.has_value());
  EXPECT_EQ(scan->root, "/Users/ann");
  EXPECT_EQ(scan->tree.bytes, 4096u);
  EXPECT_FALSE(scan->tree.lastUsed.has_value());
  EXPECT_FALSE(scan->tree.markers.has_value());
  EXPECT_DOUBLE_EQ(scan->scannedAt, 978'307'200.0 + 700'000'000.5);
}

TEST(ScanCache, RejectsWhatItCannotTrust) {
  const std::string good = sampleScan().encode();
  auto replaced = [&](const std::string& from, const std::string& to) {
    std::string text = good;
    const auto at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return text.replace(at, from.size(), to);
  };
  const struct {
    const char* why;
    std::string text;
  } cases[] = {
      {"version 1", replaced("\"version\":2", "\"version\":1")},
      {"version 3", replaced("\"version\":2", "\"version\":3")},
      {"no restCount", replaced("\"restCount\":3,", "")},
      {"negative bytes", replaced("\"bytes\":9000000", "\"bytes\":-9000000")},
      {"fractional bytes", replaced("\"bytes\":9000000", "\"bytes\":9000000.5")},
      {"unknown category", replaced("\"developer\"", "\"games\"")},
      {"unknown access", replaced("\"denied\"", "\"maybe\"")},
      {"marker that is not text", replaced("\"go.mod\"", "7")},
      {"children that are not an array", replaced("\"children\":[]", "\"children\":{}")},
      {"no root", replaced(",\"root\":\"/home/ann\"", "")},
      {"cut short", good.substr(0, good.size() / 2)},
      {"two values", good + good},
      {"not JSON", "space map"},
      {"empty", ""},
      {"bad hex", replaced("\"name\":\"ann\"", "\"name\":\"ann\",\"nameBytes\":\"zz\"")},
      {"a file larger than its folder holds", replaced("\"bytes\":8000000", "\"bytes\":8000002")},
      {"a remainder larger than its folder",
       replaced("\"restBytes\":999999", "\"restBytes\":1000001")},
      {"children summing past 64 bits",
       replaced("\"bytes\":9000000", "\"bytes\":18446744073709551615")},
      {"a file with children", replaced("\"children\":[]",
                                        "\"children\":[{\"name\":\"x\",\"path\":\"x\","
                                        "\"bytes\":1,\"isDirectory\":false,\"children\":[],"
                                        "\"restBytes\":0,\"restCount\":0,\"isLocked\":false,"
                                        "\"category\":\"other\"}]")},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(CachedScan::decode(c.text), std::nullopt);
  }
}

TEST(ScanCache, KeepsNamesThatAreNotUTF8ExactlyAndTheFileValid) {
  CachedScan scan = sampleScan();
  const std::string odd = std::string("caf\xe9\nline\x01\xff");
  scan.tree.children[0].name = odd;
  scan.tree.children[0].path = "/home/ann/" + odd;
  scan.tree.children[0].children[0].path = "/home/ann/" + odd + "/big.gguf";
  scan.root = "/home/\xfe";
  const std::string text = scan.encode();
  const auto json = nlohmann::json::parse(text);  // valid JSON, valid UTF-8
  EXPECT_EQ(json["tree"]["children"][0]["name"], "caf\xef\xbf\xbd\nline\x01\xef\xbf\xbd");
  EXPECT_EQ(text.find('\n'), std::string::npos);
  EXPECT_EQ(CachedScan::decode(text), scan);
}

TEST(ScanCache, RoundTripsATreeDeeperThanAnyStack) {
  CachedScan scan = sampleScan();
  SizeNode* at = &scan.tree;
  for (int i = 0; i < 20'000; ++i) {
    at->children.push_back({.name = "d", .path = "/" + std::to_string(i), .isDirectory = true});
    at = &at->children.back();
  }
  EXPECT_EQ(CachedScan::decode(scan.encode()), scan);
}

TEST(ScanCache, SavesAtomicallyAndLoadsBack) {
  testing::ScratchFolder scratch;
  const ScanCache cache(ScanCache::defaultPath((scratch.path() / "data/Tovrin").string()));
  EXPECT_EQ(cache.load(), std::nullopt);

  CachedScan first = sampleScan();
  ASSERT_TRUE(cache.save(first).has_value());
  CachedScan second = first;
  second.tree.restBytes = 42;  // a tree whose sizes still add up
  ASSERT_TRUE(cache.save(second).has_value());
  EXPECT_EQ(cache.load(), second);
  std::vector<std::string> files;
  for (const auto& entry : fs::directory_iterator(scratch.path() / "data/Tovrin")) {
    files.push_back(entry.path().filename().string());
  }
  EXPECT_EQ(files, std::vector<std::string>{"space-map.json"});

  scratch.write("data/Tovrin/space-map.json", "{\"version\":2");
  EXPECT_EQ(cache.load(), std::nullopt);
}

// 2,000 folders deep with 255-byte names: half a megabyte of names, half a gigabyte of paths.
TEST(ScanCache, KeepsTheOldFileRatherThanWriteATreeWhosePathsRunToGigabytes) {
  testing::ScratchFolder scratch;
  const ScanCache cache((scratch.path() / "space-map.json").string());
  ASSERT_TRUE(cache.save(sampleScan()).has_value());

  CachedScan deep{.tree = {.name = "/", .path = "/", .isDirectory = true}, .root = "/"};
  SizeNode* at = &deep.tree;
  for (int i = 0; i < 2'000; ++i) {
    at->children.push_back({.name = std::string(255, 'd'),
                            .path = NodePath::inFolder(at->path, std::string(255, 'd')),
                            .isDirectory = true});
    at = &at->children.back();
  }
  EXPECT_GT(deep.textBytesAtLeast(), ScanCache::largestFile);
  const auto saved = cache.save(deep);
  ASSERT_FALSE(saved.has_value());
  EXPECT_EQ(saved.error().code, EFBIG);
  EXPECT_EQ(cache.load(), sampleScan());
  EXPECT_EQ(std::distance(fs::directory_iterator(scratch.path()), fs::directory_iterator()), 1);
}

TEST(ScanCache, ReportsAFolderItCannotCreate) {
  testing::ScratchFolder scratch;
  scratch.write("file", "x");
  const ScanCache cache((scratch.path() / "file/Tovrin/space-map.json").string());
  const auto saved = cache.save(sampleScan());
  ASSERT_FALSE(saved.has_value());
  EXPECT_EQ(sentence(saved.error(), ErrorWording::reasonAndStep),
            "Not a directory (creating " + (scratch.path() / "file/Tovrin").string() + ")");
}

TEST(SizeNodeJSON, ReadsANodeWithoutOptionalKeysAndRejectsOneWithoutRestCount) {
  const std::string plain =
      R"({"name":"a","path":"/a","bytes":1,"isDirectory":false,"children":[],)"
      R"("restBytes":0,"restCount":0,"isLocked":false,"category":"other"})";
  const auto node = SizeNodeJSON::decode(plain);
  ASSERT_TRUE(node.has_value());
  EXPECT_FALSE(node->lastUsed.has_value());
  EXPECT_FALSE(node->markers.has_value());
  std::string missing = plain;
  missing.erase(missing.find("\"restCount\":0,"), 14);
  EXPECT_EQ(SizeNodeJSON::decode(missing), std::nullopt);
  EXPECT_EQ(SizeNodeJSON::decode(SizeNodeJSON::encode(sampleTree())), sampleTree());
}

// What the version before paths were shared wrote, byte for byte, for a small home: a name that
// is not UTF-8 (with its exact bytes beside it), markers, a remainder.
constexpr std::string_view kEarlierFile =
    R"({"version":2,"tree":{"name":"ann","path":"/home/ann","bytes":4722688,"isDirectory":true,)"
    R"("children":[{"name":"Music","path":"/home/ann/Music","bytes":3514368,"isDirectory":true,)"
    R"("children":[{"name":"song.flac","path":"/home/ann/Music/song.flac","bytes":2002944,)"
    R"("isDirectory":false,"children":[],"restBytes":0,"restCount":0,"isLocked":false,)"
    R"("lastUsed":725857445.0,"category":"yourFiles"},{"name":"old","path":"/home/ann/Music/old",)"
    R"("bytes":1507328,"isDirectory":true,"children":[{"name":"caf)"
    "\xef\xbf\xbd"
    R"(.wav","nameBytes":"636166e92e776176","path":"/home/ann/Music/old/caf)"
    "\xef\xbf\xbd"
    R"(.wav","pathBytes":"2f686f6d652f616e6e2f4d757369632f6f6c642f636166e92e776176",)"
    R"("bytes":1503232,"isDirectory":false,"children":[],"restBytes":0,"restCount":0,)"
    R"("isLocked":false,"lastUsed":725857445.0,"category":"yourFiles"}],"restBytes":0,)"
    R"("restCount":0,"isLocked":false,"lastUsed":725857445.0,"category":"yourFiles"}],)"
    R"("restBytes":0,"restCount":0,"isLocked":false,"lastUsed":725857445.0,"category":"yourFiles"},)"
    R"({"name":"code","path":"/home/ann/code","bytes":1204224,"isDirectory":true,"children":[)"
    R"({"name":"blob.bin","path":"/home/ann/code/blob.bin","bytes":1200128,"isDirectory":false,)"
    R"("children":[],"restBytes":0,"restCount":0,"isLocked":false,"lastUsed":725857445.0,)"
    R"("category":"developer"}],"restBytes":0,"restCount":1,"isLocked":false,)"
    R"("lastUsed":725857445.0,"category":"developer","markers":["package.json"]}],"restBytes":0,)"
    R"("restCount":0,"isLocked":false,"lastUsed":725857445.0,"category":"other"},)"
    R"("scannedAt":817131263.7961686,"root":"/home/ann","access":"unknown"})";

TEST(ScanCache, ReadsTheEarlierFileSharingEachPathWithItsFolderAndWritesItBackAsItWas) {
  const auto scan = CachedScan::decode(kEarlierFile);
  ASSERT_TRUE(scan.has_value());
  EXPECT_EQ(scan->encode(), kEarlierFile);
  std::size_t nodes = 0;
  std::vector<std::pair<const SizeNode*, const SizeNode*>> pending{{&scan->tree, nullptr}};
  while (!pending.empty()) {
    const auto [node, parent] = pending.back();
    pending.pop_back();
    ++nodes;
    SCOPED_TRACE(node->path.str());
    if (parent != nullptr) {
      EXPECT_TRUE(node->path.isInFolder(parent->path));
    }
    for (const SizeNode& child : node->children) pending.emplace_back(&child, node);
  }
  EXPECT_EQ(nodes, 7u);
  const SizeNode* odd = scan->tree.find("/home/ann/Music/old/caf\xe9.wav");
  ASSERT_NE(odd, nullptr);
  EXPECT_EQ(odd->name, "caf\xe9.wav");
}

TEST(ScanCache, KeepsAPathThatIsNotItsFoldersPathAndANameAsWritten) {
  const std::string json =
      R"({"name":"r","path":"/r","bytes":9,"isDirectory":true,"children":[)"
      R"({"name":"x","path":"/elsewhere/x","bytes":9,"isDirectory":false,"children":[],)"
      R"("restBytes":0,"restCount":0,"isLocked":false,"category":"other"}],)"
      R"("restBytes":0,"restCount":0,"isLocked":false,"category":"other"})";
  const auto tree = SizeNodeJSON::decode(json);
  ASSERT_TRUE(tree.has_value());
  ASSERT_EQ(tree->children.size(), 1u);
  EXPECT_EQ(tree->children[0].path, "/elsewhere/x");
  EXPECT_FALSE(tree->children[0].path.isInFolder(tree->path));
  EXPECT_EQ(SizeNodeJSON::encode(*tree), json);
}

}  // namespace
}  // namespace pellwin
