#include "core/monitor/verdict_focus.h"

#include <gtest/gtest.h>

namespace pellwin {
namespace {

ResourceVerdict verdictOf(Resource resource, Health health, std::vector<std::string> advice) {
  return {.resource = resource,
          .health = health,
          .headline = std::string(title(resource)),
          .advice = std::move(advice)};
}

TEST(VerdictFocus, LeadsWithTheFirstResourceAtTheWorstLevel) {
  const Verdict calm{.resources = {verdictOf(Resource::memory, Health::ok, {}),
                                   verdictOf(Resource::cpu, Health::ok, {})}};
  EXPECT_EQ(focus(calm), nullptr);

  const Verdict busy{.resources = {verdictOf(Resource::memory, Health::strain, {"Quit A."}),
                                   verdictOf(Resource::cpu, Health::problem, {"Quit B."}),
                                   verdictOf(Resource::heat, Health::problem, {"Cool."})}};
  ASSERT_NE(focus(busy), nullptr);
  EXPECT_EQ(focus(busy)->resource, Resource::cpu) << "the worst level wins over resource order";

  const Verdict tie{.resources = {verdictOf(Resource::memory, Health::strain, {}),
                                  verdictOf(Resource::cpu, Health::strain, {})}};
  ASSERT_NE(focus(tie), nullptr);
  EXPECT_EQ(focus(tie)->resource, Resource::memory);
}

TEST(VerdictFocus, GathersEveryAdviceLineOnceInResourceOrder) {
  const Verdict v{.resources = {
                      verdictOf(Resource::memory, Health::strain, {"Quit Firefox.", "Quit Code."}),
                      verdictOf(Resource::cpu, Health::strain, {"Quit Firefox."}),
                      verdictOf(Resource::heat, Health::strain, {"Keep the vents clear."}),
                  }};
  EXPECT_EQ(allAdvice(v),
            (std::vector<std::string>{"Quit Firefox.", "Quit Code.", "Keep the vents clear."}));
  EXPECT_TRUE(allAdvice(Verdict{}).empty());
}

}  // namespace
}  // namespace pellwin
