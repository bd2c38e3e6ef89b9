#include "ui/user_settings.h"

#include <QSettings>
#include <QString>

namespace pellwin::ui {
namespace {

QSettings open() { return QSettings(QSettings::IniFormat, QSettings::UserScope, "tovrin", "tovrin"); }

QString keyText(std::string_view key) {
  return QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size()));
}

}  // namespace

std::optional<bool> storedFlag(std::string_view key) {
  const QVariant value = open().value(keyText(key));
  if (!value.isValid()) return std::nullopt;
  return value.toBool();
}

void storeFlag(std::string_view key, bool value) {
  QSettings settings = open();
  settings.setValue(keyText(key), value);
  settings.sync();
}

}  // namespace pellwin::ui
