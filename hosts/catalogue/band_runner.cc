#include <hosts/catalogue/band_runner.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include <hosts/catalogue/shared_view_internal.h>

namespace orb::host {

namespace {

constexpr int kBandsPerThread = 4;  // so that a slow band does not keep the others waiting

struct Band {
  int plane;  // of strips only
  int top;
  int bottom;
};

void AppendBands(int plane, int top, int bottom, int count, std::vector<Band>& bands) {
  std::int64_t const rows = bottom - top;
  for (std::int64_t i = 0; i < count; ++i) {
    Band const band{plane, top + static_cast<int>(rows * i / count), top + static_cast<int>(rows * (i + 1) / count)};
    if (band.top < band.bottom) bands.push_back(band);
  }
}

std::vector<Band> Divide(OperatorEntry const& entry, Invocation const& call, int threads) {
  COrbImage const& image = *call.image;
  std::vector<Band> bands;
  if (entry.bands == Bands::kRectangle) {
    Bounds const area = ClampRect(call.rect, image.GetWidth(), image.GetHeight());
    AppendBands(0, area.top, area.bottom, threads * kBandsPerThread, bands);
  } else if (entry.bands == Bands::kStrips) {
    for (int p = 0; p < image.GetPlanes(); ++p) AppendBands(p, 0, image.GetHeight(), threads * kBandsPerThread, bands);
  }
  return bands;
}

// What the bands' threads and the calling one tell each other.
class Ledger {
 public:
  void AddTick() {
    std::lock_guard<std::mutex> const guard(mutex);
    ++ticks;
    changed.notify_one();
  }
  void AddFinished(std::exception_ptr const& newFailure) {
    std::lock_guard<std::mutex> const guard(mutex);
    ++finished;
    if (newFailure && !failure) failure = newFailure;
    changed.notify_one();
  }
  // Waits for ticks beyond `known` or for the end of all `threads`, and tells how many ticks there are.
  int WaitForTicks(int known, int threads, bool& isOver) {
    std::unique_lock<std::mutex> guard(mutex);
    changed.wait(guard, [&] { return ticks > known || finished == threads; });
    isOver = finished == threads;
    return ticks;
  }
  std::exception_ptr Failure() const { return failure; }

 private:
  std::mutex mutex;
  std::condition_variable changed;
  int ticks = 0;
  int finished = 0;
  std::exception_ptr failure;
};

// The window of a band's operator object: its run polls once a unit of work, and that is all that counts here.
class TickWindow : public HostWindow {
 public:
  explicit TickWindow(Ledger& initLedger) : ledger(initLedger) {}
  bool PollEscape() override {
    ledger.AddTick();
    return false;
  }

 private:
  Ledger& ledger;
};

// The levels of an image, to hand them on from one object to another.
class Levels {
 public:
  explicit Levels(COrbImage const& image) {
    for (int p = 0; p < image.GetPlanes(); ++p) pairs.emplace_back(image.GetLevelMin(p), image.GetLevelMax(p));
  }
  void SetOn(COrbImage& image) const {
    for (std::size_t p = 0; p < pairs.size(); ++p) {
      image.CImage::SetLevel(static_cast<int>(p), pairs[p].first, pairs[p].second);
    }
  }

 private:
  std::vector<std::pair<double, double>> pairs;
};

// `levels` becomes those that the operator left, where it changes them: the same in every band.
int RunBand(OperatorEntry const& entry, Invocation const& call, Band const& band, HostWindow& window,
            std::optional<Levels>* levels) {
  COrbImage image;
  COrbImage source;
  COrbImage second;
  std::vector<COrbImage> frames(call.frames.size());
  CRect rect;
  Invocation own = call;
  own.image = &image;
  own.source = nullptr;
  own.second = nullptr;
  if (entry.bands == Bands::kStrips) {
    ShareStrip(*call.image, band.plane, band.top, band.bottom, image);
    // A mono frame serves all planes.
    int const sourcePlane = call.source != nullptr && call.source->IsColor() ? band.plane : 0;
    if (call.source != nullptr) ShareStrip(*call.source, sourcePlane, band.top, band.bottom, source);
  } else {
    ShareWhole(*call.image, image);
    if (call.source != nullptr) ShareWhole(*call.source, source);
    if (call.second != nullptr) ShareWhole(*call.second, second);
    Bounds const area = ClampRect(call.rect, image.GetWidth(), image.GetHeight());
    rect = CRect(area.left, band.top, area.right, band.bottom);
    own.rect = &rect;
  }
  if (call.source != nullptr) own.source = call.source == call.image ? &image : &source;
  if (call.second != nullptr) own.second = &second;
  for (std::size_t i = 0; i < frames.size(); ++i) {
    ShareWhole(*call.frames[i].image, frames[i]);
    own.frames[i].image = &frames[i];
  }
  image.SetProgressHandle(&window);
  int const result = entry.run(own);
  if (levels != nullptr && entry.changes.levels) levels->emplace(image);
  return result;
}

class BandRun {
 public:
  BandRun(OperatorEntry const& initEntry, Invocation const& initCall, std::vector<Band> initBands)
      : entry(initEntry), call(initCall), bands(std::move(initBands)) {}

  BandRun(BandRun const&) = delete;
  BandRun& operator=(BandRun const&) = delete;
  // A window that throws on a report must not leave threads behind.
  ~BandRun() {
    isStopped = true;
    JoinAll();
  }

  // As many threads as the system gives, `threads` at most; returns how many.
  int Start(int threads) {
    workers.reserve(static_cast<std::size_t>(threads));
    try {
      for (int i = 0; i < threads; ++i) workers.emplace_back([this] { Work(); });
    } catch (std::system_error const&) {
      // Fewer threads do the same work.
    }
    return static_cast<int>(workers.size());
  }

  void Report() {
    call.image->ShowProgressInit(entry.DoesReport(call) ? 1 : 0, entry.MessageOf(call), entry.UnitsOf(call));
    int reported = 0;
    for (bool isOver = false; !isOver;) {
      int const ticks = ledger.WaitForTicks(reported, static_cast<int>(workers.size()), isOver);
      // One by one, so that the same messages go out as from one run.
      for (; reported < ticks; ++reported) call.image->ShowProgress(1);
    }
    call.image->ShowProgressEnd(static_cast<char const*>(nullptr));
  }

  int Finish() {
    JoinAll();
    if (ledger.Failure()) std::rethrow_exception(ledger.Failure());
    if (levels) levels->SetOn(*call.image);
    return result;
  }

 private:
  void JoinAll() {
    for (std::thread& worker : workers) {
      if (worker.joinable()) worker.join();
    }
  }

  void Work() {
    std::exception_ptr failure;
    try {
      TickWindow window(ledger);
      for (std::size_t i = next++; i < bands.size() && !isStopped; i = next++) {
        if (RunBand(entry, call, bands[i], window, i == 0 ? &levels : nullptr) == 0) result = 0;
      }
    } catch (...) {
      failure = std::current_exception();
      isStopped = true;
    }
    ledger.AddFinished(failure);
  }

  OperatorEntry const& entry;
  Invocation const& call;
  std::vector<Band> const bands;
  std::atomic<std::size_t> next{0};
  std::atomic<int> result{1};
  std::atomic<bool> isStopped{false};
  Ledger ledger;
  std::optional<Levels> levels;  // of the first band
  std::vector<std::thread> workers;
};

}  // namespace

int RunInBands(OperatorEntry const& entry, Invocation const& call, int threads) {
  std::vector<Band> bands;
  if (threads > 1) bands = Divide(entry, call, threads);
  if (bands.size() < 2) return entry.run(call);
  int const useful = std::min(threads, static_cast<int>(bands.size()));
  BandRun run(entry, call, std::move(bands));
  if (run.Start(useful) == 0) return entry.run(call);
  run.Report();
  return run.Finish();
}

}  // namespace orb::host
