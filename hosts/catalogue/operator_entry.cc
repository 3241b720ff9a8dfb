#include <hosts/catalogue/operator_entry.h>

#include <algorithm>

namespace orb::host {

namespace {

constexpr int kClasses = 258;

// Intended: a quarter of the square of the range is not quite the number of positions, and yet what is announced.
int SearchUnits(OperatorEntry const& entry, Invocation const& call) {
  constexpr int kNeighbours = 9;
  constexpr int kFine = 288;
  int const range = static_cast<int>(call.values[static_cast<std::size_t>(entry.Find("range"))]);
  bool const isFine = call.values[static_cast<std::size_t>(entry.Find("fine"))] != 0.0;
  return range * range / 4 + kNeighbours + (isFine ? kFine : 0);
}

int Count(OperatorEntry const& entry, Units units, Invocation const& call) {
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
    case Units::kResultRowsTimesPlanes:
      return static_cast<int>(entry.SizeOf(call).height) * image.GetPlanes();
    case Units::kCounted:
      return entry.countUnits(call);
    case Units::kClasses:
      return kClasses;
    case Units::kSearch:
      return SearchUnits(entry, call);
    case Units::kNone:
      break;
  }
  return 0;
}

}  // namespace

std::string OperatorEntry::CommandName() const {
  std::string const prefix = group + "-";
  return name.starts_with(prefix) ? name.substr(prefix.size()) : name;
}

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

int OperatorEntry::FindBlur() const {
  auto const found =
      std::find_if(parameters.begin(), parameters.end(), [](Parameter const& p) { return p.ofBlur > 0.0; });
  return found == parameters.end() ? -1 : static_cast<int>(found - parameters.begin());
}

std::size_t OperatorEntry::TablesFor(int planes) const {
  std::size_t count = 0;
  for (Table const& table : tables) count += static_cast<std::size_t>(table.CountFor(planes));
  return count;
}

ImageSize OperatorEntry::SizeOf(Invocation const& call) const {
  if (sizeOfResult != nullptr) return sizeOfResult(call);
  return ImageSize{call.image->GetWidth(), call.image->GetHeight()};
}

bool OperatorEntry::DoesReport(Invocation const& call) const {
  if (reports == Reports::kNever) return false;
  if (reports == Reports::kAlways) return true;
  if (reports == Reports::kOnRequest) return call.progress != 0;
  int const perPlane = Find("per-plane");
  return call.image->IsColor() != 0 && call.values[static_cast<std::size_t>(perPlane)] == 0.0;
}

int OperatorEntry::UnitsOf(Invocation const& call) const { return Count(*this, units, call); }

int OperatorEntry::TicksOf(Invocation const& call) const { return std::max(Count(*this, ticks, call), 0); }

}  // namespace orb::host
