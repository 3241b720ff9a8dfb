// Runs an operator in bands of rows on several threads, with the bits of one run.
//
// The library starts no thread. But a rectangle limits what is written and never what is read, so several operator
// objects over the same samples, each with a band of the rectangle for its own, do together what one does with the
// whole. The catalogue says for which operators this holds.
#pragma once

#include <hosts/catalogue/operator_entry.h>

namespace orb::host {

// Runs a call that passed CheckInvocation on up to `threads` threads (1 or less: on this one alone), or as one run if
// the operator has no bands. Progress comes on this thread to the image's window, as one run would report it. If a band
// throws, the bands not begun are left out, the run ends, and the exception comes out of here. Returns what the
// operator returns.
int RunInBands(OperatorEntry const& entry, Invocation const& call, int threads);

}  // namespace orb::host
