// A store that takes the storage contract at its word: when the last lock goes, every sample moves to another address
// and the old memory is poisoned. An operator that keeps an unlocked address too long, or forgets a lock, reads junk or
// fails.
#pragma once

#include <orbimg/core/image.h>

namespace orb::test {

// Moves the image's samples into a hostile block. Call after the image has its final shape. Nothing is zero-padded
// behind the last sample but one sample, as the contract says.
void MakeHostile(CImage& image);

// Locks that are still held on the image's store.
int LocksLeft(CImage& image);

}  // namespace orb::test
