#include "ui/quit_dialog.h"

#include <gtest/gtest.h>

#include <QPushButton>

namespace pellwin::ui {
namespace {

TEST(QuitDialog, ShowsTheQuittersWordsWithTheQuitButtonFirstAndCancelAsDefault) {
  const AppUsage app{
      .id = "app:firefox", .name = "Firefox", .pids = {1}, .footprintBytes = 3ull << 30};
  for (const bool force : {false, true}) {
    SCOPED_TRACE(force ? "force" : "polite");
    const QuitConfirmation c = AppQuitter::confirmation(app, force);
    const auto box = quitMessageBox(c, nullptr);
    EXPECT_EQ(box->text(), QString::fromStdString(c.message));
    EXPECT_EQ(box->informativeText(), QString::fromStdString(c.informativeText));
    const QList<QAbstractButton*> buttons = box->buttons();
    ASSERT_EQ(buttons.size(), 2);
    QAbstractButton* confirm = box->findChild<QPushButton*>("confirm");
    ASSERT_NE(confirm, nullptr);
    EXPECT_EQ(confirm->text(), force ? "Force quit" : "Quit");
    EXPECT_EQ(box->buttonRole(confirm),
              force ? QMessageBox::DestructiveRole : QMessageBox::AcceptRole);
    EXPECT_EQ(box->defaultButton()->text(), "Cancel") << "Return never quits by mistake";
    EXPECT_EQ(box->buttonRole(box->defaultButton()), QMessageBox::RejectRole);
  }
  EXPECT_EQ(quitMessageBox(AppQuitter::confirmation(app, true), nullptr)->text(),
            "Force quit Firefox?");
}

}  // namespace
}  // namespace pellwin::ui
