// Every widget test needs one QApplication for the whole test binary; gtest's own main() makes
// none, so a global test environment does. Widgets draw off screen unless a platform was
// chosen, so the tests need no display.
#include <gtest/gtest.h>

#include <QApplication>

namespace {

class QtApplication final : public ::testing::Environment {
 public:
  void SetUp() override {
    static int argc = 1;
    static char name[] = "pellwinui_tests";
    static char* argv[] = {name, nullptr};
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    application_ = std::make_unique<QApplication>(argc, argv);
  }
  void TearDown() override { application_.reset(); }

 private:
  std::unique_ptr<QApplication> application_;
};

[[maybe_unused]] const auto* const environment =
    ::testing::AddGlobalTestEnvironment(new QtApplication);

}  // namespace
