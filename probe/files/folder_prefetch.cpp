#include "probe/files/folder_prefetch.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace pellwin {

class FolderPrefetch::Ticket {
 public:
  enum class State { queued, reading, listed, taken };

  Ticket(std::shared_ptr<const FileDescriptor> parent, std::string name, Rank rank)
      : parent_(std::move(parent)), name_(std::move(name)), rank_(rank) {}

  // Reads the listing and lets go of the parent; called with no lock held, by whoever moved
  // the state from `queued` to `reading`.
  WalkListing read(std::uint64_t rootDevice, std::vector<char>& buffer) {
    WalkListing listing = listForWalk(parent_->get(), name_, rootDevice, buffer);
    parent_.reset();
    return listing;
  }

  std::shared_ptr<const FileDescriptor> parent_;
  std::string name_;
  Rank rank_;
  // Moves from `queued` to `reading` (a thread) or `taken` (the walk, reading it itself), and
  // from `reading` to `listed` once `listing_` is written, which the walk then takes.
  std::atomic<State> state_ = State::queued;
  WalkListing listing_{};
};

bool FolderPrefetch::RanksFirst::operator()(const std::shared_ptr<Ticket>& a,
                                            const std::shared_ptr<Ticket>& b) const {
  if (a->rank_.depth != b->rank_.depth) return a->rank_.depth > b->rank_.depth;
  if (a->rank_.index != b->rank_.index) return a->rank_.index < b->rank_.index;
  return a.get() < b.get();
}

FolderPrefetch::FolderPrefetch(std::size_t threads, std::uint64_t rootDevice)
    : rootDevice_(rootDevice) {
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

std::vector<std::shared_ptr<FolderPrefetch::Ticket>> FolderPrefetch::request(
    std::vector<Request> requests) {
  std::vector<std::shared_ptr<Ticket>> tickets;
  tickets.reserve(requests.size());
  for (Request& request : requests) {
    tickets.push_back(
        std::make_shared<Ticket>(std::move(request.parent), std::move(request.name), request.rank));
  }
  if (workers_.empty() || tickets.empty()) return tickets;
  std::size_t wake = 0;
  {
    std::lock_guard lock(mutex_);
    queue_.insert(tickets.begin(), tickets.end());
    wake = std::min(tickets.size(), idle_);
  }
  // Waking a thread costs a system call and two switches: only sleeping ones, and only as many
  // as there is work for. Those awake take the rest as they come round.
  for (std::size_t i = 0; i < wake; ++i) queued_.notify_one();
  return tickets;
}

// Takes no lock: the ticket's state alone says who reads it, so the walk and the threads never
// queue behind each other for a folder that is ready or still to be begun.
WalkListing FolderPrefetch::take(Ticket& ticket, std::vector<char>& buffer) {
  auto state = Ticket::State::queued;
  if (ticket.state_.compare_exchange_strong(state, Ticket::State::taken)) {
    // Nobody has begun it: reading it here is quicker than waiting for a thread to be free.
    // It stays queued and the threads pass over it.
    return ticket.read(rootDevice_, buffer);
  }
  while (state == Ticket::State::reading) {
    ticket.state_.wait(state);
    state = ticket.state_.load();
  }
  ticket.state_ = Ticket::State::taken;
  return std::move(ticket.listing_);
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
    ticket->state_ = Ticket::State::listed;
    ticket->state_.notify_one();
    ticket.reset();
    lock.lock();
  }
}

}  // namespace pellwin
