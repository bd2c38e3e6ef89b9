#include "app/models/notifier.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>
#include <optional>

#include "testing/enum_text_round_trip.h"
#include "testing/owner_loop.h"

namespace pellwin {
namespace {

// Records what it is asked to show; can fail either call, and can hold a call until released.
class FakeNotificationServer final : public NotificationServer {
 public:
  struct Shared {
    std::mutex mutex;
    std::condition_variable released;
    bool holding = false;
    std::vector<std::string> capabilities{"body", "body-markup"};
    std::optional<NotificationServerError> capabilitiesFail;
    std::optional<NotificationServerError> notifyFails;
    std::vector<NotificationRequest> shown;
  };

  explicit FakeNotificationServer(std::shared_ptr<Shared> shared) : shared_(std::move(shared)) {}

  std::expected<std::vector<std::string>, NotificationServerError> capabilities() override {
    std::unique_lock lock(shared_->mutex);
    shared_->released.wait(lock, [&] { return !shared_->holding; });
    if (shared_->capabilitiesFail) return std::unexpected(*shared_->capabilitiesFail);
    return shared_->capabilities;
  }
  std::expected<std::uint32_t, NotificationServerError> notify(
      const NotificationRequest& request) override {
    std::lock_guard lock(shared_->mutex);
    if (shared_->notifyFails) return std::unexpected(*shared_->notifyFails);
    shared_->shown.push_back(request);
    return static_cast<std::uint32_t>(shared_->shown.size());
  }

 private:
  std::shared_ptr<Shared> shared_;
};

struct NotifierRig {
  std::shared_ptr<FakeNotificationServer::Shared> server =
      std::make_shared<FakeNotificationServer::Shared>();
  testing::OwnerLoop owner;
  Notifier notifier{std::make_unique<FakeNotificationServer>(server), owner.poster()};

  NotificationResult post(std::string title, std::string body) {
    std::optional<NotificationResult> result;
    notifier.post(std::move(title), std::move(body),
                  [&](NotificationResult r) { result = std::move(r); });
    EXPECT_TRUE(owner.runUntil([&] { return result.has_value(); }));
    return result.value_or(NotificationResult{.reason = "no answer in the test"});
  }
};

TEST(NotificationRequest, StripsEverythingAndEscapesOnlyAMarkupBody) {
  const struct {
    const char* why;
    const char* title;
    const char* body;
    bool markup;
    const char* summary;
    const char* sentBody;
  } cases[] = {
      {"plain texts pass", "CPU is overloaded", "make is using 390%.", true, "CPU is overloaded",
       "make is using 390%."},
      {"markup characters in a name are escaped in a markup body", "Memory <is> low & slow",
       "Web <Content> & \"tab\" is using 2.1 GB.", true, "Memory <is> low & slow",
       "Web &lt;Content&gt; &amp; \"tab\" is using 2.1 GB."},
      {"without markup the body goes as it is", "T", "a <b> & c", false, "T", "a <b> & c"},
      {"an entity already in a name is escaped again", "T", "&amp;", true, "T", "&amp;amp;"},
      {"control characters go from title and body", "Heat\x1b[31m\n high",
       "python3 evil\x07.py\tis using 2 GB.", true, "Heat[31m  high",
       "python3 evil.py is using 2 GB."},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    const NotificationRequest request = notificationRequest(c.title, c.body, c.markup);
    EXPECT_EQ(request.summary, c.summary);
    EXPECT_EQ(request.body, c.sentBody);
    EXPECT_EQ(request.appName, "Tovrin");
    EXPECT_EQ(request.desktopEntry, Notifier::desktopEntry);
  }
}

TEST(Notifier, DeliversWhatTheServerAcceptsAndEscapesWhenItReadsMarkup) {
  NotifierRig rig;
  EXPECT_EQ(rig.post("Memory is under strain", "Web <Content> is using 3 GB."),
            NotificationResult{.delivered = true});
  rig.server->capabilities = {"body"};
  EXPECT_EQ(rig.post("Memory is under strain", "Web <Content> is using 3 GB."),
            NotificationResult{.delivered = true});
  ASSERT_EQ(rig.server->shown.size(), 2u);
  EXPECT_EQ(rig.server->shown[0].body, "Web &lt;Content&gt; is using 3 GB.");
  EXPECT_EQ(rig.server->shown[1].body, "Web <Content> is using 3 GB.");
}

TEST(Notifier, ReportsEveryFailureAsNotDeliveredWithAReason) {
  using enum NotificationFailure;
  const struct {
    const char* why;
    std::optional<NotificationServerError> capabilitiesFail;
    std::optional<NotificationServerError> notifyFails;
    const char* reason;
  } cases[] = {
      {"no server", NotificationServerError{.failure = noServer}, std::nullopt,
       "no notification server is running"},
      {"a server that does not answer", NotificationServerError{.failure = noAnswer},
       std::nullopt, "the notification server didn't answer in time"},
      {"a server that refuses the post", std::nullopt,
       NotificationServerError{.failure = refused, .detail = "Too many\nnotifications"},
       "the notification server refused it: Too many notifications"},
      {"a refusal without words", std::nullopt, NotificationServerError{.failure = refused},
       "the notification server refused it"},
      {"a server that goes away between the calls", std::nullopt,
       NotificationServerError{.failure = noServer}, "no notification server is running"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    NotifierRig rig;
    rig.server->capabilitiesFail = c.capabilitiesFail;
    rig.server->notifyFails = c.notifyFails;
    const NotificationResult result = rig.post("Title", "Body");
    EXPECT_FALSE(result.delivered);
    EXPECT_EQ(result.status(), "not delivered");
    EXPECT_EQ(result.reason, c.reason);
    EXPECT_TRUE(rig.server->shown.empty());
  }
}

TEST(Notifier, PostReturnsWhileTheServerIsStillThinking) {
  NotifierRig rig;
  rig.server->holding = true;
  std::optional<NotificationResult> result;
  rig.notifier.post("Title", "Body", [&](NotificationResult r) { result = std::move(r); });
  rig.notifier.post("Second", "Body");  // no completion: nothing comes back for it
  EXPECT_FALSE(result.has_value());
  {
    std::lock_guard lock(rig.server->mutex);
    rig.server->holding = false;
  }
  rig.server->released.notify_all();
  ASSERT_TRUE(rig.owner.runUntil([&] { return result.has_value(); }));
  EXPECT_TRUE(result->delivered);
}

TEST(Notifier, AuthorizedWhenAServerAnswersNotDeterminedWithoutOne) {
  using enum NotificationFailure;
  const struct {
    const char* why;
    std::optional<NotificationServerError> fails;
    NotificationAuthorization expected;
  } cases[] = {
      {"a server lists its capabilities", std::nullopt, NotificationAuthorization::authorized},
      {"a server answers with an error", NotificationServerError{.failure = refused},
       NotificationAuthorization::authorized},
      {"no server", NotificationServerError{.failure = noServer},
       NotificationAuthorization::notDetermined},
      {"a server that never answers", NotificationServerError{.failure = noAnswer},
       NotificationAuthorization::notDetermined},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    NotifierRig rig;
    rig.server->capabilitiesFail = c.fails;
    std::optional<NotificationAuthorization> status;
    rig.notifier.authorization([&](NotificationAuthorization s) { status = s; });
    ASSERT_TRUE(rig.owner.runUntil([&] { return status.has_value(); }));
    EXPECT_EQ(status, c.expected);
  }
}

}  // namespace

namespace testing {

using NotifierEnums = ::testing::Types<NotificationAuthorization, NotificationFailure>;
INSTANTIATE_TYPED_TEST_SUITE_P(Notifier, EnumTextRoundTrip, NotifierEnums);

}  // namespace testing
}  // namespace pellwin
