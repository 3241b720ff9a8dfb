// Calls of CImgComposit that the tests of its modes share.
#pragma once

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/composite_reference.h>

namespace orb::test {

void Apply(CImgComposit& dst, COrbImage& first, COrbImage& second, reference::CompositeArguments const& c,
           CRect* rect = nullptr, int progress = 0, int messageId = -1);

// With the destination as its own first source, as with a copy of it.
testing::AssertionResult InPlaceEqualsCopy(COrbImage& first, COrbImage& second, reference::CompositeArguments const& c);

// On stores that move and poison what is not locked, as on plain ones; and no lock is left.
testing::AssertionResult WorksOnHostileStores(COrbImage& first, COrbImage& second,
                                              reference::CompositeArguments const& c);

}  // namespace orb::test
