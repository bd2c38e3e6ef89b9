// A temporary folder for tests, removed with everything in it when the owner goes away.
// Test support only: production code never includes it.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace pellwin::testing {

class ScratchFolder {
 public:
  ScratchFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "tovrin-test-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) std::abort();
    path_ = pattern;
  }
  ~ScratchFolder() {
    std::error_code ignored;
    // Tests may leave read-only folders behind; make them writable so removal succeeds.
    for (auto it = std::filesystem::recursive_directory_iterator(
             path_, std::filesystem::directory_options::skip_permission_denied, ignored);
         it != std::filesystem::recursive_directory_iterator(); it.increment(ignored)) {
      if (it->is_directory(ignored) && !it->is_symlink(ignored)) {
        std::filesystem::permissions(it->path(), std::filesystem::perms::owner_all,
                                     std::filesystem::perm_options::add, ignored);
      }
    }
    std::filesystem::remove_all(path_, ignored);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }
  [[nodiscard]] std::filesystem::path operator/(std::string_view relative) const {
    return path_ / relative;
  }

  // Writes `contents` to the relative path, creating the folders above it.
  std::filesystem::path write(std::string_view relative, std::string_view contents) const {
    const auto file = path_ / relative;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << contents;
    return file;
  }

 private:
  std::filesystem::path path_;
};

// A file's whole contents, byte for byte; empty when it cannot be read.
inline std::string fileBytes(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

// Every path under `root`, links not followed, with a file's size: enough to see that a run
// left nothing behind and changed nothing.
inline std::vector<std::string> inventory(const std::string& root) {
  std::vector<std::string> found;
  std::error_code error;
  if (!std::filesystem::exists(root, error)) return found;
  for (auto it = std::filesystem::recursive_directory_iterator(root, error);
       it != std::filesystem::recursive_directory_iterator(); it.increment(error)) {
    const auto status = it->symlink_status(error);
    found.push_back(it->path().string() + (std::filesystem::is_regular_file(status)
                                               ? " " + std::to_string(it->file_size(error))
                                               : ""));
  }
  std::ranges::sort(found);
  return found;
}

}  // namespace pellwin::testing
