#include "probe/files/folder_prefetch.h"

#include <algorithm>
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
  State state_ = State::queued;
  WalkListing listing_{};
};

namespace {

// The heap's order: the first-ranked ticket is the "largest".
struct RanksLater {
  bool operator()(const std::shared_ptr<FolderPrefetch::Ticket>& a,
                  const std::shared_ptr<FolderPrefetch::Ticket>& b) const {
    if (a->rank_.depth != b->rank_.depth) return a->rank_.depth < b->rank_.depth;
    return a->rank_.index > b->rank_.index;
  }
};

}  // namespace

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
  {
    std::lock_guard lock(mutex_);
    for (const auto& ticket : tickets) {
      queue_.push_back(ticket);
      std::push_heap(queue_.begin(), queue_.end(), RanksLater{});
    }
  }
  // Waking a thread costs a system call and a switch: as many as there is work for, no more.
  for (std::size_t i = 0; i < std::min(tickets.size(), workers_.size()); ++i) queued_.notify_one();
  return tickets;
}

WalkListing FolderPrefetch::take(Ticket& ticket, std::vector<char>& buffer) {
  std::unique_lock lock(mutex_);
  if (ticket.state_ == Ticket::State::queued) {
    // Nobody has begun it: reading it here is quicker than waiting for a thread to be free.
    // It stays in the heap and is passed over there.
    ticket.state_ = Ticket::State::taken;
    lock.unlock();
    return ticket.read(rootDevice_, buffer);
  }
  listed_.wait(lock, [&] { return ticket.state_ == Ticket::State::listed; });
  ticket.state_ = Ticket::State::taken;
  return std::move(ticket.listing_);
}

std::shared_ptr<FolderPrefetch::Ticket> FolderPrefetch::nextQueued() {
  while (!queue_.empty()) {
    std::pop_heap(queue_.begin(), queue_.end(), RanksLater{});
    std::shared_ptr<Ticket> ticket = std::move(queue_.back());
    queue_.pop_back();
    if (ticket->state_ == Ticket::State::queued) return ticket;
  }
  return nullptr;
}

void FolderPrefetch::work() {
  std::vector<char> buffer;
  std::unique_lock lock(mutex_);
  while (true) {
    queued_.wait(lock, [&] { return ending_ || !queue_.empty(); });
    if (ending_) return;
    std::shared_ptr<Ticket> ticket = nextQueued();
    if (!ticket) continue;
    ticket->state_ = Ticket::State::reading;
    lock.unlock();
    WalkListing listing = ticket->read(rootDevice_, buffer);
    lock.lock();
    ticket->listing_ = std::move(listing);
    ticket->state_ = Ticket::State::listed;
    listed_.notify_all();
  }
}

}  // namespace pellwin
