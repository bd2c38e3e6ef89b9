// Text forms of enum class cases from one table per enum. An enum whose cases run 0, 1, ...
// `last` declares right under itself `constexpr EnumTable<E::last> textTable(E)`, listing every
// case with its text in case order; found by argument-dependent lookup, that one table gives the
// text of a case (`enumText`), the case of a text (`parseEnum`), the case of an ordinal
// (`enumFromIndex`) and the list of cases (`enumCases`). Each of them fails to compile when the
// table misses, repeats or reorders a case, or repeats a text, and when a case follows the one
// the table is sized by. Pure; safe from any thread.
#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <optional>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

namespace pellwin {

template <typename E>
struct EnumText {
  E value{};
  std::string_view text{};
};

// Sized by the last case, not by the entries written: a table that leaves a case out ends in
// an empty entry, which the check rejects.
template <auto last>
requires std::is_enum_v<decltype(last)>
using EnumTable =
    std::array<EnumText<decltype(last)>, static_cast<std::size_t>(std::to_underlying(last)) + 1>;

// Entry i holds the case whose underlying value is i, and every text is non-empty and unlike
// the others, so that text and case convert both ways.
template <typename E, std::size_t size>
[[nodiscard]] constexpr bool listsEveryCaseOnceInOrder(const std::array<EnumText<E>, size>& table) {
  for (std::size_t i = 0; i < size; ++i) {
    if (!std::cmp_equal(std::to_underlying(table[i].value), i)) return false;
    if (table[i].text.empty()) return false;
    for (std::size_t j = 0; j < i; ++j) {
      if (table[j].text == table[i].text) return false;
    }
  }
  return true;
}

// Whether `value` is one of its enum's named cases. The compiler spells a template argument
// that names a case by its name in the function's signature ("V = pellwin::Resource::heat")
// and any other value as a cast ("V = (pellwin::Resource)5"); GCC and Clang agree on this.
template <auto value>
requires std::is_enum_v<decltype(value)>
[[nodiscard]] consteval bool isNamedCase() {
  constexpr std::string_view signature = __PRETTY_FUNCTION__;
  constexpr auto at = signature.rfind("value = ");
  return at != std::string_view::npos && signature[at + 8] != '(';
}

template <typename E>
concept TextEnum = std::is_enum_v<E> && requires(E value) {
  textTable(value);
};

// One copy of each table, built at compile time.
template <TextEnum E>
inline constexpr auto enumTextTable = textTable(E{});

template <TextEnum E>
[[nodiscard]] constexpr const auto& enumTable() {
  static_assert(listsEveryCaseOnceInOrder(enumTextTable<E>),
                "the text table must list every case once, in case order, with distinct texts");
  static_assert(!isNamedCase<static_cast<E>(enumTextTable<E>.size())>(),
                "a case follows the last one in the text table: size the table by it");
  return enumTextTable<E>;
}

template <TextEnum E>
inline constexpr std::size_t enumCount =
    std::tuple_size_v<std::remove_cvref_t<decltype(enumTable<E>())>>;

// The case's text; empty for a value that is not one of the cases.
template <TextEnum E>
[[nodiscard]] constexpr std::string_view enumText(E value) {
  const auto index = std::to_underlying(value);
  if (std::cmp_less(index, 0) || std::cmp_greater_equal(index, enumCount<E>)) return {};
  return enumTable<E>()[static_cast<std::size_t>(index)].text;
}

// The case whose text is exactly `text`; compared byte for byte, so case and spaces count.
template <TextEnum E>
[[nodiscard]] constexpr std::optional<E> parseEnum(std::string_view text) {
  for (const EnumText<E>& entry : enumTable<E>()) {
    if (entry.text == text) return entry.value;
  }
  return std::nullopt;
}

// The case whose underlying value is `index`, for enums stored as their ordinal.
template <TextEnum E, std::integral Index>
[[nodiscard]] constexpr std::optional<E> enumFromIndex(Index index) {
  if (std::cmp_less(index, 0) || std::cmp_greater_equal(index, enumCount<E>)) return std::nullopt;
  return enumTable<E>()[static_cast<std::size_t>(index)].value;
}

// Every case in case order.
template <TextEnum E>
[[nodiscard]] constexpr std::array<E, enumCount<E>> enumCases() {
  std::array<E, enumCount<E>> cases{};
  for (std::size_t i = 0; i < cases.size(); ++i) cases[i] = enumTable<E>()[i].value;
  return cases;
}

}  // namespace pellwin
