#include <tests/support/composite_calls.h>

#include <tests/support/hostile_store.h>
#include <tests/support/test_images.h>

namespace orb::test {

void Apply(CImgComposit& dst, COrbImage& first, COrbImage& second, reference::CompositeArguments const& c, CRect* rect,
           int progress, int messageId) {
  dst.Do(&first, &second, c.dx, c.dy, c.angle, c.mode, c.ratio, c.to256, c.clamp, c.threshold, c.radius, rect, progress,
         messageId);
}

testing::AssertionResult InPlaceEqualsCopy(COrbImage& first, COrbImage& second,
                                           reference::CompositeArguments const& c) {
  CImgComposit copy;
  copy.CopyImage(first, nullptr, nullptr);
  Apply(copy, first, second, c);
  CImgComposit inPlace;
  inPlace.CopyImage(first, nullptr, nullptr);
  Apply(inPlace, inPlace, second, c);
  return SameBits(copy, inPlace);
}

testing::AssertionResult WorksOnHostileStores(COrbImage& first, COrbImage& second,
                                              reference::CompositeArguments const& c) {
  CImgComposit expected;
  expected.Create(first, nullptr, nullptr);
  Apply(expected, first, second, c);
  CImgComposit dst;
  dst.Create(first, nullptr, nullptr);
  COrbImage hostileFirst(first);
  COrbImage hostileSecond(second);
  MakeHostile(dst);
  MakeHostile(hostileFirst);
  MakeHostile(hostileSecond);
  Apply(dst, hostileFirst, hostileSecond, c);
  int const locks = LocksLeft(dst) + LocksLeft(hostileFirst) + LocksLeft(hostileSecond);
  if (locks != 0) return testing::AssertionFailure() << locks << " locks are left";
  return SameBits(expected, dst);
}

}  // namespace orb::test
