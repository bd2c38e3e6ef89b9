#include "probe/files/full_disk_access.h"

#include <gtest/gtest.h>

#include "probe/files/walk_readers.h"
#include "testing/enum_text_round_trip.h"

namespace pellwin::testing {

using ProbeEnums = ::testing::Types<FullDiskAccess::State, DiskKind>;
INSTANTIATE_TYPED_TEST_SUITE_P(Probe, EnumTextRoundTrip, ProbeEnums);

}  // namespace pellwin::testing
