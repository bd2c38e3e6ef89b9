#include "store/cause_json.h"

#include <nlohmann/json.hpp>

namespace pellwin {

std::string encodeCauses(const std::vector<Cause>& causes) {
  nlohmann::json array = nlohmann::json::array();
  for (const Cause& cause : causes) {
    array.push_back({{"appID", cause.appID}, {"name", cause.name}, {"seconds", cause.seconds}});
  }
  try {
    return array.dump();
  } catch (const nlohmann::json::exception&) {
    return "[]";
  }
}

std::vector<Cause> decodeCauses(std::string_view text) {
  const nlohmann::json array = nlohmann::json::parse(text, nullptr, /*allow_exceptions=*/false);
  if (!array.is_array()) return {};
  std::vector<Cause> causes;
  for (const nlohmann::json& item : array) {
    if (!item.is_object()) return {};
    const auto appID = item.find("appID");
    const auto name = item.find("name");
    const auto seconds = item.find("seconds");
    if (appID == item.end() || !appID->is_string() || name == item.end() || !name->is_string() ||
        seconds == item.end() || !seconds->is_number()) {
      return {};
    }
    causes.push_back(Cause{.appID = appID->get<std::string>(),
                           .name = name->get<std::string>(),
                           .seconds = seconds->get<double>()});
  }
  return causes;
}

}  // namespace pellwin
