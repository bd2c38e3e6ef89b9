// Reads the scan cache's JSON as a stream of parser events, building the size tree with its
// own stack: neither the parser nor the reader recurses, and no intermediate JSON document is
// held, so a tree of any depth loads in little memory. Internal to the scan cache.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/space/size_node.h"

namespace pellwin {

class JSONTreeReader : public nlohmann::json_sax<nlohmann::json> {
 public:
  // A bare node, or a whole cached scan around one.
  enum class Shape { node, cachedScan };

  explicit JSONTreeReader(Shape shape) : shape_(shape) {}

  // True when the whole input was one complete value of the expected shape.
  [[nodiscard]] bool finished() const { return finished_; }
  [[nodiscard]] SizeNode takeTree() { return std::move(tree_); }

  // The cached scan's own keys; meaningful only for Shape::cachedScan once finished.
  std::optional<std::int64_t> version;
  std::optional<double> scannedAt;  // as stored: seconds since 2001
  std::optional<std::string> root;
  std::optional<std::string> rootBytes;
  std::optional<std::string> access;

  [[nodiscard]] bool null() override;
  [[nodiscard]] bool boolean(bool value) override;
  [[nodiscard]] bool number_integer(number_integer_t value) override;
  [[nodiscard]] bool number_unsigned(number_unsigned_t value) override;
  [[nodiscard]] bool number_float(number_float_t value, const string_t& text) override;
  [[nodiscard]] bool string(string_t& value) override;
  [[nodiscard]] bool binary(binary_t& value) override;
  [[nodiscard]] bool start_object(std::size_t elements) override;
  [[nodiscard]] bool key(string_t& value) override;
  [[nodiscard]] bool end_object() override;
  [[nodiscard]] bool start_array(std::size_t elements) override;
  [[nodiscard]] bool end_array() override;
  [[nodiscard]] bool parse_error(std::size_t position, const std::string& token,
                                 const nlohmann::detail::exception& error) override;

 private:
  enum class Context { top, node, children, markers, skipped };
  struct Level {
    Context context;
    SizeNode node{};         // for `node`
    std::uint32_t seen = 0;  // required keys met, for `node`
    std::string key{};       // the key whose value comes next, for `top` and `node`
    std::optional<std::string> nameBytes{};
    std::optional<std::string> pathBytes{};
  };

  // One value that is not an object or an array.
  struct Scalar {
    enum class Kind { null, flag, unsignedNumber, signedNumber, floating, text };
    Kind kind = Kind::null;
    bool flag = false;
    std::uint64_t unsignedNumber = 0;
    std::int64_t signedNumber = 0;
    double floating = 0;
    const std::string* text = nullptr;
  };

  [[nodiscard]] bool scalar(const Scalar& value);
  [[nodiscard]] bool nodeScalar(Level& level, const Scalar& value);
  [[nodiscard]] bool topScalar(Level& level, const Scalar& value);
  [[nodiscard]] bool finishNode();
  // A node's path from its text: sharing its parent's path when it is that path and one more
  // name, as every path the walk writes is, so that a deep tree loads in memory that grows
  // with its nodes, not with their paths' lengths.
  [[nodiscard]] NodePath linkedPath(std::string_view text) const;
  // The end of an object or array inside a value that is passed over.
  [[nodiscard]] bool endSkipped();

  Shape shape_;
  std::vector<Level> stack_;
  int skipDepth_ = 0;
  bool started_ = false;
  bool finished_ = false;
  bool treeSeen_ = false;
  SizeNode tree_;
};

}  // namespace pellwin
