// Widget tests of the history screens: one `--seed-history` day ending at `now` (Mon 3 June
// 2024 16:00 UTC) with three weeks of totals before it, seeded once per test binary and handed
// to each test as its own copy, and a recorder whose results arrive on the Qt event loop. Test
// support only; lives with the widgets because it needs Qt.
#pragma once

#include <gtest/gtest.h>

#include <QObject>
#include <QTemporaryDir>
#include <QTest>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>

#include "app/commands/seed_history.h"
#include "app/models/history_recorder.h"
#include "ui/post_to.h"

namespace pellwin::ui {

class SeededHistoryTest : public ::testing::Test {
 public:
  static constexpr double now = 1'717'430'400;

 protected:
  static void SetUpTestSuite() {
    seeded_ = new QTemporaryDir();
    std::ostringstream out, err;
    ASSERT_EQ(SeedHistory::run(seeded() / "seeded.sqlite", seeded() / "real.sqlite", now,
                               Calendar(), out, err),
              0)
        << err.str();
  }
  static void TearDownTestSuite() {
    delete seeded_;
    seeded_ = nullptr;
  }

  // This test's own copy of the seeded file.
  std::filesystem::path copy() {
    const auto path = local() / "history.sqlite";
    std::filesystem::copy_file(seeded() / "seeded.sqlite", path);
    return path;
  }
  std::filesystem::path local() const { return local_.path().toStdString(); }
  // Writes `contents` to `name` in this test's folder.
  std::filesystem::path write(const std::string& name, const std::string& contents) const {
    const auto path = local() / name;
    std::ofstream(path) << contents;
    return path;
  }
  HistoryRecorderSetup recorderSetup(const std::filesystem::path& url) {
    return {.url = url,
            .post = postTo(&context_),
            .now = [] { return now; },
            .calendar = [](double) { return Calendar(); }};
  }
  static std::function<double()> clock() {
    return [] { return now; };
  }
  static std::function<Calendar(double)> calendar() {
    return [](double) { return Calendar(); };
  }
  // Runs the event loop until `done` holds, for at most 20 s.
  [[nodiscard]] static bool settle(const std::function<bool()>& done) {
    return QTest::qWaitFor(done, 20'000);
  }
  HistoryStore store(const std::filesystem::path& path) {
    return std::move(*HistoryStore::open(path));
  }

  static std::filesystem::path seeded() { return seeded_->path().toStdString(); }

  static inline QTemporaryDir* seeded_ = nullptr;
  QTemporaryDir local_;
  QObject context_;
};

}  // namespace pellwin::ui
