// Lists folders ahead of the space-map walk on a few threads of its own, so that the disk has
// several folders to read at once instead of one: a cold scan spends most of its time waiting
// for the disk. A thread that lists a folder asks at once for the folders inside it, so the
// reading runs ahead of the walk rather than a step behind it, up to a limit on listings asked
// for and not yet taken. The walk still takes each listing itself, one at a time and in its
// own order, so the tree it builds never depends on which thread read what. The threads start
// with the nice value and I/O priority of the thread that makes the prefetch (Linux copies both
// to a new thread), so a background scan stays a background scan.
// One owner thread calls `request` and `take`; the reading threads are internal.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "probe/files/walk_listing.h"

namespace pellwin {

class FolderPrefetch {
 public:
  // The order in which a depth-first walk needs folders: the deepest first, then the earliest in
  // its parent's listing. Free threads take the second in this order when there are several.
  struct Rank {
    std::size_t depth = 0;
    std::size_t index = 0;
  };
  class Ticket;
  // Tickets for folders of a listing, each with its index in the listing, in listing order.
  using Tickets = std::vector<std::pair<std::size_t, std::shared_ptr<Ticket>>>;

  struct Request {
    std::shared_ptr<const FileDescriptor> parent{};  // kept open until the folder is read
    std::string name{};                              // of the folder inside `parent`
    Rank rank{};
  };

  struct Taken {
    WalkListing listing{};
    // Tickets a thread already asked for, for every folder of the listing; empty when it did
    // not (the limit was reached, or the walk read the folder itself).
    Tickets ahead{};
  };

  // `threads` reading threads (none: every listing is read by `take`, on the caller's thread);
  // threads ask for no more than `limit` listings ahead of the walk.
  FolderPrefetch(std::size_t threads, std::uint64_t rootDevice, std::size_t limit);
  FolderPrefetch(const FolderPrefetch&) = delete;
  FolderPrefetch& operator=(const FolderPrefetch&) = delete;
  // Drops the requests no thread has begun and waits for those being read.
  ~FolderPrefetch();

  [[nodiscard]] std::size_t threads() const { return workers_.size(); }
  // Listings asked for, by the walk or by the threads, and not yet taken.
  [[nodiscard]] std::size_t outstanding() const { return outstanding_->load(); }

  // Asks for the folders to be listed, all in one go so that the threads are woken once for
  // them; the tickets come back in the order of the requests.
  [[nodiscard]] std::vector<std::shared_ptr<Ticket>> request(std::vector<Request> requests);

  // The requested listing: at once when read, after waiting when a thread is reading it, or
  // read here, on the caller's thread, when no thread has begun it. At most once per ticket.
  [[nodiscard]] Taken take(Ticket& ticket, std::vector<char>& buffer);

 private:
  struct RanksFirst {
    bool operator()(const std::shared_ptr<Ticket>& a, const std::shared_ptr<Ticket>& b) const;
  };

  void work();
  [[nodiscard]] std::shared_ptr<Ticket> nextQueued();  // with mutex_ held; null when none
  // Tickets for every folder of a listing a thread just read, when the limit allows them all.
  [[nodiscard]] Tickets askAhead(const WalkListing& listing, const Rank& rank);
  void enqueue(const std::vector<std::shared_ptr<Ticket>>& tickets);

  std::uint64_t rootDevice_;
  std::size_t limit_;
  // Shared with the tickets: one that goes untaken gives its place back when it goes.
  std::shared_ptr<std::atomic<std::size_t>> outstanding_;
  std::mutex mutex_;  // around the queue, `ending_` and `idle_`; a ticket's own state needs none
  std::condition_variable queued_;  // a request arrived, or the prefetch is ending
  std::set<std::shared_ptr<Ticket>, RanksFirst> queue_;  // not begun, first-ranked first
  bool ending_ = false;
  std::size_t idle_ = 0;  // threads waiting for a request
  std::vector<std::jthread> workers_;
};

}  // namespace pellwin
