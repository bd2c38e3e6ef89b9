#include "app/commands/report_command.h"

#include <nlohmann/json.hpp>
#include <ostream>
#include <system_error>

#include "app/models/report_model.h"
#include "core/base/format.h"
#include "core/base/printable_text.h"
#include "store/history_store.h"

namespace pellwin::ReportCommand {

namespace {

constexpr std::string_view kDot = " · ";

std::string titles(const std::vector<Resource>& resources) {
  std::string text;
  for (Resource resource : resources) {
    if (!text.empty()) text += ", ";
    text += title(resource);
  }
  return text;
}

std::string padded(std::string text, std::size_t width) {
  if (text.size() < width) text.resize(width, ' ');
  return text;
}

nlohmann::ordered_json causesJSON(const std::vector<CauseTotal>& causes) {
  nlohmann::ordered_json all = nlohmann::ordered_json::array();
  for (const CauseTotal& cause : causes) {
    nlohmann::ordered_json resources = nlohmann::ordered_json::array();
    for (Resource resource : cause.resources) resources.push_back(rawValue(resource));
    all.push_back({{"appID", cause.appID},
                   {"name", cause.name},
                   {"seconds", cause.seconds},
                   {"resources", resources},
                   {"days", cause.days}});
  }
  return all;
}

nlohmann::ordered_json resourcesJSON(const std::vector<ResourceWeek>& resources) {
  nlohmann::ordered_json all = nlohmann::ordered_json::array();
  for (const ResourceWeek& week : resources) {
    all.push_back({{"resource", rawValue(week.resource)},
                   {"title", week.title},
                   {"strainSeconds", week.strainSeconds},
                   {"problemSeconds", week.problemSeconds},
                   {"previousStrainSeconds", week.previousStrainSeconds},
                   {"previousProblemSeconds", week.previousProblemSeconds},
                   {"text", week.text},
                   {"previousText", week.previousText},
                   {"causes", causesJSON(week.causes)}});
  }
  return all;
}

nlohmann::ordered_json cleanupsJSON(const std::vector<CleanupLine>& cleanups) {
  nlohmann::ordered_json all = nlohmann::ordered_json::array();
  for (const CleanupLine& line : cleanups) {
    all.push_back({{"time", line.row.time},
                   {"rules", line.row.rules},
                   {"bytesDeleted", line.row.bytesDeleted},
                   {"bytesTrashed", line.row.bytesTrashed},
                   {"freedBytes", line.freedBytes},
                   {"items", line.row.items},
                   {"text", line.text}});
  }
  return all;
}

}  // namespace

std::vector<std::string> lines(const WeeklyReport& report) {
  std::vector<std::string> out = {"Weekly report" + std::string(kDot) + report.periodText,
                                  report.causesHeading};
  if (report.causes.empty()) out.push_back("  " + report.causesEmptyText);
  for (const CauseTotal& cause : report.causes) {
    out.push_back("  " + printableText(cause.name) + std::string(kDot) +
                  Format::elapsed(cause.seconds) + " red" + std::string(kDot) +
                  titles(cause.resources));
  }
  out.push_back(report.trendText);
  for (const std::string& change : report.changes) out.push_back("  " + printableText(change));
  out.push_back("Amber and red time, this week (last week)");
  for (const ResourceWeek& week : report.resources) {
    out.push_back("  " + padded(week.title, 14) + week.text + " (" + week.previousText + ")");
  }
  out.push_back("Cleanups: " + report.cleanupsText);
  for (const CleanupLine& line : report.cleanups) {
    out.push_back("  " + line.whenText + std::string(kDot) + printableText(line.text));
  }
  return out;
}

std::string json(const WeeklyReport& report) {
  const ReportWeeks& w = report.weeks;
  const nlohmann::ordered_json document{
      {"period", report.periodText},
      {"week",
       {{"firstDay", w.firstDay}, {"lastDay", w.lastDay}, {"start", w.start}, {"end", w.end}}},
      {"previousWeek",
       {{"firstDay", w.previousFirstDay},
        {"lastDay", w.previousLastDay},
        {"start", w.previousStart},
        {"end", w.start}}},
      {"recorded", report.recorded},
      {"causes", causesJSON(report.causes)},
      {"redSeconds", report.redSeconds},
      {"previousRedSeconds", report.previousRedSeconds},
      {"trend", rawValue(report.trend)},
      {"trendText", report.trendText},
      {"changes", report.changes},
      {"resources", resourcesJSON(report.resources)},
      {"cleanups", cleanupsJSON(report.cleanups)},
      {"freedBytes", report.freedBytes},
  };
  return document.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

int run(const std::filesystem::path& path, double now, const Calendar& calendar, bool asJSON,
        std::ostream& out, std::ostream& err) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) {
    err << "There is no history file at " << printableText(path.string())
        << ": Tovrin keeps history while its tray app runs.\n";
    return 1;
  }
  auto store = HistoryStore::open(path);
  if (!store) {
    err << "Can't read the history file: " << description(store.error()) << "\n";
    return 1;
  }
  auto report = readWeeklyReport(*store, now, calendar);
  if (!report) {
    err << "Can't read the history file: " << report.error().description() << "\n";
    return 1;
  }
  if (asJSON) {
    out << json(*report) << "\n";
  } else {
    for (const std::string& line : lines(*report)) out << line << "\n";
  }
  return 0;
}

}  // namespace pellwin::ReportCommand
