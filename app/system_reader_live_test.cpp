// Reads this machine and checks the figures against the kernel's own.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

#include "app/system_roots.h"
#include "probe/system/system_reader.h"
#include "testing/child_process.h"

namespace pellwin {
namespace {

std::uint64_t meminfoKB(const std::string& key) {
  std::ifstream file(Environment{}.procRoot + "/meminfo");
  std::string line;
  while (std::getline(file, line)) {
    std::istringstream fields(line);
    std::string name;
    std::uint64_t value = 0;
    if (fields >> name >> value && name == key + ":") return value;
  }
  return 0;
}

const ProcessSample* find(const SystemSample& sample, pid_t pid) {
  const auto it = std::find_if(sample.processes.begin(), sample.processes.end(),
                               [&](const ProcessSample& p) { return p.pid == pid; });
  return it == sample.processes.end() ? nullptr : &*it;
}

TEST(SystemReaderLive, AgreesWithTheKernel) {
  SystemReader reader(systemReaderRoots(Environment{}));
  const SystemSample sample = reader.read();
  EXPECT_FALSE(sample.unavailable.contains(Resource::memory));
  EXPECT_FALSE(sample.unavailable.contains(Resource::cpu));
  EXPECT_FALSE(sample.unavailable.contains(Resource::diskSpace));
  EXPECT_EQ(sample.physicalMemoryBytes, meminfoKB("MemTotal") * 1024);
  EXPECT_EQ(sample.coreCount, ::sysconf(_SC_NPROCESSORS_ONLN));
  EXPECT_EQ(sample.pageSize, static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE)));

  const double used = static_cast<double>(
      (sample.internalPages + sample.wiredPages + sample.compressorPages) * sample.pageSize);
  const double kernelUsed =
      static_cast<double>((meminfoKB("MemTotal") - meminfoKB("MemAvailable")) * 1024);
  EXPECT_NEAR(used, kernelUsed, 0.03 * static_cast<double>(sample.physicalMemoryBytes));

  EXPECT_GT(sample.cpuTotalTicks, sample.cpuBusyTicks);
  EXPECT_GT(sample.bootTime, 1e9);
  EXPECT_LT(sample.bootTime, sample.timestamp);
  EXPECT_GT(sample.diskTotalBytes, 0u);
  const ProcessSample* self = find(sample, ::getpid());
  ASSERT_NE(self, nullptr);
  EXPECT_GT(self->footprintBytes, 0u);
  EXPECT_FALSE(self->path.empty());
}

TEST(SystemReaderLive, SeesASpinningChildWithGrowingCPUTimeAndItsCommandLine) {
  const std::vector<std::string> arguments = {"sh", "-c", "while :; do :; done", "tovrin-spin"};
  const testing::ChildProcess child(arguments);
  ASSERT_GT(child.pid(), 0);
  SystemReader reader(systemReaderRoots(Environment{}));

  // Until exec lands the child is a copy of this test; the reader must notice the exec.
  const ProcessSample* seen = nullptr;
  SystemSample first;
  for (int attempt = 0; attempt < 50; ++attempt) {
    first = reader.read();
    seen = find(first, child.pid());
    if (seen && seen->arguments == arguments) break;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  ASSERT_NE(seen, nullptr);
  EXPECT_EQ(seen->arguments, arguments);
  EXPECT_EQ(seen->path, std::filesystem::canonical("/bin/sh").string());
  EXPECT_EQ(seen->name, std::filesystem::canonical("/bin/sh").filename().string());
  const std::uint64_t before = seen->cpuTimeNanos;

  // The machine may be busy with other work: wait, within reason, for the child's share.
  const ProcessSample* later = nullptr;
  SystemSample next;
  for (int attempt = 0; attempt < 50; ++attempt) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    next = reader.read();
    later = find(next, child.pid());
    if (!later || later->cpuTimeNanos >= before + 100'000'000u) break;
  }
  ASSERT_NE(later, nullptr);
  EXPECT_GE(later->cpuTimeNanos, before + 100'000'000u);
  EXPECT_EQ(later->arguments, arguments);
}

}  // namespace
}  // namespace pellwin
