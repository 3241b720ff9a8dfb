#include <orbimg/stacking/separation.h>

#include <algorithm>

#include <orbimg/core/operator_run.h>
#include <orbimg/stacking/channel_kernels.h>

namespace {

constexpr int kPrimariesMessage = 6137;
constexpr int kComplementsMessage = 6138;
constexpr double kMean = 0.5;
constexpr double kSum = 1.0;

constexpr int kPrimaries = 3;
constexpr int kChannels = 6;

// A complement's planes, those of its samples and those of its levels.
struct Complement {
  int p, q;
  int levelP, levelQ;
};

// Intended: yellow has the levels of magenta.
constexpr Complement kComplements[] = {{2, 1, 2, 1}, {2, 0, 2, 0}, {1, 0, 2, 0}};

bool IsPrimary(int channel) { return channel >= 0 && channel < kPrimaries; }
bool IsComplement(int channel) { return channel >= kPrimaries && channel < kChannels; }

bool Fits(COrbImage const& image, COrbImage const& source) {
  return image.GetPlanes() == 1 && source.GetPlanes() == 3 && image.GetWidth() == source.GetWidth() &&
         image.GetHeight() == source.GetHeight();
}

void TakeLevels(COrbImage& image, COrbImage const& source, int channel, double factor) {
  if (IsPrimary(channel)) image.SetLevel(0, source.GetLevelMin(channel), source.GetLevelMax(channel));
  if (!IsComplement(channel)) return;
  Complement const& c = kComplements[channel - kPrimaries];
  image.SetLevel(0, (source.GetLevelMin(c.levelP) + source.GetLevelMin(c.levelQ)) * factor,
                 (source.GetLevelMax(c.levelP) + source.GetLevelMax(c.levelQ)) * factor);
}

void TakeRow(COrbImage& image, COrbImage const& source, int channel, double factor, int y) {
  float* const to = image.GetImageAdr(0, y, 0, 0, nullptr);
  if (IsPrimary(channel)) {
    float const* const from = source.GetImageAdr(0, y, channel, 1, nullptr);
    std::copy(from, from + image.GetWidth(), to);
  }
  if (!IsComplement(channel)) return;
  Complement const& c = kComplements[channel - kPrimaries];
  orb::PairRow(source.GetImageAdr(0, y, c.p, 1, nullptr), source.GetImageAdr(0, y, c.q, 1, nullptr), factor,
               image.GetWidth(), to);
}

// A run that has been started, on images that fit.
void Separate(COrbImage& image, orb::Run& run, COrbImage const& source, int channel, double factor) {
  TakeLevels(image, source, channel, factor);
  for (int y = 0; y < image.GetHeight(); ++y) {
    TakeRow(image, source, channel, factor, y);
    run.Tick();
  }
  run.End();
}

}  // namespace

void CImgSeparation::Do(COrbImage* source, int channel, int progress) {
  orb::Run run(*this, nullptr);
  run.Start(progress, kPrimariesMessage, run.Rows());
  // Intended: a run on images that do not fit stays open; the next one overrides it.
  if (Fits(*this, *source)) Separate(*this, run, *source, channel, kMean);
}

void CImgSepatation::Do(COrbImage* source, int channel, int progress) {
  if (!Fits(*this, *source)) return;
  orb::Run run(*this, nullptr);
  run.Start(progress, IsPrimary(channel) ? kPrimariesMessage : kComplementsMessage, run.Rows());
  Separate(*this, run, *source, channel, kSum);
}
