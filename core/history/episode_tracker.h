// Watches the displayed health of each resource, snapshot by snapshot, and turns red that lasts
// a minute into a slow period: opened after 60 s of red, closed when the red ends, the reading
// disappears or snapshots stop coming. Keeps the worst reading and the app most to blame.
// A value owned by the history side; not thread-safe. Times are seconds since 1970.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "core/history/episode_row.h"
#include "core/monitor/lead.h"
#include "core/monitor/resource.h"
#include "core/monitor/snapshot.h"

namespace pellwin {

class EpisodeTracker {
 public:
  // Red must last this long, from its first snapshot to the current one, to be a slow period.
  static constexpr double minimumLength = 60.0;
  // More than this between two snapshots (sleep, a stall, a restart) ends every period.
  static constexpr double maxGap = 30.0;

  // Call once per snapshot, in time order, with the health shown on screen and the lead of
  // each resource. Returns rows closed by a gap first, then, in resource order, rows of
  // periods that open now (no `end`) or close now (with `end`).
  [[nodiscard]] std::vector<EpisodeRow> ingest(const Snapshot& snapshot,
                                               const std::map<Resource, Health>& displayed,
                                               const std::map<Resource, Lead>& leads);
  // Closes every opened period; runs shorter than a minute are dropped without a row.
  [[nodiscard]] std::vector<EpisodeRow> closeAll();

  // The reading a period's peak is taken from, in the resource's own unit.
  [[nodiscard]] static double reading(Resource resource, const Snapshot& snapshot);
  // Whether `a` is a worse reading than `b`: lower free space, higher everything else.
  [[nodiscard]] static bool worse(Resource resource, double a, double b);
  [[nodiscard]] static std::string peakText(Resource resource, double peak);

 private:
  struct LeadValue {
    std::optional<double> reading;
    std::string value;
  };
  struct Run {
    double start = 0;
    double last = 0;
    bool opened = false;
    std::optional<double> peak;
    std::map<std::string, double> redSeconds;     // by app ID: seconds it was the lead
    std::map<std::string, Lead> leads;            // by app ID: its latest lead
    std::map<std::string, LeadValue> leadValues;  // its figure at the worst reading it led
  };

  void update(Run& run, Resource resource, const Snapshot& snapshot,
              const std::optional<Lead>& lead) const;
  [[nodiscard]] static EpisodeRow row(Resource resource, const Run& run, bool closed);

  std::map<Resource, Run> runs_;
  std::optional<double> lastTimestamp_;
};

}  // namespace pellwin
