#include <hosts/orbimg/plot.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include <fmt/format.h>
#include <hosts/orbimg/annotation.h>

namespace orb::host {
namespace {

constexpr int kLeftMargin = 90;  // pixels: numbers of the y axis
constexpr int kRightMargin = 24;
constexpr int kTopMargin = 40;
constexpr int kBottomMargin = 56;
constexpr int kLetters = 15;
constexpr int kTickLength = 5;
constexpr COLORREF kInk = RGB(40, 40, 40);
constexpr COLORREF kGrid = RGB(225, 225, 225);
constexpr COLORREF kMark = RGB(150, 150, 150);

struct Axis {
  double low = std::numeric_limits<double>::infinity();
  double high = -std::numeric_limits<double>::infinity();

  void Include(double v) {
    low = std::min(low, v);
    high = std::max(high, v);
  }
  // Something to divide by, if there are no points or they are all alike.
  void Open() {
    if (low > high) low = high = 0.0;
    if (!(high - low > 0.0)) high = low + std::max(1.0, std::abs(low) * 1e-6);
  }
  double At(double v) const { return (v - low) / (high - low); }
};

class Chart {
 public:
  Chart(Plot const& initPlot, COrbImage& initImage) : plot(initPlot), image(initImage) {
    style.font.lfHeight = -kLetters;
    style.color = kInk;
    RequireFont(style.font);
    for (PlotSeries const& one : plot.series) {
      for (std::size_t i = 0; i < one.x.size(); ++i) {
        if (!std::isfinite(one.x[i]) || !std::isfinite(one.y[i])) continue;
        xAxis.Include(one.x[i]);
        yAxis.Include(Height(one.y[i]));
      }
    }
    if (plot.logarithmic) yAxis.Include(0.0);
    xAxis.Open();
    yAxis.Open();
  }

  void Draw() {
    DrawYTicks();
    DrawXTicks();
    for (double const mark : plot.marks) {
      if (xAxis.low <= mark && mark <= xAxis.high) Line({mark, yAxis.low}, {mark, yAxis.high}, kMark);
    }
    for (PlotSeries const& one : plot.series) DrawSeries(one);
    DrawFrame();
    TextStyle const large = style;
    AnnotateText(image, CPoint(kLeftMargin, (kTopMargin - kLetters) / 2), plot.title, large);
    CenterText(plot.xLabel, (kLeftMargin + Right()) / 2, plot.height - kLetters - 10);
  }

 private:
  struct Point {
    double x;
    double y;  // as drawn: a logarithm on such an axis
  };

  int Right() const { return plot.width - kRightMargin; }
  int Bottom() const { return plot.height - kBottomMargin; }

  double Height(double y) const { return plot.logarithmic ? std::log10(std::max(y, 1.0)) : y; }

  CPoint PixelOf(Point const& p) const {
    return CPoint(static_cast<int>(std::lround(kLeftMargin + xAxis.At(p.x) * (Right() - kLeftMargin))),
                  static_cast<int>(std::lround(Bottom() - yAxis.At(p.y) * (Bottom() - kTopMargin))));
  }

  void Line(Point const& from, Point const& to, COLORREF color) {
    AnnotateLine(image, PixelOf(from), PixelOf(to), color);
  }

  int WidthOf(std::string const& text) const {
    TextBox box;
    return RasterizeText(style.font, 1, text, box) ? box.width : 0;
  }

  void CenterText(std::string const& text, int x, int y) {
    if (!text.empty()) AnnotateText(image, CPoint(x - WidthOf(text) / 2, y), text, style);
  }

  void DrawFrame() {
    CPoint const corners[] = {CPoint(kLeftMargin, kTopMargin), CPoint(Right(), kTopMargin), CPoint(Right(), Bottom()),
                              CPoint(kLeftMargin, Bottom())};
    for (int i = 0; i < 4; ++i) AnnotateLine(image, corners[i], corners[(i + 1) % 4], kInk);
  }

  void DrawXTicks() {
    for (double const tick : FindTicks(xAxis.low, xAxis.high, 8)) {
      Line({tick, yAxis.low}, {tick, yAxis.high}, kGrid);
      CPoint const foot = PixelOf({tick, yAxis.low});
      AnnotateLine(image, foot, CPoint(foot.x, foot.y + kTickLength), kInk);
      CenterText(fmt::format("{:.6g}", tick), foot.x, foot.y + kTickLength + 3);
    }
  }

  void DrawYTicks() {
    std::vector<double> ticks = FindTicks(yAxis.low, yAxis.high, 6);
    if (plot.logarithmic) std::erase_if(ticks, [](double t) { return t != std::round(t); });
    for (double const tick : ticks) {
      Line({xAxis.low, tick}, {xAxis.high, tick}, kGrid);
      CPoint const foot = PixelOf({xAxis.low, tick});
      AnnotateLine(image, foot, CPoint(foot.x - kTickLength, foot.y), kInk);
      std::string const text = fmt::format("{:.6g}", plot.logarithmic ? std::pow(10.0, tick) : tick);
      AnnotateText(image, CPoint(foot.x - kTickLength - 4 - WidthOf(text), foot.y - kLetters / 2), text, style);
    }
  }

  void DrawSeries(PlotSeries const& one) {
    for (std::size_t i = 0; i + 1 < one.x.size(); ++i) {
      bool const isFinite = std::isfinite(one.x[i]) && std::isfinite(one.y[i]) && std::isfinite(one.x[i + 1]) &&
                            std::isfinite(one.y[i + 1]);
      if (!isFinite) continue;
      Line({one.x[i], Height(one.y[i])}, {one.x[i + 1], Height(one.y[i + 1])}, one.color);
    }
  }

  Plot const& plot;
  COrbImage& image;
  TextStyle style;
  Axis xAxis;
  Axis yAxis;
};

}  // namespace

std::vector<double> FindTicks(double low, double high, int wanted) {
  std::vector<double> ticks;
  double const rough = (high - low) / wanted;
  if (!(rough > 0.0) || !std::isfinite(rough)) return ticks;
  double const power = std::pow(10.0, std::floor(std::log10(rough)));
  double const part = rough / power;
  double const step = (part < 1.5 ? 1.0 : part < 3.5 ? 2.0 : part < 7.5 ? 5.0 : 10.0) * power;
  double const slack = 1e-9 * (high - low);
  double const first = std::ceil((low - slack) / step);
  for (int i = 0; i <= 4 * wanted && (first + i) * step <= high + slack; ++i) ticks.push_back((first + i) * step);
  return ticks;
}

void DrawPlot(Plot const& plot, COrbImage& image) {
  COrbImage blank(-32, plot.width, plot.height, 3, 1.0, 0.0, 1, nullptr, nullptr);
  std::fill_n(blank.GetImageAdr(0, 0, 0, 0, nullptr), blank.GetPixelCount(), 255.0f);
  image.Swap(&blank);
  Chart(plot, image).Draw();
}

}  // namespace orb::host
