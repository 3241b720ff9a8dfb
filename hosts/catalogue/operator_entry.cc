#include <hosts/catalogue/operator_entry.h>

#include <algorithm>

namespace orb::host {

namespace {

int Count(Units units, Invocation const& call) {
  COrbImage const& image = *call.image;
  int const rows = ClampRect(call.rect, image.GetWidth(), image.GetHeight()).Rows();
  switch (units) {
    case Units::kRows:
      return rows;
    case Units::kRowsTimesPlanes:
      return rows * image.GetPlanes();
    case Units::kImageRows:
      return image.GetHeight();
    case Units::kImageRowsTimesPlanes:
      return image.GetHeight() * image.GetPlanes();
    case Units::kNone:
      break;
  }
  return 0;
}

}  // namespace

std::vector<double> OperatorEntry::Defaults() const {
  std::vector<double> values;
  for (Parameter const& parameter : parameters) values.push_back(parameter.byDefault);
  return values;
}

int OperatorEntry::Find(std::string const& parameter) const {
  auto const found =
      std::find_if(parameters.begin(), parameters.end(), [&](Parameter const& p) { return p.name == parameter; });
  return found == parameters.end() ? -1 : static_cast<int>(found - parameters.begin());
}

bool OperatorEntry::DoesReport(Invocation const& call) const {
  if (reports == Reports::kNever) return false;
  if (reports == Reports::kOnRequest) return call.progress != 0;
  int const perPlane = Find("per-plane");
  return call.image->IsColor() != 0 && call.values[static_cast<std::size_t>(perPlane)] == 0.0;
}

int OperatorEntry::UnitsOf(Invocation const& call) const { return Count(units, call); }

int OperatorEntry::TicksOf(Invocation const& call) const { return std::max(Count(ticks, call), 0); }

}  // namespace orb::host
