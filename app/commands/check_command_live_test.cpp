// `tovrin --check` on this machine, with a program spinning on one core.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "app/commands/check_command.h"
#include "app/entry.h"
#include "app/system_roots.h"
#include "core/base/format.h"
#include "core/monitor/snapshot_builder.h"
#include "probe/system/system_reader.h"
#include "testing/child_process.h"

namespace pellwin {
namespace {

std::uint64_t memTotalBytes() {
  std::ifstream file("/proc/meminfo");
  std::string name;
  std::uint64_t kB = 0;
  file >> name >> kB;
  return name == "MemTotal:" ? kB * 1024 : 0;
}

TEST(CheckCommandLive, PrintsThisMachinesTrueFiguresAndExitsZero) {
  std::ostringstream out;
  std::ostringstream err;
  const int status = runCommand(Command{.kind = CommandKind::check}, Environment{}, out, err);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(err.str(), "");

  std::vector<std::string> lines;
  std::istringstream text(out.str());
  for (std::string line; std::getline(text, line);) lines.push_back(line);
  ASSERT_GE(lines.size(), 6u) << out.str();
  EXPECT_TRUE(lines[0].starts_with("memory  used ")) << lines[0];
  EXPECT_NE(lines[0].find(" of " + Format::ram(memTotalBytes()) + " · compressed "),
            std::string::npos)
      << lines[0];
  const std::string cores = std::to_string(::sysconf(_SC_NPROCESSORS_ONLN));
  EXPECT_TRUE(std::regex_match(lines[1], std::regex("cpu     [0-9]+% busy · " + cores + " cores")))
      << lines[1];
  EXPECT_TRUE(std::regex_match(
      lines[2], std::regex("disk    .+ free of .+ · read [0-9]+ [KM]B/s · write [0-9]+ [KM]B/s")))
      << lines[2];
  EXPECT_TRUE(lines[3].starts_with("heat    ")) << lines[3];
  const std::size_t apps = lines[4].starts_with("unavailable: ") ? 5 : 4;
  EXPECT_TRUE(std::regex_match(lines[apps], std::regex("apps    [0-9]+ apps from [0-9]+ readable "
                                                       "processes · macOS system remainder .+")))
      << lines[apps];
  EXPECT_TRUE(lines.back().starts_with("health  Memory ")) << lines.back();
  EXPECT_LE(lines.size() - apps - 2, 10u) << "app lines between the apps and health lines";
}

TEST(CheckCommandLive, SeesAProgramSpinningOnOneCore) {
  const testing::ChildProcess yes({"yes"});
  ASSERT_GT(yes.pid(), 0);
  SystemReader reader(systemReaderRoots(Environment{}));
  std::vector<SystemSample> samples;
  std::ostringstream out;
  CheckCommand::run(
      [&] {
        samples.push_back(reader.read());
        return samples.back();
      },
      [](double seconds) { ::usleep(static_cast<useconds_t>(seconds * 1e6)); }, out);
  ASSERT_EQ(samples.size(), 2u);

  SnapshotBuilder builder;
  (void)builder.ingest(samples[0]);
  const auto snapshot = builder.ingest(samples[1]);
  ASSERT_TRUE(snapshot.has_value());
  const auto app = std::ranges::find_if(snapshot->apps, [&](const AppUsage& a) {
    return std::ranges::find(a.pids, yes.pid()) != a.pids.end();
  });
  ASSERT_NE(app, snapshot->apps.end());
  EXPECT_EQ(app->name, "yes");
  // A whole core on an idle machine; on a shared, overloaded one it gets its fair share of the
  // processors, which is still far above the nothing an idle program shows.
  EXPECT_GT(app->cpuCores, 0.02);
  EXPECT_LE(app->cpuCores, 1.05);
}

TEST(CheckCommandLive, JSONParsesWithPythonsJSONTool) {
  std::ostringstream out, err;
  ASSERT_EQ(runCommand(Command{.kind = CommandKind::check, .json = true}, Environment{}, out, err),
            0);
  const std::string path = ::testing::TempDir() + "tovrin-check.json";
  std::ofstream(path) << out.str();
  // Checked by another program's parser, as a script would read it.
  const std::string command = "python3 -m json.tool " + path + " > /dev/null";
  EXPECT_EQ(std::system(command.c_str()), 0) << out.str();
  EXPECT_NE(out.str().find("\"coreCount\": " + std::to_string(::sysconf(_SC_NPROCESSORS_ONLN))),
            std::string::npos);
  std::remove(path.c_str());
}

}  // namespace
}  // namespace pellwin
