#include "core/history/alert_lines.h"

#include "core/base/format.h"
#include "core/history/alert_display.h"

namespace pellwin {

namespace {

AlertLine lineOf(const AlertRow& row, double now, const Calendar& calendar) {
  const std::string lasted = Format::elapsed(AlertDisplay::lasted(row, now));
  AlertLine line{
      .id = row.id,
      .resource = row.resource,
      .title = std::string(title(row.resource)),
      .timeText = AlertDisplay::timeLabel(row.time, calendar),
      .message = row.message,
      .cleared = row.cleared.has_value(),
      .statusText = row.cleared ? "Cleared after " + lasted : "Red for " + lasted + " so far",
      .unread = !row.read};
  if (row.cause) {
    AlertDisplay::SplitCause split = AlertDisplay::splitCause(*row.cause);
    line.causeName = std::move(split.name);
    line.causeValue = std::move(split.value);
  }
  return line;
}

}  // namespace

std::vector<AlertSection> alertSections(const std::vector<AlertRow>& rows, double now,
                                        const Calendar& calendar) {
  std::vector<AlertSection> sections;
  for (const AlertDisplay::Group& group : AlertDisplay::groups(rows, now, calendar)) {
    AlertSection section{.label = group.label};
    for (const AlertRow& row : group.rows) section.lines.push_back(lineOf(row, now, calendar));
    sections.push_back(std::move(section));
  }
  return sections;
}

}  // namespace pellwin
