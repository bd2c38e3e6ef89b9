#include "ui/single_instance.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>

namespace pellwin::ui {
namespace {

TEST(SingleInstance, ALaterStartOpensTheRunningWindowInsteadOfRunningTwice) {
  QTemporaryDir runtime;
  ASSERT_TRUE(runtime.isValid());
  SingleInstance running(runtime.path());
  ASSERT_EQ(running.claim(), SingleInstance::Claim::first);
  QSignalSpy opened(&running, &SingleInstance::openRequested);

  SingleInstance later(runtime.path());
  EXPECT_EQ(later.claim(), SingleInstance::Claim::toldRunning);
  EXPECT_TRUE(opened.wait(2000)) << "the running app hears the later start";
}

TEST(SingleInstance, ASocketLeftByAnAppThatIsGoneDoesNotBlockTheNextStart) {
  QTemporaryDir runtime;
  ASSERT_TRUE(runtime.isValid());
  QFile leftover(runtime.path() + "/com.pellwin.Pellwin.socket");
  ASSERT_TRUE(leftover.open(QIODevice::WriteOnly));
  leftover.close();
  {
    SingleInstance first(runtime.path());
    ASSERT_EQ(first.claim(), SingleInstance::Claim::first);
  }
  SingleInstance next(runtime.path());
  EXPECT_EQ(next.claim(), SingleInstance::Claim::first) << "the lock went with its owner";
  QSignalSpy opened(&next, &SingleInstance::openRequested);
  SingleInstance later(runtime.path());
  EXPECT_EQ(later.claim(), SingleInstance::Claim::toldRunning);
  EXPECT_TRUE(opened.wait(2000));
}

}  // namespace
}  // namespace pellwin::ui
