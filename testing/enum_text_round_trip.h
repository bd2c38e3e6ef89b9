// The one round-trip test every enum with a text table gets (core/base/enum_text.h). Each test
// binary lists its enums once:
//   using CoreEnums = ::testing::Types<Resource, Health, ...>;
//   INSTANTIATE_TYPED_TEST_SUITE_P(Core, EnumTextRoundTrip, CoreEnums);
// Test support only: production code never includes it.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "core/base/enum_text.h"

namespace pellwin::testing {

template <typename E>
class EnumTextRoundTrip : public ::testing::Test {};

TYPED_TEST_SUITE_P(EnumTextRoundTrip);

TYPED_TEST_P(EnumTextRoundTrip, EveryCaseComesBackFromItsTextAndItsOrdinal) {
  using E = TypeParam;
  std::size_t ordinal = 0;
  for (E value : enumCases<E>()) {
    const std::string_view text = enumText(value);
    SCOPED_TRACE(std::string(text));
    EXPECT_EQ(parseEnum<E>(text), value);
    EXPECT_EQ(enumFromIndex<E>(ordinal), value);
    ++ordinal;
  }
  EXPECT_EQ(ordinal, enumCount<E>);
}

// Stored texts are matched exactly: a near miss is unknown, never the closest case.
TYPED_TEST_P(EnumTextRoundTrip, TextsAndOrdinalsOfNoCaseGiveNothing) {
  using E = TypeParam;
  EXPECT_EQ(parseEnum<E>(""), std::nullopt);
  for (E value : enumCases<E>()) {
    const std::string text(enumText(value));
    SCOPED_TRACE(text);
    std::string otherCase = text;
    otherCase.front() = static_cast<char>(otherCase.front() ^ 0x20);
    EXPECT_EQ(parseEnum<E>(otherCase), std::nullopt);
    EXPECT_EQ(parseEnum<E>(text + " "), std::nullopt);
  }
  EXPECT_EQ(enumFromIndex<E>(-1), std::nullopt);
  EXPECT_EQ(enumFromIndex<E>(enumCount<E>), std::nullopt);
  EXPECT_EQ(enumText(static_cast<E>(enumCount<E>)), "");
}

REGISTER_TYPED_TEST_SUITE_P(EnumTextRoundTrip, EveryCaseComesBackFromItsTextAndItsOrdinal,
                            TextsAndOrdinalsOfNoCaseGiveNothing);

}  // namespace pellwin::testing
