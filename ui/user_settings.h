// The user's settings ("notify.cpu", "com.pellwin.Pellwin.hasLaunched"), kept with QSettings in
// one INI file, $XDG_CONFIG_HOME/tovrin/tovrin.conf for the real user. Each call opens its own
// QSettings on that file, so copies may be used on any thread (the sampler reads the
// notification switches).
#pragma once

#include <QString>
#include <optional>
#include <string>
#include <string_view>

#include "app/environment.h"

namespace pellwin::ui {

class UserSettings {
 public:
  static constexpr std::string_view hasLaunchedKey = "com.pellwin.Pellwin.hasLaunched";
  // The measure the Monitor's app list was last ordered by (a MonitorSort raw value).
  static constexpr std::string_view monitorSortKey = "monitor.sort";

  // The settings file of the user `environment` describes.
  [[nodiscard]] static UserSettings forUser(const Environment& environment);

  explicit UserSettings(QString file) : file_(std::move(file)) {}

  // Absent when never written.
  [[nodiscard]] std::optional<bool> flag(std::string_view key) const;
  // Written to disk before it returns.
  void setFlag(std::string_view key, bool value) const;
  // Absent when never written.
  [[nodiscard]] std::optional<std::string> text(std::string_view key) const;
  // Written to disk before it returns.
  void setText(std::string_view key, std::string_view value) const;

  [[nodiscard]] const QString& file() const { return file_; }

 private:
  QString file_;
};

// Whether this is the first launch: true only while "com.pellwin.Pellwin.hasLaunched" was never
// set, and it is set now, so every later call says false.
[[nodiscard]] bool recordLaunch(const UserSettings& settings);

}  // namespace pellwin::ui
