#include <hosts/catalogue/check.h>

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

namespace orb::host {

namespace {

constexpr std::int64_t kMostSide = 1'000'000;  // pixels, of a result

std::string ShapeText(COrbImage const& image) {
  std::string const size = fmt::format("{} x {}", image.GetWidth(), image.GetHeight());
  return image.GetPlanes() == 1 ? size : fmt::format("{} x {} planes", size, image.GetPlanes());
}

bool IsSameSize(COrbImage const& a, COrbImage const& b) {
  return a.GetWidth() == b.GetWidth() && a.GetHeight() == b.GetHeight();
}

std::string CheckImage(std::string const& role, COrbImage const* image) {
  if (image == nullptr) return role + " is missing";
  if (image->GetWidth() < 1 || image->GetHeight() < 1) return role + " is empty";
  if (image->GetPlanes() != 1 && image->GetPlanes() != 3) {
    return fmt::format("{} has {} planes; an image has 1 or 3", role, image->GetPlanes());
  }
  if (image->GetBitsPixel() != -32) return role + " does not hold 32-bit floats";
  return "";
}

std::string PlanesText(int planes) { return fmt::format("{} plane{}", planes, planes == 1 ? "" : "s"); }

std::string CheckImagePlanes(OperatorEntry const& entry, Invocation const& call) {
  int const planes = call.image->GetPlanes();
  if (entry.imagePlanes == 0 || planes == entry.imagePlanes) return "";
  return fmt::format("the image has {}; it must have {}", PlanesText(planes), entry.imagePlanes);
}

std::string CheckPlanes(OperatorEntry const& entry, Invocation const& call) {
  int const of = call.image->GetPlanes();
  int const source = call.source->GetPlanes();
  switch (entry.sourceShape) {
    case SourceShape::kColourToMono:
      return of == 3 && source == 3 ? "" : "the image has one plane already";
    case SourceShape::kAnyToColour:
      return of == 1 ? "" : "the image has three planes already";
    case SourceShape::kFrameToColour:
      return of == 3 ? "" : "the image has one plane; colours need three";
    case SourceShape::kSame:
    case SourceShape::kAnySize:
      return of == source ? "" : fmt::format("the {} has {} planes, the image {}", entry.sourceName, source, of);
    case SourceShape::kColour:
      return source == 3 ? "" : fmt::format("the {} has {}; it must have 3", entry.sourceName, PlanesText(source));
    default:
      return "";
  }
}

std::string CheckSource(OperatorEntry const& entry, Invocation const& call) {
  std::string const wrong = CheckImage("the " + entry.sourceName, call.source);
  if (!wrong.empty()) return wrong;
  if (call.source == call.image && !entry.mayRunInPlace) {
    return fmt::format("the {} must be another image than the result", entry.sourceName);
  }
  bool const isAnySize = entry.sourceShape == SourceShape::kAny || entry.sourceShape == SourceShape::kAnySize;
  if (!isAnySize && !IsSameSize(*call.source, *call.image)) {
    return fmt::format("the {} is {}, the image {}; both must have the same size", entry.sourceName,
                       ShapeText(*call.source), ShapeText(*call.image));
  }
  return CheckPlanes(entry, call);
}

std::string CheckSecond(Invocation const& call) {
  std::string const wrong = CheckImage("the second image", call.second);
  if (!wrong.empty()) return wrong;
  return call.second == call.image ? "the second image must be another one than the result" : "";
}

std::string CheckValues(std::vector<Parameter> const& parameters, std::vector<double> const& values) {
  if (values.size() != parameters.size()) {
    return fmt::format("{} values for {} parameters", values.size(), parameters.size());
  }
  for (std::size_t i = 0; i < values.size(); ++i) {
    std::string const wrong = CheckValue(parameters[i], values[i]);
    if (!wrong.empty()) return wrong;
  }
  return "";
}

std::string FrameText(OperatorEntry const& entry, std::size_t number) {
  return entry.frameNames.empty() ? fmt::format("frame {}", number + 1)
                                  : fmt::format("the {} frame", entry.frameNames[number]);
}

std::string CheckFrame(OperatorEntry const& entry, Invocation const& call, std::size_t number) {
  PlacedFrame const& frame = call.frames[number];
  std::string const role = FrameText(entry, number);
  std::string const wrong = CheckImage(role, frame.image);
  if (!wrong.empty()) return wrong;
  if (frame.image == call.image) return role + " must be another image than the result";
  std::string const wrongValue = CheckValues(entry.frameParameters, frame.values);
  return wrongValue.empty() ? "" : role + ": " + wrongValue;
}

std::string CheckFrames(OperatorEntry const& entry, Invocation const& call) {
  if (!entry.TakesFrames()) return call.frames.empty() ? "" : "takes no frames";
  if (call.frames.empty()) return "there is no frame";
  std::size_t const wanted = entry.frameNames.size();
  if (wanted != 0 && call.frames.size() != wanted) {
    return fmt::format("{} frames; there must be {}: {}", call.frames.size(), wanted,
                       fmt::join(entry.frameNames, ", "));
  }
  std::string wrong;
  for (std::size_t i = 0; wrong.empty() && i < call.frames.size(); ++i) wrong = CheckFrame(entry, call, i);
  return wrong;
}

std::string CheckTable(Table const& table, std::vector<float> const& entries, std::size_t first) {
  if (entries.size() < static_cast<std::size_t>(table.leastEntries) ||
      entries.size() > static_cast<std::size_t>(table.mostEntries)) {
    return fmt::format("the table {} has {} entries; it must have from {} to {}", table.name, entries.size(),
                       table.leastEntries, table.mostEntries);
  }
  if (entries.size() != first) {
    return fmt::format("the table {} has {} entries, the first one {}; all must have the same number", table.name,
                       entries.size(), first);
  }
  auto const wrong = std::find_if(entries.begin(), entries.end(), [](float v) { return !std::isfinite(v); });
  return wrong == entries.end() ? ""
                                : fmt::format("the table {} has the entry {} at place {}; it must be a finite number",
                                              table.name, *wrong, wrong - entries.begin());
}

std::string CheckTables(OperatorEntry const& entry, Invocation const& call) {
  int const planes = call.image->GetPlanes();
  std::size_t const needed = entry.TablesFor(planes);
  if (call.tables.size() != needed) return fmt::format("{} tables; it takes {}", call.tables.size(), needed);
  std::size_t next = 0;
  for (Table const& table : entry.tables) {
    for (int i = 0; i < table.CountFor(planes); ++i) {
      std::string const wrong = CheckTable(table, call.tables[next++], call.tables[0].size());
      if (!wrong.empty()) return wrong;
    }
  }
  return "";
}

std::string CheckResults(OperatorEntry const& entry, Invocation const& call) {
  return entry.results.empty() || call.results != nullptr ? "" : "there is no place for its results";
}

std::string CheckLevelsOf(std::string const& role, COrbImage const& image) {
  for (int p = 0; p < image.GetPlanes(); ++p) {
    double const range = image.GetLevelRange(p);
    if (std::isfinite(range) && range != 0.0) continue;
    return fmt::format("the levels of {}, plane {}, are {} and {}; set them apart first", role, p + 1,
                       image.GetLevelMin(p), image.GetLevelMax(p));
  }
  return "";
}

std::string CheckLevels(OperatorEntry const& entry, Invocation const& call) {
  int const flag = entry.Find("levels");
  bool const isAsked = flag >= 0 && call.values[static_cast<std::size_t>(flag)] != 0.0;
  if (entry.levelUse == LevelUse::kNone || (entry.levelUse == LevelUse::kIfAsked && !isAsked)) return "";
  std::string wrong = call.source == nullptr ? "" : CheckLevelsOf("the " + entry.sourceName, *call.source);
  if (wrong.empty()) wrong = CheckLevelsOf("the image", *call.image);
  if (wrong.empty() && call.second != nullptr) wrong = CheckLevelsOf("the second image", *call.second);
  for (std::size_t i = 0; wrong.empty() && i < call.frames.size(); ++i) {
    wrong = CheckLevelsOf(FrameText(entry, i), *call.frames[i].image);
  }
  return wrong;
}

std::string CheckRectangle(OperatorEntry const& entry, Invocation const& call) {
  if (call.rect == nullptr) return "";
  if (!entry.takesRectangle && !entry.cutsToRectangle) return "takes no rectangle: it works on the whole image";
  CRect const& r = *call.rect;
  if (r.IsRectEmpty()) {
    return fmt::format("the rectangle {},{} to {},{} is empty; right and bottom lie one past the last pixel", r.left,
                       r.top, r.right, r.bottom);
  }
  Bounds const bounds = ClampRect(&r, call.image->GetWidth(), call.image->GetHeight());
  if (bounds.IsEmpty()) {
    return fmt::format("the rectangle {},{} to {},{} lies outside the image of {}", r.left, r.top, r.right, r.bottom,
                       ShapeText(*call.image));
  }
  bool const isWithin =
      bounds.left == r.left && bounds.top == r.top && bounds.right == r.right && bounds.bottom == r.bottom;
  if (!entry.cutsToRectangle || isWithin) return "";
  return fmt::format("the rectangle {},{} to {},{} goes beyond the image of {}; it must lie within", r.left, r.top,
                     r.right, r.bottom, ShapeText(*call.image));
}

std::string CheckSizeOfResult(OperatorEntry const& entry, Invocation const& call) {
  ImageSize const size = entry.SizeOf(call);
  auto const isSide = [](std::int64_t pixels) { return pixels >= 1 && pixels <= kMostSide; };
  if (entry.sizeOfResult == nullptr || (isSide(size.width) && isSide(size.height))) return "";
  return fmt::format("the image would come to {} x {} pixels; it must have from 1 to {} columns and rows", size.width,
                     size.height, kMostSide);
}

std::string FindWrong(OperatorEntry const& entry, Invocation const& call) {
  std::string wrong = CheckImage("the image", call.image);
  if (wrong.empty()) wrong = CheckImagePlanes(entry, call);
  if (wrong.empty()) wrong = CheckValues(entry.parameters, call.values);
  if (wrong.empty() && entry.sourceShape != SourceShape::kNone) wrong = CheckSource(entry, call);
  if (wrong.empty() && entry.needsSecond) wrong = CheckSecond(call);
  if (wrong.empty()) wrong = CheckFrames(entry, call);
  if (wrong.empty()) wrong = CheckTables(entry, call);
  if (wrong.empty()) wrong = CheckResults(entry, call);
  if (wrong.empty()) wrong = CheckRectangle(entry, call);
  if (wrong.empty()) wrong = CheckLevels(entry, call);
  if (wrong.empty() && entry.check != nullptr) wrong = entry.check(call);
  if (wrong.empty()) wrong = CheckSizeOfResult(entry, call);
  return wrong;
}

}  // namespace

std::string CheckValue(Parameter const& parameter, double value) {
  bool const isWhole = parameter.kind == Parameter::Kind::kReal || value == std::floor(value);
  if (value >= parameter.least && value <= parameter.most && isWhole) return "";
  std::string const unit = parameter.unit.empty() ? "" : " " + parameter.unit;
  return fmt::format("{} is {}; it must be a {} from {} to {}{}", parameter.name, value,
                     parameter.kind == Parameter::Kind::kReal ? "number" : "whole number", parameter.least,
                     parameter.most, unit);
}

std::string CheckMean(std::string const& role, COrbImage const& image) {
  if (image.GetWidth() > 1 && image.GetHeight() > 1) return "";
  return fmt::format("the {} is one pixel wide or high, so that its mean has no value", role);
}

std::string CheckInvocation(OperatorEntry const& entry, Invocation const& call) {
  std::string const wrong = FindWrong(entry, call);
  return wrong.empty() ? "" : entry.name + ": " + wrong;
}

}  // namespace orb::host
