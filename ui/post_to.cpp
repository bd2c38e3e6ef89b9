#include "ui/post_to.h"

#include <QMetaObject>

namespace pellwin::ui {

std::function<void(std::function<void()>)> postTo(QObject* context) {
  return [context](std::function<void()> step) {
    // A queued call with a context object is discarded when the object is destroyed first.
    QMetaObject::invokeMethod(context, std::move(step), Qt::QueuedConnection);
  };
}

}  // namespace pellwin::ui
