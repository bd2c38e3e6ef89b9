#include "core/history/day_strip.h"

#include <map>
#include <utility>

#include "core/base/calendar.h"
#include "core/base/format.h"

namespace pellwin {

namespace {

// Strip cells show whole minutes: a few seconds of amber is still worth a colour, but not a
// text that says "0 min".
bool worthSaying(double seconds) { return seconds >= 1; }

StripCell cellOf(Resource resource, const DayRow* row) {
  StripCell cell{.resource = resource};
  if (row == nullptr) {
    cell.text = std::string(title(resource)) + ": not recorded";
    return cell;
  }
  cell.recorded = true;
  cell.strainSeconds = row->strainSeconds;
  cell.problemSeconds = row->problemSeconds;
  cell.level = worthSaying(row->problemSeconds)  ? Health::problem
               : worthSaying(row->strainSeconds) ? Health::strain
                                                 : Health::ok;
  cell.text = std::string(title(resource)) + ": " +
              redAndAmberText(row->problemSeconds, row->strainSeconds);
  return cell;
}

}  // namespace

std::string redAndAmberText(double problemSeconds, double strainSeconds) {
  std::string text;
  if (worthSaying(problemSeconds)) text = Format::elapsed(problemSeconds) + " red";
  if (worthSaying(strainSeconds)) {
    text += (text.empty() ? "" : ", ") + Format::elapsed(strainSeconds) + " amber";
  }
  return text.empty() ? "all clear" : text;
}

std::string dayKeyLabel(std::string_view day) {
  // Any zone gives the same weekday for a date; UTC's midnight is simply the easiest to name.
  const std::optional<double> midnight = Calendar().startOfDay(day);
  return midnight ? dateLabel(Calendar().local(*midnight)) : std::string();
}

std::vector<StripDay> dayStrip(const std::vector<DayRow>& rows, std::string_view lastDay,
                               int days) {
  std::map<std::pair<std::string_view, Resource>, const DayRow*> byKey;
  for (const DayRow& row : rows) byKey[{row.day, row.resource}] = &row;
  std::vector<StripDay> strip;
  for (int back = days - 1; back >= 0; --back) {
    const std::optional<std::string> day = addingDays(lastDay, -back);
    if (!day) return {};
    StripDay column{.day = *day, .label = dayKeyLabel(*day)};
    for (Resource resource : allResources) {
      const auto found = byKey.find({column.day, resource});
      column.cells.push_back(cellOf(resource, found == byKey.end() ? nullptr : found->second));
    }
    strip.push_back(std::move(column));
  }
  return strip;
}

}  // namespace pellwin
