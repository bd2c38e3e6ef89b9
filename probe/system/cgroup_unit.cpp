#include "probe/system/cgroup_unit.h"

#include <algorithm>
#include <charconv>

#include "probe/key_value_text.h"

namespace pellwin {

namespace {

bool cutSuffix(std::string_view& text, std::string_view suffix) {
  if (!text.ends_with(suffix)) return false;
  text.remove_suffix(suffix.size());
  return true;
}

bool allOf(std::string_view text, std::string_view allowed) {
  return !text.empty() && text.find_first_not_of(allowed) == std::string_view::npos;
}

std::vector<std::string_view> splitDashes(std::string_view text) {
  std::vector<std::string_view> parts;
  while (true) {
    const auto dash = text.find('-');
    parts.push_back(text.substr(0, dash));
    if (dash == std::string_view::npos) return parts;
    text.remove_prefix(dash + 1);
  }
}

std::string joinDashes(const std::vector<std::string_view>& parts, std::size_t from,
                       std::size_t to) {
  std::string joined;
  for (std::size_t i = from; i < to; ++i) {
    if (i > from) joined += '-';
    joined += parts[i];
  }
  return joined;
}

bool isTerminalScope(std::string_view unit) {
  if (!unit.ends_with(".scope")) return false;
  if (unit.starts_with("vte-spawn-") || unit.starts_with("run-")) return true;
  if (unit.starts_with("tab(") && unit.ends_with(").scope")) return true;
  std::string_view session = unit;
  return session.starts_with("session-") && cutSuffix(session, ".scope") &&
         allOf(session.substr(8), "0123456789");
}

// "dbus-:1.2-org.kde.kdeconnect@7" (unescaped, without ".service"): the bus name.
std::string busName(std::string_view unit) {
  if (!unit.starts_with("dbus-:")) return {};
  unit.remove_prefix(6);
  const auto dash = unit.find('-');
  if (dash == std::string_view::npos || !allOf(unit.substr(0, dash), "0123456789.")) return {};
  unit.remove_prefix(dash + 1);
  if (const auto at = unit.rfind('@');
      at != std::string_view::npos && allOf(unit.substr(at + 1), "0123456789")) {
    unit = unit.substr(0, at);
  }
  return std::string(unit);
}

CgroupUnit snapUnit(std::string_view body, bool scope) {
  // snap.<snap>.<app>[-<uuid>]: the uuid is hexadecimal with dashes.
  if (scope) {
    const auto dash = body.find('-');
    if (dash != std::string_view::npos && body.size() - dash > 8 &&
        allOf(body.substr(dash + 1), "0123456789abcdef-")) {
      body = body.substr(0, dash);
    }
  }
  const std::string name = unescapeUnitName(body);
  const auto dot = name.find('.');
  const std::string snap = name.substr(0, dot);
  if (snap.empty()) return {};
  CgroupUnit unit{.kind = CgroupUnit::Kind::snap};
  if (dot != std::string::npos) {
    const std::string app = name.substr(dot + 1, name.find('.', dot + 1) - dot - 1);
    if (!app.empty() && app != "hook") unit.ids.push_back(snap + "_" + app);
  }
  unit.ids.push_back(snap);
  return unit;
}

CgroupUnit appUnit(std::string_view body, std::string_view type) {
  if (type == "service") {
    body = body.substr(0, body.find('@'));
    cutSuffix(body, "-autostart");
  }
  auto parts = splitDashes(body);
  if (type == "scope" && parts.size() > 1) parts.pop_back();  // the launcher's random part
  if (parts.empty() || parts.front().empty()) return {};
  // dbus-broker's app slices: app-dbus\x2d:1.37\x2dorg.a11y.atspi.Registry.slice
  if (parts.front().starts_with("dbus\\x2d:")) {
    const std::string bus = busName(unescapeUnitName(joinDashes(parts, 0, parts.size())));
    if (bus.empty()) return {};
    return CgroupUnit{.kind = CgroupUnit::Kind::dbus, .ids = {bus}};
  }
  if (parts.front() == "flatpak" && parts.size() > 1) {
    return CgroupUnit{.kind = CgroupUnit::Kind::flatpak,
                      .ids = {unescapeUnitName(joinDashes(parts, 1, parts.size()))}};
  }
  CgroupUnit unit{.kind = CgroupUnit::Kind::app};
  if (parts.size() >= 2) unit.ids.push_back(unescapeUnitName(joinDashes(parts, 1, parts.size())));
  unit.ids.push_back(unescapeUnitName(joinDashes(parts, 0, parts.size())));
  for (std::size_t from = 2; from < parts.size(); ++from) {
    unit.ids.push_back(unescapeUnitName(joinDashes(parts, from, parts.size())));
  }
  return unit;
}

}  // namespace

std::string parseCgroupPath(std::string_view procCgroup) {
  std::string unified, legacy;
  forEachLine(procCgroup, [&](std::string_view line) {
    if (line.starts_with("0::")) unified = line.substr(3);
    const auto named = line.find(":name=systemd:");
    if (named != std::string_view::npos) legacy = line.substr(named + 14);
  });
  return unified.empty() || unified == "/" ? (legacy.empty() ? unified : legacy) : unified;
}

std::string unescapeUnitName(std::string_view name) {
  std::string out;
  out.reserve(name.size());
  for (std::size_t i = 0; i < name.size(); ++i) {
    unsigned byte = 0;
    if (name[i] == '\\' && i + 3 < name.size() && name[i + 1] == 'x' &&
        std::from_chars(name.data() + i + 2, name.data() + i + 4, byte, 16).ptr ==
            name.data() + i + 4) {
      out += static_cast<char>(byte);
      i += 3;
    } else {
      out += name[i];
    }
  }
  return out;
}

CgroupUnit parseUnitName(std::string_view component) {
  if (isTerminalScope(component)) return CgroupUnit{.kind = CgroupUnit::Kind::terminal};
  std::string_view body = component;
  if (body.starts_with("snap.")) {
    body.remove_prefix(5);
    if (cutSuffix(body, ".scope")) return snapUnit(body, true);
    if (cutSuffix(body, ".service")) return snapUnit(body, false);
    return {};
  }
  if (body.starts_with("dbus-:") && cutSuffix(body, ".service")) {
    const std::string bus = busName(unescapeUnitName(body));
    if (bus.empty()) return {};
    return CgroupUnit{.kind = CgroupUnit::Kind::dbus, .ids = {bus}};
  }
  if (!body.starts_with("app-")) return {};
  body.remove_prefix(4);
  if (cutSuffix(body, ".scope")) return appUnit(body, "scope");
  if (cutSuffix(body, ".service")) return appUnit(body, "service");
  if (cutSuffix(body, ".slice")) return appUnit(body, "slice");
  return {};
}

CgroupUnit innermostUnit(std::string_view cgroupPath) {
  while (!cgroupPath.empty()) {
    const auto slash = cgroupPath.rfind('/');
    const auto component =
        slash == std::string_view::npos ? cgroupPath : cgroupPath.substr(slash + 1);
    auto unit = parseUnitName(component);
    if (unit.kind != CgroupUnit::Kind::none) return unit;
    if (slash == std::string_view::npos) break;
    cgroupPath = cgroupPath.substr(0, slash);
  }
  return {};
}

}  // namespace pellwin
