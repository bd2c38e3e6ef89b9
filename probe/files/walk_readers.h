// How many threads read folders during a space-map walk: several on a solid-state disk, which
// serves many requests at once, none besides the walk's own on a rotating disk, where reads
// in parallel only move the heads back and forth. The disk is found under the sys root.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>

#include "core/base/enum_text.h"

namespace pellwin {

enum class DiskKind { solid, rotating, unknown };

[[nodiscard]] constexpr EnumTable<DiskKind::unknown> textTable(DiskKind) {
  return {{
      {DiskKind::solid, "solid"},
      {DiskKind::rotating, "rotating"},
      {DiskKind::unknown, "unknown"},
  }};
}

// The kind of the block device `device` (an st_dev) under `sysRoot`, from the whole disk's
// queue/rotational. `unknown` for a file system without a block device of its own (btrfs
// subvolumes, tmpfs, overlays), for a device missing from sys, and for a rotational flag that
// virtual disks (virtio, Xen) carry by default without the host having said anything.
[[nodiscard]] DiskKind diskKind(const std::filesystem::path& sysRoot, std::uint64_t device);

// Threads that read folders besides the walk itself: none on a rotating disk, else eight per
// processor and at most sixteen, since a reading thread mostly waits for the disk.
[[nodiscard]] std::size_t walkReaderThreads(DiskKind kind, unsigned processors);

}  // namespace pellwin
