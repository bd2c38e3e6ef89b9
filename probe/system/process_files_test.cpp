#include "probe/system/process_files.h"

#include <gtest/gtest.h>

#include <string>

namespace pellwin {
namespace {

using namespace std::string_literals;

TEST(ParseProcessStat, CountsFieldsFromTheLastParenthesis) {
  const struct {
    const char* why;
    std::string text;
    std::string_view comm;
    std::uint64_t user, system, childUser, childSystem, start;
  } cases[] = {
      {"plain", "42 (bash) S 1 42 42 34816 42 4194560 1 2 3 4 150 50 31 9 20 0 1 0 5000 0\n",
       "bash", 150, 50, 31, 9, 5000},
      {"comm with spaces and \") (\"",
       "42 (a) (b c) S 1 42 42 0 42 4194560 1 2 3 4 7 8 0 0 20 0 1 0 9 0\n", "a) (b c", 7, 8, 0, 0,
       9},
      {"no line end", "42 (x) R 1 1 1 0 1 0 0 0 0 0 1 2 0 0 20 0 1 0 3", "x", 1, 2, 0, 0, 3},
      {"truncated after the state", "42 (x) S", "x", 0, 0, 0, 0, 0},
      {"a number that overflows",
       "42 (x) S 1 1 1 0 1 0 0 0 0 0 99999999999999999999999 2 0 0 20 0 1 0 3", "x", 0, 2, 0, 0, 3},
      {"empty comm", "42 () S 1 1 1 0 1 0 0 0 0 0 5 6 4 3 20 0 1 0 3", "", 5, 6, 4, 3, 3},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    const auto stat = parseProcessStat(c.text);
    ASSERT_TRUE(stat.has_value());
    EXPECT_EQ(stat->comm, c.comm);
    EXPECT_EQ(stat->userTicks, c.user);
    EXPECT_EQ(stat->systemTicks, c.system);
    EXPECT_EQ(stat->childUserTicks, c.childUser);
    EXPECT_EQ(stat->childSystemTicks, c.childSystem);
    EXPECT_EQ(stat->startTicks, c.start);
  }
  const auto stat = parseProcessStat("7 (kworker/0:1-events) I 2 0 0 0 -1 69238880 0");
  ASSERT_TRUE(stat.has_value());
  EXPECT_EQ(stat->parent, 2);
  EXPECT_EQ(stat->flags & kernelThreadFlag, kernelThreadFlag);
  for (const char* broken : {"", "42 no parentheses S 1", "42 )x( S"}) {
    SCOPED_TRACE(broken);
    EXPECT_FALSE(parseProcessStat(broken).has_value());
  }
}

TEST(ParseProcessStatus, ReadsMemoryThreadsAndSwitchesAndToleratesDamage) {
  const auto status = parseProcessStatus(
      "Name:\tfirefox\nVmRSS:\t  416000 kB\nRssAnon:\t  190000 kB\nVmSwap:\t    2048 kB\n"
      "Threads:\t87\nvoluntary_ctxt_switches:\t1234\nnonvoluntary_ctxt_switches:\t56");
  EXPECT_EQ(status, (ProcessStatus{.rssAnonKB = 190000,
                                   .vmSwapKB = 2048,
                                   .threads = 87,
                                   .voluntarySwitches = 1234,
                                   .involuntarySwitches = 56}));
  // A kernel thread has no memory lines; a damaged value reads as 0.
  EXPECT_EQ(parseProcessStatus("Name:\tkthreadd\nRssAnon:\t12x kB\nThreads:\t1\n"),
            (ProcessStatus{.threads = 1}));
  EXPECT_EQ(parseContextSwitches("Name:\tt\nvoluntary_ctxt_switches:\t10\n"
                                 "nonvoluntary_ctxt_switches:\t5\n"),
            15u);
  EXPECT_EQ(parseContextSwitches("Name:\tt\n"), 0u);
}

TEST(ParseProcessIO, TakesStorageBytesNotCharacters) {
  EXPECT_EQ(parseProcessIO("rchar: 900\nwchar: 800\nread_bytes: 4096\nwrite_bytes: 8192\n"
                           "cancelled_write_bytes: 4096\n"),
            (ProcessIO{.readBytes = 4096, .writeBytes = 8192}));
  EXPECT_EQ(parseProcessIO("read_bytes: -1\n"), ProcessIO{});
}

TEST(ParseUptimeTicks, GivesTicksOnStatsClock) {
  const struct {
    const char* why;
    std::string_view text;
    std::optional<std::uint64_t> ticks;
  } cases[] = {
      {"two decimals", "350735.47 234388.90\n", 35073547},
      {"no fraction", "12 3", 1200},
      {"a finer fraction", "1.0051 0", 100},
      {"not a number", "x.5 1", std::nullopt},
      {"empty", "", std::nullopt},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    EXPECT_EQ(parseUptimeTicks(c.text, 100), c.ticks);
  }
}

TEST(ParseCommandLine, SplitsAtNulAndKeepsEmptyArguments) {
  EXPECT_EQ(parseCommandLine("python3\0-m\0\0http.server\0"s),
            (std::vector<std::string>{"python3", "-m", "", "http.server"}));
  // A program that rewrote its title (setproctitle) leaves one string without NULs.
  EXPECT_EQ(parseCommandLine("postgres: writer process   "s),
            (std::vector<std::string>{"postgres: writer process   "}));
  EXPECT_TRUE(parseCommandLine("").empty());
}

}  // namespace
}  // namespace pellwin
