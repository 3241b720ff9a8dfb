#include <hosts/orbimg/progress_display.h>

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

namespace orb::host {
namespace {
constexpr int kBarWidth = 30;     // characters
constexpr int kPercentOfBar = 1;  // the bar is redrawn at every percent
constexpr int kPercentOfLine = 25;
constexpr double kSecondsBeforeGuess = 2.0;
}  // namespace

std::string FormatTimeLeft(double spent, int percent) {
  if (percent <= 0 || percent >= 100 || spent < kSecondsBeforeGuess) return {};
  auto const left = static_cast<long>(std::ceil(spent * (100 - percent) / percent));
  return fmt::format(", {}:{:02} left", left / 60, left % 60);
}

void ProgressDisplay::Start(std::string const& text, std::int64_t units) {
  std::lock_guard const lock(mutex);
  label = text;
  total = units;
  done = 0;
  start = std::chrono::steady_clock::now();
  shown = -1;
  Show();
}

void ProgressDisplay::SetLabel(std::string const& text) {
  std::lock_guard const lock(mutex);
  label = text;
  if (style != Style::kBar) return;
  shown = -1;
  Show();
}

void ProgressDisplay::Advance(std::int64_t n) {
  std::lock_guard const lock(mutex);
  done += n;
  Show();
}

void ProgressDisplay::End() {
  std::lock_guard const lock(mutex);
  ClearBar();
  label.clear();
  shown = -1;
}

void ProgressDisplay::PrintLine(std::string const& line) {
  std::lock_guard const lock(mutex);
  ClearBar();
  err << line << '\n' << std::flush;
  if (style == Style::kBar && !label.empty()) {
    shown = -1;
    Show();
  }
}

void ProgressDisplay::Show() {
  if (style == Style::kNone || label.empty()) return;
  int const percent = total > 0 ? static_cast<int>(std::clamp<std::int64_t>(done * 100 / total, 0, 100)) : 100;
  int const step = percent / (style == Style::kBar ? kPercentOfBar : kPercentOfLine);
  if (step == shown) return;
  shown = step;
  if (style == Style::kLines) {
    err << fmt::format("{} {} %\n", label, percent) << std::flush;
    return;
  }
  std::chrono::duration<double> const spent = std::chrono::steady_clock::now() - start;
  std::string const bar(static_cast<std::size_t>(percent * kBarWidth / 100), '#');
  err << fmt::format("\r\033[K{} [{:<{}}] {:3} %{}", label, bar, kBarWidth, percent,
                     FormatTimeLeft(spent.count(), percent))
      << std::flush;
}

void ProgressDisplay::ClearBar() {
  if (style == Style::kBar && shown >= 0) err << "\r\033[K" << std::flush;
}

}  // namespace orb::host
