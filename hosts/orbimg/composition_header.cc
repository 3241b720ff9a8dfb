#include <hosts/orbimg/composition_header.h>

#include <algorithm>

namespace orb::host {
namespace {

constexpr char const* kOfOneExposure[] = {"FILTER",   "FILTER1",  "FILTER2",  "EXPTIME",  "EXPOSURE",
                                          "EXPTOTAL", "STACKCNT", "DATE-OBS", "TIME-OBS", "UT",
                                          "MJD",      "MJD-OBS",  "JD"};

}  // namespace

FitsHeader JoinHeaders(std::vector<FitsHeader const*> const& headers) {
  FitsHeader joined = *headers.front();
  for (char const* keyword : kOfOneExposure) {
    auto const first = joined.Text(keyword);
    bool const isShared = std::all_of(headers.begin(), headers.end(),
                                      [&](FitsHeader const* header) { return header->Text(keyword) == first; });
    if (!isShared) joined.Remove(keyword);
  }
  return joined;
}

}  // namespace orb::host
