#include "ui/monitor_screen.h"

#include <gtest/gtest.h>

#include <vector>

#include <QAbstractItemModelTester>
#include <QHeaderView>
#include <QTest>

#include "testing/monitor_scene.h"

namespace pellwin::ui {
namespace {

class QuietSignals final : public ProcessSignals {
 public:
  std::expected<void, SystemError> send(std::int32_t, int) override { return {}; }
  bool isRunning(std::int32_t) override { return false; }
};

struct MonitorRig {
  LiveState state = testing::sceneState();
  std::vector<QuitConfirmation> asked;
  QuitControl quit{std::make_shared<QuietSignals>(), 5200,
                   [this](const QuitConfirmation& c, QWidget*) {
                     asked.push_back(c);
                     return false;
                   }};
  MonitorScreen screen{[this]() -> const LiveState& { return state; }, quit};

  MonitorRig() {
    screen.resize(1000, 900);
    screen.show();
  }

  // The rows of the list as shown: headings as "# title", apps by name.
  QStringList rows() const {
    QStringList out;
    const AppTableModel& m = *screen.model();
    for (int g = 0; g < m.rowCount(); ++g) {
      const QModelIndex heading = m.index(g, 0);
      out << "# " + m.data(heading, Qt::DisplayRole).toString();
      for (int r = 0; r < m.rowCount(heading); ++r) {
        out << m.data(m.index(r, 0, heading), Qt::DisplayRole).toString();
      }
    }
    return out;
  }
  std::string current() const {
    const AppUsage* app = screen.model()->app(screen.view()->currentIndex());
    return app ? app->id : "";
  }
};

TEST(MonitorScreen, ShowsTheTilesTheVerdictTheLegendAndWhereTheEnergyWent) {
  MonitorRig rig;
  EXPECT_EQ(rig.screen.tileTexts(),
            (QStringList{"Memory: 13.4 GB of 16 GB, Memory tight",
                         "CPU: 74% busy across 8 cores, CPU busy",
                         "Disk space: 48.2 GB free of 512 GB, Disk space low",
                         "Disk activity: 6 MB/s reading and writing, Healthy",
                         "Heat: Normal up 16 days, Healthy"}));
  EXPECT_EQ(rig.screen.verdict().texts(),
            (QStringList{
                "Memory is getting tight",
                "macOS is compressing memory to make room. Opening more apps will start the "
                "stutter.",
                "Using the most memory",
                "Firefox  ·  3.4 GB  ·  14 processes",
                "python3.12 train.py  ·  2.3 GB",
                "Visual Studio Code  ·  1.8 GB  ·  9 processes",
                "WHAT YOU CAN DO",
                "•  Close Firefox tabs you don't need.",
                "•  Quit python3.12 train.py if it's not in use.",
                "•  Quit python3.12 train.py if it's not doing something you need.",
                "•  Empty the Trash and delete big files you don't need.",
                "TIPS",
                "•  On for 16 days. A restart clears memory that spilled to disk",
            }));
  EXPECT_EQ(rig.screen.findChild<QLabel*>("legend")->text(),
            "Teal is healthy, amber is under strain, coral is a problem. The same dot sits in "
            "your menu bar.");
  EXPECT_EQ(rig.screen.findChild<QLabel*>("listCaption")->text(),
            "Every app below, with its helper processes counted as one.");
  const QStringList energy = rig.screen.energy().texts();
  ASSERT_EQ(energy.size(), 7);
  EXPECT_TRUE(energy[0].startsWith("Most energy since ")) << energy[0].toStdString();
  EXPECT_EQ(energy[1], "On battery");
  EXPECT_EQ(energy[2], "python3.12 train.py 34%");

  rig.state.battery = BatterySession{};
  rig.screen.refresh();
  EXPECT_TRUE(rig.screen.energy().texts().isEmpty()) << "no battery, no energy card";
}

TEST(MonitorScreen, ListsAppsUnderHeadingsSortedByTheColumnPicked) {
  MonitorRig rig;
  EXPECT_EQ(rig.screen.sort(), MonitorSort::memory);
  EXPECT_EQ(rig.rows().mid(0, 6),
            (QStringList{"# Browsers · 14 processes", "Firefox", "# Developer tools · 14 processes",
                         "python3.12 train.py", "Visual Studio Code", "bash"}));
  const AppTableModel& m = *rig.screen.model();
  const QModelIndex code = m.indexOf("app:code");
  EXPECT_EQ(m.data(code.siblingAtColumn(AppTableModel::memoryColumn), Qt::DisplayRole), "1.8 GB");
  EXPECT_EQ(m.data(code.siblingAtColumn(AppTableModel::cpuColumn), Qt::DisplayRole), "5%");
  EXPECT_EQ(m.data(code.siblingAtColumn(AppTableModel::diskColumn), Qt::DisplayRole), "52 KB/s");
  EXPECT_EQ(m.data(code.siblingAtColumn(AppTableModel::energyColumn), Qt::DisplayRole), "41");

  const auto system = [&rig] {
    const QStringList rows = rig.rows();
    return rows.mid(rows.indexOf("# System and macOS · 5 processes") + 1, 4);
  };
  const struct {
    int column;
    MonitorSort sort;
    QStringList system;
  } cases[] = {
      {AppTableModel::diskColumn,
       MonitorSort::disk,
       {"tracker-miner-fs-3", "Xwayland", "gnome-shell", "pipewire"}},
      {AppTableModel::nameColumn,
       MonitorSort::disk,
       {"tracker-miner-fs-3", "Xwayland", "gnome-shell", "pipewire"}},
      {AppTableModel::cpuColumn,
       MonitorSort::cpu,
       {"gnome-shell", "Xwayland", "tracker-miner-fs-3", "pipewire"}},
      {AppTableModel::energyColumn,
       MonitorSort::energy,
       {"gnome-shell", "Xwayland", "tracker-miner-fs-3", "pipewire"}},
      {AppTableModel::memoryColumn,
       MonitorSort::memory,
       {"gnome-shell", "Xwayland", "tracker-miner-fs-3", "pipewire"}},
  };
  std::vector<MonitorSort> picked;
  QObject::connect(&rig.screen, &MonitorScreen::sortPicked,
                   [&picked](MonitorSort sort) { picked.push_back(sort); });
  for (const auto& c : cases) {
    SCOPED_TRACE(c.column);
    emit rig.screen.view()->header()->sectionClicked(c.column);
    EXPECT_EQ(rig.screen.sort(), c.sort);
    EXPECT_EQ(system(), c.system);
    EXPECT_EQ(rig.screen.view()->header()->sortIndicatorSection(), AppTableModel::column(c.sort));
  }
  // Kept for the next start only when the user's click changed it; the name column orders
  // nothing, and a sort restored from the settings is not a new pick.
  EXPECT_EQ(picked, (std::vector<MonitorSort>{MonitorSort::disk, MonitorSort::cpu,
                                              MonitorSort::energy, MonitorSort::memory}));
  rig.screen.setSort(MonitorSort::cpu);
  EXPECT_EQ(picked.size(), 4u);
}

TEST(MonitorScreen, KeepsThePickedAppAcrossTicksUntilItEnds) {
  MonitorRig rig;
  rig.screen.select("app:code");
  EXPECT_EQ(rig.screen.details().texts().first(), "Visual Studio Code");

  // Next tick: Code is now the biggest developer app by far, Slack has ended, a new
  // program has started; the rows move, the pick stays on Code.
  rig.state = testing::sceneState(3);
  auto& apps = rig.state.snapshot->apps;
  apps[2].footprintBytes = 6ull << 30;
  std::erase_if(apps, [](const AppUsage& a) { return a.id == "app:com.slack.Slack"; });
  rig.screen.refresh();
  EXPECT_EQ(rig.current(), "app:code");
  EXPECT_EQ(rig.screen.list().selectedID(), "app:code");
  EXPECT_TRUE(rig.screen.view()->selectionModel()->isRowSelected(
      rig.screen.view()->currentIndex().row(), rig.screen.view()->currentIndex().parent()));
  EXPECT_FALSE(rig.rows().contains("# Communication · 6 processes"));
  EXPECT_TRUE(rig.rows().contains("tool-2"));

  rig.screen.setSort(MonitorSort::energy);
  EXPECT_EQ(rig.current(), "app:code") << "sorting keeps the pick too";

  std::erase_if(apps, [](const AppUsage& a) { return a.id == "app:code"; });
  rig.screen.refresh();
  EXPECT_EQ(rig.current(), "") << "Code ended: nothing is picked, not its neighbour";
  EXPECT_EQ(rig.screen.details().texts(),
            QStringList{"Pick an app to see what it is and to quit it."});
}

TEST(MonitorScreen, DetailsOfThePickedAppWithQuitThroughTheAlert) {
  MonitorRig rig;
  rig.screen.select("pid:4120");
  const QStringList details = rig.screen.details().texts();
  ASSERT_EQ(details.size(), 8);
  EXPECT_EQ(details.mid(0, 3),
            (QStringList{"python3.12 train.py", "Using the most CPU",
                         "Quitting python3.12 train.py would free about 2.3 GB."}));
  EXPECT_EQ(details[3], "Command line: python3.12 train.py --epochs 40");
  EXPECT_EQ(details[4], "Working directory: /home/sam/projects/vision");
  EXPECT_TRUE(details[5].startsWith("Running since: ")) << details[5].toStdString();
  EXPECT_TRUE(details[5].endsWith(" · for 48 min")) << details[5].toStdString();
  EXPECT_EQ(details.mid(6), (QStringList{"Processes: 1", "Process IDs: 4120"}));

  rig.screen.select("proc:gnome-shell");
  EXPECT_TRUE(rig.screen.details().texts().contains(
      "Draws the desktop: windows, the top bar and the overview."));
  QTest::mouseClick(rig.screen.details().quitButton(false), Qt::LeftButton);
  EXPECT_TRUE(rig.asked.empty()) << "refused without asking";
  EXPECT_EQ(rig.screen.quitResult().text(),
            "gnome-shell is part of macOS. Quitting it can log you out or it starts again "
            "straight away.");

  rig.screen.select("app:com.spotify.Client");
  QTest::mouseClick(rig.screen.details().quitButton(true), Qt::LeftButton);
  ASSERT_EQ(rig.asked.size(), 1u);
  EXPECT_EQ(rig.asked[0].message, "Force quit Spotify?");
  EXPECT_TRUE(rig.asked[0].destructive);
}

TEST(MonitorScreen, ManyAppsInABusyListComeAndGoWithoutBreakingTheModel) {
  MonitorRig rig;
  QAbstractItemModelTester tester(rig.screen.model(),
                                  QAbstractItemModelTester::FailureReportingMode::Fatal);
  for (int tick = 0; tick < 6; ++tick) {
    rig.state = testing::sceneState(40 + tick * 7);
    auto& apps = rig.state.snapshot->apps;
    // Apps end in the middle of the list and figures reshuffle the order.
    for (std::size_t i = static_cast<std::size_t>(tick); i < apps.size(); i += 5) {
      apps[i].footprintBytes += static_cast<std::uint64_t>((tick * 37 + i * 11) % 90) << 20;
    }
    if (tick % 2 == 1) apps.erase(apps.begin() + 12, apps.begin() + 20);
    rig.screen.setSort(tick % 3 == 0 ? MonitorSort::memory : MonitorSort::disk);
    rig.screen.refresh();
    int listed = 0;
    for (int g = 0; g < rig.screen.model()->rowCount(); ++g) {
      listed += rig.screen.model()->rowCount(rig.screen.model()->index(g, 0));
    }
    EXPECT_EQ(listed, static_cast<int>(apps.size())) << tick;
  }
}

}  // namespace
}  // namespace pellwin::ui
