#include "ui/single_instance.h"

#include <QLocalSocket>
#include <QStandardPaths>
#include <QThread>
#include <iostream>

namespace pellwin::ui {
namespace {

constexpr const char* baseName = "com.pellwin.Pellwin";
constexpr QByteArrayView openMessage = "open\n";
// The running app may be just starting: its lock is taken before it listens.
constexpr int connectAttempts = 20;
constexpr int attemptGapMs = 100;

}  // namespace

SingleInstance::SingleInstance(const QString& folder)
    : socketPath_(folder + "/" + baseName + ".socket"), lock_(folder + "/" + baseName + ".lock") {
  lock_.setStaleLockTime(0);  // stale only when its owner is gone, however long it ran
}

SingleInstance::~SingleInstance() {
  if (server_) server_->close();
}

QString SingleInstance::runtimeFolder() {
  return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
}

SingleInstance::Claim SingleInstance::claim() {
  if (lock_.tryLock(0)) {
    listen();
    return Claim::first;
  }
  if (lock_.error() != QLockFile::LockFailedError) {
    // The folder cannot hold a lock: run rather than refuse to start.
    std::cerr << "Tovrin can't make sure it runs only once: " << lock_.fileName().toStdString()
              << " can't be written.\n";
    return Claim::first;
  }
  return tellRunning() ? Claim::toldRunning : Claim::noAnswer;
}

bool SingleInstance::tellRunning() const {
  for (int attempt = 0; attempt < connectAttempts; ++attempt) {
    QLocalSocket socket;
    socket.connectToServer(socketPath_);
    if (socket.waitForConnected(1000)) {
      socket.write(openMessage.data(), openMessage.size());
      return socket.waitForBytesWritten(1000);
    }
    QThread::msleep(attemptGapMs);
  }
  return false;
}

void SingleInstance::listen() {
  server_ = std::make_unique<QLocalServer>();
  server_->setSocketOptions(QLocalServer::UserAccessOption);
  // We hold the lock, so a socket file left here belongs to an app that is gone.
  QLocalServer::removeServer(socketPath_);
  if (!server_->listen(socketPath_)) {
    std::cerr << "Tovrin can't listen on " << socketPath_.toStdString() << ": "
              << server_->errorString().toStdString() << "\n";
    return;
  }
  connect(server_.get(), &QLocalServer::newConnection, this, [this] {
    while (QLocalSocket* socket = server_->nextPendingConnection()) {
      connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
      const auto read = [this, socket] {
        if (socket->readAll().contains("open")) emit openRequested();
      };
      connect(socket, &QLocalSocket::readyRead, this, read);
      read();  // the message may have come with the connection
    }
  });
}

}  // namespace pellwin::ui
