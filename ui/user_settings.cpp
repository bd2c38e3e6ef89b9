#include "ui/user_settings.h"

#include <QSettings>

namespace pellwin::ui {
namespace {

QString keyText(std::string_view key) {
  return QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size()));
}

}  // namespace

UserSettings UserSettings::forUser(const Environment& environment) {
  return UserSettings(QString::fromStdString(configHome(environment)) + "/tovrin/tovrin.conf");
}

std::optional<bool> UserSettings::flag(std::string_view key) const {
  const QVariant value = QSettings(file_, QSettings::IniFormat).value(keyText(key));
  if (!value.isValid()) return std::nullopt;
  return value.toBool();
}

void UserSettings::setFlag(std::string_view key, bool value) const {
  QSettings settings(file_, QSettings::IniFormat);
  settings.setValue(keyText(key), value);
  settings.sync();
}

std::optional<std::string> UserSettings::text(std::string_view key) const {
  const QVariant value = QSettings(file_, QSettings::IniFormat).value(keyText(key));
  if (!value.isValid()) return std::nullopt;
  return value.toString().toStdString();
}

void UserSettings::setText(std::string_view key, std::string_view value) const {
  QSettings settings(file_, QSettings::IniFormat);
  settings.setValue(keyText(key), keyText(value));
  settings.sync();
}

bool recordLaunch(const UserSettings& settings) {
  if (settings.flag(UserSettings::hasLaunchedKey).value_or(false)) return false;
  settings.setFlag(UserSettings::hasLaunchedKey, true);
  return true;
}

}  // namespace pellwin::ui
