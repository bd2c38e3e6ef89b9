#include "probe/files/folder_prefetch.h"

#include <algorithm>

namespace pellwin {

class FolderPrefetch::Ticket {
 public:
  enum class State { queued, reading, listed, taken };

  Ticket(std::shared_ptr<const FileDescriptor> parent, std::string name, Rank rank,
         std::shared_ptr<std::atomic<std::size_t>> outstanding)
      : parent_(std::move(parent)),
        name_(std::move(name)),
        rank_(rank),
        outstanding_(std::move(outstanding)) {}
  Ticket(const Ticket&) = delete;
  Ticket& operator=(const Ticket&) = delete;
  ~Ticket() {
    if (state_ != State::taken) outstanding_->fetch_sub(1);
  }

  // Reads the listing and lets go of the parent; called with no lock held, by whoever moved
  // the state from `queued` to `reading` or `taken`.
  WalkListing read(std::uint64_t rootDevice, std::vector<char>& buffer) {
    WalkListing listing = listForWalk(parent_->get(), name_, rootDevice, buffer);
    parent_.reset();
    return listing;
  }

  // Marks the ticket taken, giving its place back.
  void markTaken() {
    state_ = State::taken;
    outstanding_->fetch_sub(1);
  }

  std::shared_ptr<const FileDescriptor> parent_;
  std::string name_;
  Rank rank_;
  std::shared_ptr<std::atomic<std::size_t>> outstanding_;
  // Moves from `queued` to `reading` (a thread) or `taken` (the walk, reading it itself), and
  // from `reading` to `listed` once `listing_` and `ahead_` are written; the walk then takes it.
  std::atomic<State> state_ = State::queued;
  WalkListing listing_{};
  Tickets ahead_{};
};

bool FolderPrefetch::RanksFirst::operator()(const std::shared_ptr<Ticket>& a,
                                            const std::shared_ptr<Ticket>& b) const {
  if (a->rank_.depth != b->rank_.depth) return a->rank_.depth > b->rank_.depth;
  if (a->rank_.index != b->rank_.index) return a->rank_.index < b->rank_.index;
  return a.get() < b.get();
}

FolderPrefetch::FolderPrefetch(std::size_t threads, std::uint64_t rootDevice, std::size_t limit)
    : rootDevice_(rootDevice),
      limit_(limit),
      outstanding_(std::make_shared<std::atomic<std::size_t>>(0)) {
  workers_.reserve(threads);
  for (std::size_t i = 0; i < threads; ++i) workers_.emplace_back([this] { work(); });
}

FolderPrefetch::~FolderPrefetch() {
  {
    std::lock_guard lock(mutex_);
    ending_ = true;
    queue_.clear();
  }
  queued_.notify_all();
  for (auto& worker : workers_) worker.join();
}

void FolderPrefetch::enqueue(const std::vector<std::shared_ptr<Ticket>>& tickets) {
  std::size_t wake = 0;
  {
    std::lock_guard lock(mutex_);
    queue_.insert(tickets.begin(), tickets.end());
    wake = std::min(tickets.size(), idle_);
  }
  // Waking a thread costs a system call and two switches: only sleeping ones, and only as many
  // as there is work for. Those awake take the rest as they come round.
  for (std::size_t i = 0; i < wake; ++i) queued_.notify_one();
}

std::vector<std::shared_ptr<FolderPrefetch::Ticket>> FolderPrefetch::request(
    std::vector<Request> requests) {
  std::vector<std::shared_ptr<Ticket>> tickets;
  tickets.reserve(requests.size());
  outstanding_->fetch_add(requests.size());
  for (Request& request : requests) {
    tickets.push_back(std::make_shared<Ticket>(std::move(request.parent), std::move(request.name),
                                               request.rank, outstanding_));
  }
  if (!workers_.empty() && !tickets.empty()) enqueue(tickets);
  return tickets;
}

// Takes no lock: the ticket's state alone says who reads it, so the walk and the threads never
// queue behind each other for a folder that is ready or still to be begun.
FolderPrefetch::Taken FolderPrefetch::take(Ticket& ticket, std::vector<char>& buffer) {
  auto state = Ticket::State::queued;
  if (ticket.state_.compare_exchange_strong(state, Ticket::State::taken)) {
    // Nobody has begun it: reading it here is quicker than waiting for a thread to be free.
    // It stays queued and the threads pass over it.
    ticket.outstanding_->fetch_sub(1);
    return {.listing = ticket.read(rootDevice_, buffer), .ahead = {}};
  }
  while (state == Ticket::State::reading) {
    ticket.state_.wait(state);
    state = ticket.state_.load();
  }
  ticket.markTaken();
  return {.listing = std::move(ticket.listing_), .ahead = std::move(ticket.ahead_)};
}

FolderPrefetch::Tickets FolderPrefetch::askAhead(const WalkListing& listing, const Rank& rank) {
  if (!listing.complete) return {};
  const auto folders = static_cast<std::size_t>(
      std::count_if(listing.entries.begin(), listing.entries.end(),
                    [](const WalkEntry& entry) { return entry.kind == WalkEntry::Kind::folder; }));
  if (folders == 0) return {};
  // All of them or none, so that the walk knows which folders it still has to ask for.
  if (outstanding_->fetch_add(folders) + folders > limit_) {
    outstanding_->fetch_sub(folders);
    return {};
  }
  Tickets ahead;
  ahead.reserve(folders);
  for (std::size_t i = 0; i < listing.entries.size(); ++i) {
    const WalkEntry& entry = listing.entries[i];
    if (entry.kind != WalkEntry::Kind::folder) continue;
    ahead.emplace_back(
        i, std::make_shared<Ticket>(listing.folder, std::string(listing.name(entry)),
                                    Rank{.depth = rank.depth + 1, .index = i}, outstanding_));
  }
  return ahead;
}

// The second-ranked folder when there are several: the first is the one the walk needs next,
// and it reads that one itself rather than wait for a thread that has only just begun it.
std::shared_ptr<FolderPrefetch::Ticket> FolderPrefetch::nextQueued() {
  while (true) {
    // Those the walk took itself go first.
    while (!queue_.empty() && (*queue_.begin())->state_ != Ticket::State::queued) {
      queue_.erase(queue_.begin());
    }
    if (queue_.empty()) return nullptr;
    auto at = queue_.size() > 1 ? std::next(queue_.begin()) : queue_.begin();
    std::shared_ptr<Ticket> ticket = *at;
    queue_.erase(at);
    auto state = Ticket::State::queued;
    if (ticket->state_.compare_exchange_strong(state, Ticket::State::reading)) return ticket;
  }
}

void FolderPrefetch::work() {
  std::vector<char> buffer;
  std::unique_lock lock(mutex_);
  while (true) {
    if (!ending_ && queue_.empty()) {
      ++idle_;
      queued_.wait(lock, [&] { return ending_ || !queue_.empty(); });
      --idle_;
    }
    if (ending_) return;
    std::shared_ptr<Ticket> ticket = nextQueued();
    if (!ticket) continue;
    lock.unlock();
    ticket->listing_ = ticket->read(rootDevice_, buffer);
    ticket->ahead_ = askAhead(ticket->listing_, ticket->rank_);
    std::vector<std::shared_ptr<Ticket>> inside;
    inside.reserve(ticket->ahead_.size());
    for (const auto& [index, child] : ticket->ahead_) inside.push_back(child);
    if (!inside.empty()) enqueue(inside);
    ticket->state_ = Ticket::State::listed;
    ticket->state_.notify_one();
    ticket.reset();
    lock.lock();
  }
}

}  // namespace pellwin
