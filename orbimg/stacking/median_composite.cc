#include <orbimg/stacking/median_composite.h>

#include <orbimg/stacking/frame_line_internal.h>
#include <orbimg/stacking/line_median_internal.h>

namespace {
constexpr int kMessage = 6141;
constexpr std::size_t kLinesGrowth = 10;
}  // namespace

CLineData::CLineData(int count) {
  auto values = std::make_unique_for_overwrite<double[]>(static_cast<std::size_t>(count));
  valid = new int[static_cast<std::size_t>(count)];
  value = values.release();
}

CLineData::~CLineData() {
  delete[] value;
  delete[] valid;
}

CImgMedianComposit::CImgMedianComposit(COrbImage* destinationImage)
    : destination(destinationImage), lines(kLinesGrowth), median(std::make_unique<orb::LineMedian>()) {
  destination->ShowProgressInit(1, kMessage, destination->GetHeight());
}

CImgMedianComposit::~CImgMedianComposit() { destination->ShowProgressEnd(static_cast<char const*>(nullptr)); }

void CImgMedianComposit::Store(COrbImage* source, int y, double dx, double dy, double angle) {
  line = y;
  if (count == lines.size()) lines.resize(lines.size() + kLinesGrowth);
  int const columns = destination->GetWidth();
  int const planesToFill = destination->GetPlanes();
  auto& slot = lines[count];
  if (slot == nullptr || !slot->Fits(*source, dx, dy, angle, columns, planesToFill)) {
    slot = std::make_unique<orb::FrameLine>(*source, dx, dy, angle, columns, planesToFill);
  }
  slot->Sample(y);
  ++count;
}

void CImgMedianComposit::Calc() {
  bool const isInside = 0 <= line && line < destination->GetHeight();
  for (int p = 0; isInside && p < destination->GetPlanes(); ++p) {
    median->Compute(std::span(lines).first(count), p, destination->GetWidth(),
                    destination->GetImageAdr(0, line, p, 0, nullptr));
  }
  count = 0;
  destination->ShowProgress(1);
}
