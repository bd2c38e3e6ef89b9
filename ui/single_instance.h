// One tray app per user. The first start holds a lock file and listens on a local socket, both
// in the user's runtime folder; a later start finds the lock taken, asks the running app over
// the socket to open its window, and is told to leave. A lock left by a crashed app is taken
// over (QLockFile checks that its owner still runs).
#pragma once

#include <QLocalServer>
#include <QLockFile>
#include <QObject>
#include <QString>
#include <memory>

namespace pellwin::ui {

class SingleInstance : public QObject {
  Q_OBJECT

 public:
  enum class Claim {
    first,        // this is the only one: it listens from now on
    toldRunning,  // another one runs and was asked to open its window: exit now
    noAnswer,     // another one holds the lock but did not take the message
  };

  // `folder` holds the lock and the socket: the runtime folder ($XDG_RUNTIME_DIR) for real.
  explicit SingleInstance(const QString& folder);
  ~SingleInstance() override;

  // The runtime folder Qt finds for this user.
  [[nodiscard]] static QString runtimeFolder();

  [[nodiscard]] Claim claim();

 signals:
  // A later start asked for the window. Emitted on this object's thread.
  void openRequested();

 private:
  [[nodiscard]] bool tellRunning() const;
  void listen();

  QString socketPath_;
  QLockFile lock_;
  std::unique_ptr<QLocalServer> server_;
};

}  // namespace pellwin::ui
