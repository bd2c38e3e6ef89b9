#include "probe/files/scan_cache.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "core/base/checked_math.h"
#include "probe/files/folder_walk.h"
#include "probe/files/json_tree_reader.h"
#include "probe/files/size_node_json.h"

namespace pellwin {

std::string CachedScan::encode() const {
  std::string out = "{\"version\":" + std::to_string(version) + ",\"tree\":";
  SizeNodeJSON::append(tree, out);
  out += ",\"scannedAt\":";
  out += nlohmann::json(scannedAt - SizeNodeJSON::referenceDateOffset).dump();
  bool exact = true;
  out += ",\"root\":";
  out += SizeNodeJSON::quoted(root, &exact);
  if (!exact) out += ",\"rootBytes\":\"" + SizeNodeJSON::hexBytes(root) + "\"";
  out += ",\"access\":";
  out += SizeNodeJSON::quoted(FullDiskAccess::rawValue(access));
  out += '}';
  return out;
}

std::uint64_t CachedScan::textBytesAtLeast() const {
  std::uint64_t bytes = root.size();
  tree.forEach([&](const SizeNode& node) { bytes += node.path.size() + node.name.size(); });
  return bytes;
}

namespace {

// Every folder at least as large as what it holds, with no sum past 64 bits: the removal code
// subtracts a child from its ancestors and treats going below zero as a fatal error, so a
// cache that breaks this must never load.
bool sizesAddUp(const SizeNode& tree) {
  bool consistent = true;
  tree.forEach([&](const SizeNode& node) {
    if (!consistent) return;
    if (node.restCount < 0 || (!node.isDirectory && !node.children.empty())) {
      consistent = false;
      return;
    }
    std::optional<std::uint64_t> held = node.restBytes;
    for (const SizeNode& child : node.children) {
      if (held) held = checkedSum(*held, child.bytes);
    }
    consistent = held && *held <= node.bytes;
  });
  return consistent;
}

}  // namespace

std::optional<CachedScan> CachedScan::decode(std::string_view json) {
  JSONTreeReader reader(JSONTreeReader::Shape::cachedScan);
  if (!nlohmann::json::sax_parse(json, &reader) || !reader.finished()) return std::nullopt;
  if (reader.version != currentVersion) return std::nullopt;
  const auto access = FullDiskAccess::stateFromRawValue(*reader.access);
  if (!access) return std::nullopt;
  SizeNode tree = reader.takeTree();
  if (!sizesAddUp(tree)) return std::nullopt;
  return CachedScan{.version = *reader.version,
                    .tree = std::move(tree),
                    .scannedAt = *reader.scannedAt + SizeNodeJSON::referenceDateOffset,
                    .root = reader.rootBytes ? *reader.rootBytes : *reader.root,
                    .access = *access};
}

std::string ScanCache::defaultPath(std::string_view dataFolder) {
  return std::string(dataFolder) + "/" + std::string(fileName);
}

std::expected<void, SystemError> ScanCache::save(const CachedScan& scan) const {
  if (scan.textBytesAtLeast() > largestFile) {
    return std::unexpected(SystemError{.operation = "write", .path = path_, .code = EFBIG});
  }
  const std::filesystem::path file(path_);
  std::error_code error;
  if (file.has_parent_path()) std::filesystem::create_directories(file.parent_path(), error);
  if (error) {
    return std::unexpected(SystemError{
        .operation = "create", .path = file.parent_path().string(), .code = error.value()});
  }

  std::string temporary = path_ + ".XXXXXX";
  FileDescriptor fd(::mkostemp(temporary.data(), O_CLOEXEC));
  if (!fd.valid()) return std::unexpected(SystemError::fromErrno("create", temporary));
  const std::string text = scan.encode();
  std::size_t written = 0;
  while (written < text.size()) {
    const ssize_t n = ::write(fd.get(), text.data() + written, text.size() - written);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      const SystemError problem = SystemError::fromErrno("write", temporary);
      ::unlink(temporary.c_str());
      return std::unexpected(problem);
    }
    written += static_cast<std::size_t>(n);
  }
  // mkostemp makes the file readable by its owner only, which suits a map of someone's files.
  if (::fsync(fd.get()) != 0 || ::close(fd.release()) != 0) {
    const SystemError problem = SystemError::fromErrno("flush", temporary);
    ::unlink(temporary.c_str());
    return std::unexpected(problem);
  }
  if (::rename(temporary.c_str(), path_.c_str()) != 0) {
    const SystemError problem = SystemError::fromErrno("replace", path_);
    ::unlink(temporary.c_str());
    return std::unexpected(problem);
  }
  return {};
}

std::optional<CachedScan> ScanCache::load() const {
  std::ifstream file(path_, std::ios::binary);
  if (!file) return std::nullopt;
  const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (file.bad()) return std::nullopt;
  return CachedScan::decode(text);
}

}  // namespace pellwin
