#include "app/commands/check_command.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "app/commands/check_json.h"

namespace pellwin {
namespace {

constexpr std::uint64_t kGiB = 1ULL << 30;

Snapshot machine() {
  return Snapshot{
      .timestamp = 1'700'000'000,
      .interval = 2,
      .memory = {.totalBytes = 16 * kGiB,
                 .usedBytes = 9'663'676'416,
                 .compressedBytes = 512 * 1024 * 1024,
                 .swapUsedBytes = 0,
                 .swapInBytesPerSecond = 0,
                 .swapOutBytesPerSecond = 1'500'000,
                 .pressureLevel = 2},
      .cpu = {.busyFraction = 0.274, .coreCount = 4},
      .disk = {.freeBytes = 120'400'000'000,
               .totalBytes = 494'380'000'000,
               .readBytesPerSecond = 12'000,
               .writeBytesPerSecond = 3'400'000},
      .thermal = ThermalLevel::fair,
      .lowPowerMode = false,
      .uptime = 3 * 86400 + 5000,
      .apps = {AppUsage{.id = "pid:7",
                        .name = "yes",
                        .detail = "yes",
                        .processCount = 1,
                        .footprintBytes = 1 * 1024 * 1024,
                        .cpuCores = 0.998},
               AppUsage{.id = "app:firefox",
                        .name = "Firefox",
                        .processCount = 12,
                        .footprintBytes = 3 * kGiB + kGiB / 4,
                        .cpuCores = 0.31}},
      .systemRemainderBytes = 800 * 1024 * 1024,
  };
}

const std::map<Resource, Health> kHealth = {{Resource::memory, Health::strain},
                                            {Resource::cpu, Health::ok},
                                            {Resource::diskSpace, Health::ok},
                                            {Resource::diskActivity, Health::ok},
                                            {Resource::heat, Health::problem}};

TEST(CheckCommand, PrintsEveryLineInItsShape) {
  const std::vector<std::string> expected = {
      "memory  used 9.0 GB of 16 GB · compressed 512 MB · spilled to disk 0 MB · moving in 0 "
      "KB/s out 2 MB/s · pressure 2",
      "cpu     27% busy · 4 cores",
      "disk    120 GB free of 494 GB · read 12 KB/s · write 3 MB/s",
      "heat    Warm · Low Power Mode off · up 3 days",
      "apps    2 apps from 13 readable processes · macOS system remainder 800 MB",
      "  1 MB      25%   1    yes · yes",
      "  3.2 GB    8%    12   Firefox",
      "health  Memory Getting busy · CPU Healthy · Disk space Healthy · Disk activity Healthy · "
      "Heat Slowing your Mac",
  };
  EXPECT_EQ(CheckCommand::lines(machine(), kHealth), expected);
}

TEST(CheckCommand, NamesWhatCouldNotBeReadAndWhatWasNotJudged) {
  Snapshot s = machine();
  s.unavailable = {Resource::memory, Resource::heat, Resource::cpu, Resource::diskActivity};
  s.lowPowerMode = true;
  const auto lines = CheckCommand::lines(s, {{Resource::diskSpace, Health::ok}});
  ASSERT_EQ(lines.size(), 9u);
  EXPECT_EQ(lines[3], "heat    Warm · Low Power Mode on · up 3 days");
  EXPECT_EQ(lines[4], "unavailable: cpu, diskActivity, heat, memory");
  EXPECT_EQ(lines[5].substr(0, 8), "apps    ");
  EXPECT_EQ(lines.back(),
            "health  Memory ? · CPU ? · Disk space Healthy · Disk activity ? · Heat ?");
}

TEST(CheckCommand, PadsAndCutsTheColumnsButNeverTheNames) {
  Snapshot s = machine();
  s.cpu.coreCount = 0;  // treated as one core
  s.apps = {AppUsage{.id = "proc:huge",
                     .name = "a-very-long-process-name-that-is-never-cut",
                     .detail = std::string(200, 'x'),
                     .processCount = 123456,
                     .footprintBytes = 20'000 * kGiB,
                     .cpuCores = 123.4}};
  const auto lines = CheckCommand::lines(s, kHealth);
  EXPECT_EQ(lines[5], "  20000.0 G 12340 1234 a-very-long-process-name-that-is-never-cut · " +
                          std::string(200, 'x'));
}

TEST(CheckCommand, ListsTenAppsAtMostAndNoneWhenThereAreNone) {
  Snapshot twelve = machine();
  twelve.apps.clear();
  for (int i = 0; i < 12; ++i) {
    twelve.apps.push_back(AppUsage{
        .id = "proc:" + std::to_string(i), .name = "tool" + std::to_string(i), .processCount = 1});
  }
  const auto lines = CheckCommand::lines(twelve, kHealth);
  ASSERT_EQ(lines.size(), 4u + 1 + 10 + 1);
  EXPECT_EQ(lines[4], "apps    12 apps from 12 readable processes · macOS system remainder 800 MB");
  EXPECT_EQ(lines[14].substr(lines[14].size() - 5), "tool9");

  Snapshot none = machine();
  none.apps.clear();
  const auto empty = CheckCommand::lines(none, kHealth);
  ASSERT_EQ(empty.size(), 6u);
  EXPECT_EQ(empty[4], "apps    0 apps from 0 readable processes · macOS system remainder 800 MB");
  EXPECT_EQ(empty[5].substr(0, 8), "health  ");
}

TEST(CheckCommand, NeverSendsAProcessesControlCharactersToTheTerminal) {
  Snapshot s = machine();
  s.apps = {AppUsage{.id = "pid:9",
                     .name = "evil\x1b]0;owned\x07",
                     .detail = "evil \x1b[2J\x9b"
                               "31m\u202Ecod.sh",
                     .processCount = 1}};
  const std::string line = CheckCommand::lines(s, kHealth)[5];
  EXPECT_EQ(line.substr(line.find("evil")), "evil?]0;owned? · evil ?[2J?31m?cod.sh");
}

TEST(CheckCommand, ReadsTwiceTwoSecondsApartAndJudgesWithTheStandardThresholds) {
  std::vector<double> slept;
  double now = 1'700'000'000;
  const auto read = [&] {
    SystemSample s = SystemSample::at(now);
    s.physicalMemoryBytes = 8 * kGiB;
    s.coreCount = 2;
    s.cpuTotalTicks = static_cast<std::uint64_t>(now - 1'699'999'000) * 200;
    s.cpuBusyTicks = s.cpuTotalTicks;  // flat out: still healthy with 2 s of coverage
    s.diskFreeBytes = 1'000'000'000;   // 1 GB free: a problem at once
    s.diskTotalBytes = 100'000'000'000;
    s.thermal = ThermalLevel::serious;
    s.processes = {ProcessSample{
        .pid = 42,
        .name = "spin",
        .path = "/usr/bin/spin",
        .cpuTimeNanos = static_cast<std::uint64_t>(now - 1'699'999'000) * 1'000'000'000}};
    return s;
  };
  const auto sleep = [&](double seconds) {
    slept.push_back(seconds);
    now += seconds;
  };
  std::ostringstream out;
  CheckCommand::run(read, sleep, out);
  EXPECT_EQ(slept, std::vector<double>{2.0});
  const std::string text = out.str();
  EXPECT_NE(text.find("cpu     100% busy · 2 cores\n"), std::string::npos) << text;
  EXPECT_NE(text.find("  0 MB      50%   1    spin\n"), std::string::npos) << text;
  EXPECT_NE(text.find("health  Memory Healthy · CPU Healthy · Disk space Slowing your Mac · Disk "
                      "activity Healthy · Heat Getting busy\n"),
            std::string::npos)
      << text;
}

TEST(CheckCommand, SaysSoWhenTheReadingsGiveNoSnapshot) {
  const auto read = [] { return SystemSample::at(5); };  // the clock did not move
  std::ostringstream out;
  CheckCommand::run(
      read, [](double) {}, out);
  EXPECT_EQ(out.str(), "No snapshot: the second reading failed.\n");
}

TEST(CheckJSON, CarriesTheSnapshotAndEveryResourcesHealthForScripts) {
  Snapshot s = machine();
  s.apps[1].name = "Fire\xff" "fox";  // not UTF-8: another program chose it
  s.unavailable = {Resource::heat};
  const auto document = nlohmann::json::parse(checkJSON(&s, {{Resource::memory, Health::strain}}));
  EXPECT_EQ(document["snapshot"]["memory"]["usedBytes"], 9'663'676'416u);
  EXPECT_EQ(document["snapshot"]["cpu"]["coreCount"], 4);
  EXPECT_EQ(document["snapshot"]["thermal"]["label"], "Warm");
  EXPECT_EQ(document["snapshot"]["unavailable"], nlohmann::json::array({"heat"}));
  EXPECT_EQ(document["snapshot"]["battery"], nullptr);
  ASSERT_EQ(document["snapshot"]["apps"].size(), 2u);
  EXPECT_EQ(document["snapshot"]["apps"][0]["detail"], "yes");
  EXPECT_EQ(document["snapshot"]["apps"][1]["name"], "Fire\xef\xbf\xbd" "fox")
      << "bad bytes are replaced, not a reason to print nothing";
  const auto& health = document["health"];
  ASSERT_EQ(health.size(), allResources.size());
  EXPECT_EQ(
      health[0],
      (nlohmann::json{
          {"resource", "memory"}, {"title", "Memory"}, {"health", 1}, {"label", "Getting busy"}}));
  EXPECT_EQ(health[4]["health"], nullptr) << "not judged";
  EXPECT_EQ(health[4]["label"], "?");
}

TEST(CheckJSON, SaysSoWhenTheReadingsGiveNoSnapshot) {
  const auto read = [] { return SystemSample::at(5); };
  std::ostringstream out;
  CheckCommand::runJSON(
      read, [](double) {}, out);
  EXPECT_EQ(nlohmann::json::parse(out.str()),
            (nlohmann::json{{"error", "No snapshot: the second reading failed."}}));
}

}  // namespace
}  // namespace pellwin
