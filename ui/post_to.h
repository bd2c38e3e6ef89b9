// The `post` function the Qt-free models take: closures run on the Qt event loop of the
// context object's thread, in the order posted, and are dropped once the context is gone.
#pragma once

#include <QObject>
#include <functional>

namespace pellwin::ui {

[[nodiscard]] std::function<void(std::function<void()>)> postTo(QObject* context);

}  // namespace pellwin::ui
