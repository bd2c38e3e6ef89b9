// The verdict's words, checked against the product's own sentences.
#include "core/monitor/verdict.h"

#include <gtest/gtest.h>

#include "core/monitor/advice.h"
#include "core/monitor/diagnoser.h"

namespace pellwin {
namespace {

constexpr std::uint64_t kGiB = 1ULL << 30;

AppUsage app(std::string name, AppCategory category, std::uint64_t bytes, double cores,
             double disk = 0, int processes = 1) {
  return AppUsage{.id = "app:" + name,
                  .name = name,
                  .category = category,
                  .processCount = processes,
                  .footprintBytes = bytes,
                  .cpuCores = cores,
                  .diskBytesPerSecond = disk};
}

// A minute of identical snapshots two seconds apart, busy as `busy`, with these apps.
SnapshotWindow minute(double busy, std::vector<AppUsage> apps) {
  SnapshotWindow window(600);
  for (int i = 1; i <= 30; ++i) {
    window.append(Snapshot{.timestamp = 5000.0 + 2 * i,
                           .interval = 2,
                           .memory = {.totalBytes = 16 * kGiB, .usedBytes = 10'737'418'240},
                           .cpu = {.busyFraction = busy, .coreCount = 8},
                           .disk = {.freeBytes = 120'400'000'000,
                                    .totalBytes = 494'380'000'000,
                                    .readBytesPerSecond = 30'000'000,
                                    .writeBytesPerSecond = 12'400'000},
                           .apps = apps});
  }
  return window;
}

const std::vector<AppUsage> kApps = {
    app("Firefox", AppCategory::browsers, 3 * kGiB + kGiB / 2, 1.2, 2'000'000, 9),
    app("Slack", AppCategory::communication, 1288490189, 0.4, 0, 4),
    app("Kernel workers", AppCategory::system, 0, 0.2, 40'000'000, 12),
    app("idle", AppCategory::other, 50 * 1024 * 1024, 0),
};

ResourceVerdict verdictFor(Resource resource, Health shown, const SnapshotWindow& window) {
  const Diagnoser diagnoser;
  const auto verdict = diagnoser.verdict(window, {{resource, shown}});
  return verdict->resources.at(static_cast<std::size_t>(resource));
}

struct Words {
  const char* headline;
  const char* shortStatus;
  const char* reason;
};

void expectWords(const ResourceVerdict& v, const Words& w) {
  EXPECT_EQ(v.headline, w.headline);
  EXPECT_EQ(v.shortStatus, w.shortStatus);
  EXPECT_EQ(v.reason, w.reason);
}

TEST(Verdict, MemoryWordsAtEachLevel) {
  const auto window = minute(0.2, kApps);
  const ResourceVerdict problem = verdictFor(Resource::memory, Health::problem, window);
  expectWords(problem, {"Your Mac is slow because memory is full", "Memory full",
                        "Apps want more than your 16 GB, so macOS keeps moving data to disk and "
                        "back. That's the stutter."});
  EXPECT_EQ(problem.advice, (std::vector<std::string>{"Close Firefox tabs you don't need.",
                                                      "Quit Slack if it's not in use."}));
  ASSERT_EQ(problem.contributors.size(), 3u) << "the idle app's 50 MB count too";
  EXPECT_EQ(
      problem.contributors[0],
      (Contributor{
          .appID = "app:Firefox", .name = "Firefox", .value = "3.5 GB", .detail = "9 processes"}));
  EXPECT_EQ(problem.contributors[1].value, "1.2 GB");
  EXPECT_EQ(problem.contributors[2],
            (Contributor{.appID = "app:idle", .name = "idle", .value = "50 MB"}));

  const ResourceVerdict strain = verdictFor(Resource::memory, Health::strain, window);
  expectWords(strain, {"Memory is getting tight", "Memory tight",
                       "macOS is compressing memory to make room. Opening more apps will start "
                       "the stutter."});
  EXPECT_EQ(strain.health, Health::strain);

  const ResourceVerdict healthy = verdictFor(Resource::memory, Health::ok, window);
  expectWords(healthy, {"Memory is fine", "Healthy", "10.0 GB of 16 GB in use."});
  EXPECT_TRUE(healthy.advice.empty());
  EXPECT_EQ(healthy.contributors.size(), 3u);
}

TEST(Verdict, MemoryAdviceNamesASecondAppOnlyFromOneGibibyte) {
  const auto just = minute(
      0.2, {app("A", AppCategory::other, 4 * kGiB, 0), app("B", AppCategory::other, kGiB, 0)});
  EXPECT_EQ(verdictFor(Resource::memory, Health::strain, just).advice.size(), 2u);
  const auto under = minute(
      0.2, {app("A", AppCategory::other, 4 * kGiB, 0), app("B", AppCategory::other, kGiB - 1, 0)});
  EXPECT_EQ(verdictFor(Resource::memory, Health::strain, under).advice,
            (std::vector<std::string>{"Quit A if it's not in use."}));
  EXPECT_TRUE(verdictFor(Resource::memory, Health::strain, minute(0.2, {})).advice.empty());
}

TEST(Verdict, CpuWordsAtEachLevelWithAndWithoutAHog) {
  const auto window = minute(0.934, kApps);
  const ResourceVerdict problem = verdictFor(Resource::cpu, Health::problem, window);
  expectWords(problem, {"Your Mac is slow because the CPU is maxed out", "CPU maxed",
                        "93% busy across all 8 cores over the last minute."});
  EXPECT_EQ(problem.advice,
            (std::vector<std::string>{"Quit Firefox if it's not doing something you need."}));
  ASSERT_EQ(problem.contributors.size(), 3u);
  EXPECT_EQ(problem.contributors[0],
            (Contributor{.appID = "app:Firefox", .name = "Firefox", .value = "15%"}));
  EXPECT_EQ(problem.contributors[2].value, "2%") << "2.5% rounds as printf does";

  // A minute is too short for a hog.
  const ResourceVerdict busy = verdictFor(Resource::cpu, Health::strain, window);
  expectWords(busy,
              {"The CPU is busy", "CPU busy", "93% busy across 8 cores over the last minute."});

  expectWords(verdictFor(Resource::cpu, Health::ok, minute(0.05, kApps)),
              {"CPU is fine", "Healthy", "5% busy across 8 cores."});
  EXPECT_TRUE(verdictFor(Resource::cpu, Health::ok, window).advice.empty());

  SnapshotWindow hogged(600);
  for (int i = 1; i <= 150; ++i) {
    hogged.append(Snapshot{.timestamp = 100.0 + 2 * i,
                           .interval = 2,
                           .cpu = {.busyFraction = 0.2, .coreCount = 4},
                           .apps = {app("Kernel workers", AppCategory::system, 0, 1.0),
                                    app("Firefox", AppCategory::browsers, kGiB, 0.3)}});
  }
  const ResourceVerdict hog = verdictFor(Resource::cpu, Health::strain, hogged);
  expectWords(hog, {"One app is keeping the CPU busy", "CPU busy",
                    "Kernel workers has used a full core for over 5 minutes."});
  EXPECT_EQ(hog.advice, (std::vector<std::string>{
                            "Kernel workers is part of macOS and usually settles on its own."}));
  EXPECT_EQ(hog.contributors[0].value, "25%");
}

TEST(Verdict, DiskSpaceWordsAtEachLevel) {
  const auto withDisk = [](std::uint64_t free, std::uint64_t total) {
    SnapshotWindow window(600);
    window.append(
        Snapshot{.timestamp = 1, .interval = 2, .disk = {.freeBytes = free, .totalBytes = total}});
    return window;
  };
  const std::vector<std::string> advice = {"Empty the Trash and delete big files you don't need."};

  const auto share =
      verdictFor(Resource::diskSpace, Health::problem, withDisk(10'000'000'000, 1'000'000'000'000));
  expectWords(share, {"Your disk is almost full", "Disk almost full",
                      "Only 10.0 GB free, less than 5% of your disk. macOS slows down when the "
                      "disk is this full."});
  EXPECT_EQ(share.advice, advice);
  EXPECT_TRUE(share.contributors.empty());

  expectWords(
      verdictFor(Resource::diskSpace, Health::problem, withDisk(9'999'999'999, 1'000'000'000'000)),
      {"Your disk is almost full", "Disk almost full",
       "Only 10.0 GB free. Below 10 GB, macOS slows down and updates fail."});

  const auto low =
      verdictFor(Resource::diskSpace, Health::strain, withDisk(25'300'000'000, 494'380'000'000));
  expectWords(low, {"Disk space is running low", "Disk space low",
                    "25.3 GB free of 494 GB. macOS needs free space to move memory to disk and "
                    "to update."});
  EXPECT_EQ(low.advice, advice);

  const auto fine =
      verdictFor(Resource::diskSpace, Health::ok, withDisk(120'400'000'000, 494'380'000'000));
  expectWords(fine, {"Disk space is fine", "Healthy", "120 GB free of 494 GB."});
  EXPECT_TRUE(fine.advice.empty());
}

TEST(Verdict, DiskActivityWordsReportAllTrafficIncludingPaging) {
  auto window = minute(0.2, kApps);
  const ResourceVerdict busy = verdictFor(Resource::diskActivity, Health::strain, window);
  expectWords(busy, {"The disk is very busy", "Disk busy",
                     "42 MB/s of reading and writing over the last minute."});
  EXPECT_EQ(busy.advice, (std::vector<std::string>{"This usually settles on its own."}));
  ASSERT_EQ(busy.contributors.size(), 2u) << "apps without disk traffic are not named";
  EXPECT_EQ(
      busy.contributors[0],
      (Contributor{.appID = "app:Kernel workers", .name = "Kernel workers", .value = "40 MB/s"}));
  EXPECT_EQ(busy.contributors[1].value, "2 MB/s");
  EXPECT_EQ(verdictFor(Resource::diskActivity, Health::problem, window).headline,
            "The disk is very busy");

  SnapshotWindow quiet(600);
  quiet.append(Snapshot{.timestamp = 1,
                        .interval = 2,
                        .memory = {.swapInBytesPerSecond = 400'000},
                        .disk = {.readBytesPerSecond = 499'000}});
  const ResourceVerdict normal = verdictFor(Resource::diskActivity, Health::ok, quiet);
  expectWords(normal, {"Disk activity is normal", "Healthy", "499 KB/s of reading and writing."});
  EXPECT_TRUE(normal.advice.empty());
}

TEST(Verdict, HeatWordsAtEachLevel) {
  const auto window = minute(0.2, kApps);
  const std::vector<std::string> advice = {"Close heavy apps and keep the vents clear."};
  const auto veryHot = verdictFor(Resource::heat, Health::problem, window);
  expectWords(veryHot, {"Your Mac is very hot and running much slower", "Very hot",
                        "macOS is holding back hard to cool down."});
  EXPECT_EQ(veryHot.advice, advice);
  EXPECT_EQ(veryHot.contributors.size(), 3u);
  EXPECT_EQ(veryHot.contributors[0].value, "15%");
  const auto hot = verdictFor(Resource::heat, Health::strain, window);
  expectWords(
      hot, {"Your Mac is hot and slowing itself down", "Hot", "macOS lowers speed to cool down."});
  EXPECT_EQ(hot.advice, advice);
  const auto normal = verdictFor(Resource::heat, Health::ok, window);
  expectWords(normal, {"Temperature is normal", "Healthy", "No slowdown from heat."});
  EXPECT_TRUE(normal.advice.empty());
}

TEST(Verdict, UnreadableResourcesSaySoAndStayHealthy) {
  SnapshotWindow window(600);
  window.append(Snapshot{.timestamp = 1,
                         .interval = 2,
                         .thermal = ThermalLevel::critical,
                         .apps = kApps,
                         .unavailable = {Resource::diskActivity, Resource::heat}});
  const Diagnoser diagnoser;
  const auto verdict =
      diagnoser.verdict(window, {{Resource::heat, Health::problem}, {Resource::cpu, Health::ok}});
  ASSERT_TRUE(verdict.has_value());
  const ResourceVerdict& disk = verdict->resources[3];
  EXPECT_EQ(disk, (ResourceVerdict{.resource = Resource::diskActivity,
                                   .health = Health::ok,
                                   .headline = "Disk activity reading unavailable",
                                   .shortStatus = "Unavailable",
                                   .reason = "macOS didn't return this reading."}));
  EXPECT_EQ(verdict->resources[4].headline, "Heat reading unavailable");
  EXPECT_EQ(verdict->overall(), Health::ok);
  EXPECT_FALSE(diagnoser.verdict(SnapshotWindow(600), {}).has_value());
}

TEST(Verdict, HeadlineIsTheFirstResourceAtTheWorstLevel) {
  const Diagnoser diagnoser;
  const auto window = minute(0.95, kApps);
  const struct {
    const char* why;
    std::map<Resource, Health> displayed;
    const char* headline;
    const char* shortStatus;
  } cases[] = {
      {"nothing shown yet: all healthy", {}, "Your Mac is running fine", "Healthy"},
      {"memory before CPU at the same level",
       {{Resource::cpu, Health::problem}, {Resource::memory, Health::problem}},
       "Your Mac is slow because memory is full",
       "Memory full"},
      {"a problem beats an earlier strain",
       {{Resource::memory, Health::strain}, {Resource::heat, Health::problem}},
       "Your Mac is very hot and running much slower",
       "Very hot"},
      {"strain alone",
       {{Resource::diskSpace, Health::strain}},
       "Disk space is running low",
       "Disk space low"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    const auto verdict = diagnoser.verdict(window, c.displayed);
    ASSERT_TRUE(verdict.has_value());
    ASSERT_EQ(verdict->resources.size(), 5u);
    EXPECT_EQ(verdict->headline(), c.headline);
    EXPECT_EQ(verdict->shortStatus(), c.shortStatus);
  }
}

TEST(Verdict, LeadsAndRolesComeFromTheFirstContributor) {
  const Diagnoser diagnoser;
  const auto verdict = *diagnoser.verdict(
      minute(0.95, kApps), {{Resource::cpu, Health::problem}, {Resource::heat, Health::strain}});
  const auto leads = verdict.leads();
  EXPECT_EQ(leads.size(), 4u) << "disk space names no apps";
  EXPECT_EQ(leads.at(Resource::memory),
            (Lead{.appID = "app:Firefox", .name = "Firefox", .value = "3.5 GB"}));
  EXPECT_EQ(leads.at(Resource::diskActivity),
            (Lead{.appID = "app:Kernel workers", .name = "Kernel workers", .value = "40 MB/s"}));

  EXPECT_EQ(verdict.role("app:Firefox"),
            (AppRole{.text = "Using the most CPU", .health = Health::problem}))
      << "memory is healthy, so the CPU is Firefox's first role";
  EXPECT_FALSE(verdict.role("app:Kernel workers").has_value()) << "disk activity is healthy";
  EXPECT_FALSE(verdict.role("app:Slack").has_value());
}

TEST(Verdict, NoticesOnlyForProblemsAndNameTheFirstContributor) {
  const Diagnoser diagnoser;
  const auto verdict = *diagnoser.verdict(
      minute(0.95, kApps), {{Resource::cpu, Health::problem},
                            {Resource::heat, Health::strain},
                            {Resource::diskSpace, Health::problem}});
  const ResourceVerdict& cpu = verdict.resources[1];
  const auto notice = verdict.notice(Resource::cpu);
  ASSERT_TRUE(notice.has_value());
  EXPECT_EQ(notice->title, cpu.headline);
  EXPECT_EQ(notice->body, cpu.reason + " Firefox is using " + cpu.contributors[0].value + ".");
  EXPECT_EQ(notice->cause, "Firefox " + cpu.contributors[0].value);

  const auto space = verdict.notice(Resource::diskSpace);
  ASSERT_TRUE(space.has_value());
  EXPECT_EQ(space->body, verdict.resources[2].reason) << "no app is behind a full disk";
  EXPECT_FALSE(space->cause.has_value());

  EXPECT_FALSE(verdict.notice(Resource::heat).has_value()) << "strain is never notified";
  EXPECT_FALSE(verdict.notice(Resource::memory).has_value());
}

TEST(Advice, AppLinesDependOnTheKindOfApp) {
  AppUsage part = app("Display server", AppCategory::system, kGiB, 0.5);
  part.explanation = "Draws windows on your screen.";
  const AppUsage plainPart = app("Kernel workers", AppCategory::system, 0, 0.5);
  const AppUsage browser = app("Firefox", AppCategory::browsers, 3 * kGiB, 1, 0, 2);
  const AppUsage oneTab = app("Firefox", AppCategory::browsers, 3 * kGiB, 1, 0, 1);
  const AppUsage editor = app("Zed", AppCategory::developer, 500 * 1024 * 1024, 1);

  EXPECT_EQ(Advice::systemLine(part),
            "Display server is part of macOS. Draws windows on your screen.");
  EXPECT_EQ(Advice::systemLine(plainPart),
            "Kernel workers is part of macOS and usually settles on its own.");
  EXPECT_EQ(Advice::quitLine(part), Advice::systemLine(part));
  EXPECT_EQ(Advice::quitLine(browser), "Close Firefox tabs you don't need.");
  EXPECT_EQ(Advice::quitLine(oneTab), "Quit Firefox if it's not in use.");
  EXPECT_EQ(Advice::cpuLine(browser), "Quit Firefox if it's not doing something you need.");
  EXPECT_EQ(Advice::cpuLine(part), Advice::systemLine(part));
  EXPECT_EQ(Advice::appHelp(part),
            "Display server is part of macOS and usually settles on its own.");
  EXPECT_EQ(Advice::appHelp(browser),
            "Close tabs you don't need. Quitting Firefox would free about 3.0 GB.");
  EXPECT_EQ(Advice::appHelp(editor), "Quitting Zed would free about 500 MB.");
}

}  // namespace
}  // namespace pellwin
