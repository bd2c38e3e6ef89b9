#include "app/desktop/login_item.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>

#include "probe/system/desktop_entry.h"
#include "testing/enum_text_round_trip.h"
#include "testing/scratch_folder.h"

namespace pellwin {
namespace {

struct Validation {
  int status = -1;
  std::string output;
};

// What desktop-file-validate (desktop-file-utils) says about `entry`.
Validation validate(const std::filesystem::path& entry) {
  const std::string command = "desktop-file-validate '" + entry.string() + "' 2>&1";
  std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
  if (!pipe) return {};
  Validation result;
  char buffer[512];
  while (std::fgets(buffer, sizeof buffer, pipe.get()) != nullptr) result.output += buffer;
  const int status = ::pclose(pipe.release());
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return result;
}

TEST(LoginItem, EnableWritesAValidEntryThatStartsThisProgramAndDisableRemovesIt) {
  testing::ScratchFolder config;
  const Environment environment{.home = "/nowhere", .xdgConfigHome = config.path().string()};
  const LoginItem item(LoginItem::entryPath(environment), "/usr/bin/tovrin");
  ASSERT_EQ(item.entry(), config / "autostart/com.pellwin.Pellwin.desktop");
  EXPECT_EQ(item.status(), LoginItemStatus::notRegistered);

  ASSERT_TRUE(item.enable().has_value()) << "the autostart folder did not exist yet";
  EXPECT_EQ(item.status(), LoginItemStatus::enabled);
  const Validation validation = validate(item.entry());
  EXPECT_EQ(validation.status, 0) << validation.output;
  EXPECT_EQ(validation.output.find("error"), std::string::npos) << validation.output;
  const auto parsed = parseDesktopEntry(testing::fileBytes(item.entry()), "");
  ASSERT_TRUE(parsed.has_value());
  EXPECT_EQ(parsed->exec, std::vector<std::string>{"/usr/bin/tovrin"});
  EXPECT_EQ(parsed->type, "Application");

  ASSERT_TRUE(item.enable().has_value()) << "enabling twice replaces the entry";
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(config / "autostart"), {}), 1)
      << "no temporary file is left behind";

  ASSERT_TRUE(item.disable().has_value());
  EXPECT_FALSE(std::filesystem::exists(item.entry()));
  EXPECT_EQ(item.status(), LoginItemStatus::notRegistered);
  EXPECT_TRUE(item.disable().has_value()) << "an entry that is gone is no failure";
}

TEST(LoginItem, AnEntryTheDesktopHidIsNotRegistered) {
  testing::ScratchFolder config;
  const auto entry =
      config.write("autostart/com.pellwin.Pellwin.desktop",
                   "[Desktop Entry]\nType=Application\nName=Tovrin\nExec=/x\nHidden=true\n");
  EXPECT_EQ(LoginItem(entry, "/x").status(), LoginItemStatus::notRegistered);
}

TEST(LoginItem, EntryPathFollowsTheConfigHome) {
  EXPECT_EQ(LoginItem::entryPath({.home = "/home/ann"}),
            "/home/ann/.config/autostart/com.pellwin.Pellwin.desktop");
  EXPECT_EQ(LoginItem::entryPath({.home = "/home/ann", .xdgConfigHome = "relative/cfg"}),
            "/home/ann/.config/autostart/com.pellwin.Pellwin.desktop")
      << "a relative XDG_CONFIG_HOME is ignored";
  EXPECT_EQ(LoginItem::entryPath({.home = "/home/ann", .xdgConfigHome = "/cfg"}),
            "/cfg/autostart/com.pellwin.Pellwin.desktop");
}

TEST(ExecValue, StartsExactlyTheProgramWhateverItsPathHolds) {
  testing::ScratchFolder config;
  const char* programs[] = {
      "/usr/bin/tovrin",  "/home/ann/My Apps/tovrin",          "/opt/a\"b/c$d`e\\f/tovrin",
      "/opt/100%/tovrin", "/opt/it's (new) #1;~&|<>*?/tovrin",
  };
  for (const char* program : programs) {
    SCOPED_TRACE(program);
    const auto text = autostartEntryText(program);
    ASSERT_TRUE(text.has_value());
    const auto parsed = parseDesktopEntry(*text, "");
    ASSERT_TRUE(parsed.has_value());
    EXPECT_EQ(parsed->exec, std::vector<std::string>{program});
    const auto entry = config.write("com.pellwin.Pellwin.desktop", *text);
    const Validation validation = validate(entry);
    EXPECT_EQ(validation.status, 0) << validation.output;
  }
}

TEST(ExecValue, RefusesAPathNoEntryCanHold) {
  EXPECT_FALSE(execValue("tovrin").has_value()) << "not absolute";
  EXPECT_FALSE(execValue("/opt/a\nb/tovrin").has_value()) << "a line break";
  testing::ScratchFolder config;
  const LoginItem item(config / "autostart/x.desktop", "/opt/a\nb/tovrin");
  const auto enabled = item.enable();
  ASSERT_FALSE(enabled.has_value());
  EXPECT_EQ(enabled.error().operation, "create");
  EXPECT_FALSE(std::filesystem::exists(item.entry()));
}

}  // namespace

namespace testing {
using LoginItemEnums = ::testing::Types<LoginItemStatus>;
INSTANTIATE_TYPED_TEST_SUITE_P(LoginItem, EnumTextRoundTrip, LoginItemEnums);
}  // namespace testing

}  // namespace pellwin
