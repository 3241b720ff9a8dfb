// The restorations on a field whose truth is known, and CImgLucy beside the textbook iteration
//
//   estimate <- estimate * unblur(data/blur(estimate)),   estimate = mean of the data at first,
//
// which is written in Python on scipy.fft's real transforms here, and is scikit-image's richardson_lucy where time is
// compared with a package.
//
// Run: restoration_truth quality | iterations | time [SIDE]
#include <bench/side_by_side.h>
#include <bench/truth_scene.h>
#include <orbimg/orbimg.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

namespace {

using orb::bench::Fidelity;
using orb::bench::Python;
using orb::bench::Scene;
using orb::bench::SceneSettings;

// Electrons a unit where iterations are counted: with fewer, Lucy's are over, the data being met, before the
// textbook's.
constexpr double kManyElectrons = 40.0;

constexpr char kTextbook[] =
    "import numpy, scipy.fft\n"
    "def set_up(data, sigma):\n"
    "    global H, psf, shape\n"
    "    shape = data.shape\n"
    "    axis = numpy.arange(-32, 33)\n"
    "    psf = numpy.exp(-(axis[:, None]**2 + axis[None, :]**2) / (2 * sigma**2)).astype(numpy.float32)\n"
    "    psf /= psf.sum()\n"
    "    pad = numpy.zeros(shape, numpy.float32)\n"
    "    pad[:65, :65] = psf\n"
    "    H = scipy.fft.rfft2(numpy.roll(pad, (-32, -32), (0, 1)), workers=1)\n"
    "def blur(a): return scipy.fft.irfft2(scipy.fft.rfft2(a, workers=1) * H, s=shape, workers=1)\n"
    "def unblur(a): return scipy.fft.irfft2(scipy.fft.rfft2(a, workers=1) * H.conj(), s=shape, workers=1)\n"
    "def textbook(data, n):\n"
    "    estimate = numpy.full(shape, data.mean(), numpy.float32)\n"
    "    for i in range(n): estimate *= unblur(data / blur(estimate))\n"
    "    return estimate\n"
    "def chi_square(estimate, data, adu, noise):\n"
    "    model = blur(estimate).astype(numpy.float64)\n"
    "    r = (model - data) * adu\n"
    "    return (r * r / (adu * model + noise * noise)).sum() / (data.size - 1)\n";

double SecondsOf(std::function<void()> const& work) {
  auto const start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// A scene, its frame, and both sides' iterations on it.
class Trial {
 public:
  explicit Trial(SceneSettings const& settings)
      : scene(settings), frame(scene.Frame()), estimate(frame.size()), python(kTextbook), result(1) {
    std::vector<long> const shape{settings.side, settings.side};
    python.SetFloats("data", frame.data(), shape);
    python.SetFloats("estimate", estimate.data(), shape);
    python.SetFloats("result", result.data(), {1});
    python.Run("set_up(data, " + Numbers({settings.blur}) + ")");
  }

  template <typename Operator, typename Run>
  std::vector<float> const& Restore(Run const& run) {
    Operator image;
    COrbImage const empty(-32, Settings().side, Settings().side, 1, 1.0, 0.0, 1, nullptr, nullptr);
    image.CopyImage(empty, nullptr, nullptr);
    image.CImage::SetLevel(0, 0.0, 255.0);
    float* const samples = image.GetImageAdr(0, 0, 0, 0, nullptr);
    std::copy(frame.begin(), frame.end(), samples);
    if (run(image) != 1) std::abort();
    std::copy(samples, samples + frame.size(), estimate.begin());
    return estimate;
  }

  std::vector<float> const& Wiener(double noise) {
    double const radius = Settings().blur / 0.707106781373095;
    Restore<CImgWiener>([&](CImgWiener& image) { return image.Do(radius, noise, nullptr, 0); });
    // The operator's gain, which is not corrected there.
    double const gain = Settings().side / (1000.0 * Settings().blur * Settings().blur) / (1.0 + noise);
    for (float& v : estimate) v = static_cast<float>(v / gain);
    return estimate;
  }
  std::vector<float> const& Lucy(int iterations) {
    SceneSettings const& s = Settings();
    return Restore<CImgLucy>(
        [&](CImgLucy& image) { return image.Do(s.blur, s.adu, s.readNoise, iterations, nullptr, 0); });
  }
  std::vector<float> const& MaximumEntropy(double noise, int iterations) {
    return Restore<CImgMem>([&](CImgMem& image) { return image.Do(Settings().blur, noise, iterations, nullptr, 0); });
  }
  std::vector<float> const& Textbook(int iterations) {
    python.Run("estimate[:] = textbook(data, " + std::to_string(iterations) + ")");
    return estimate;
  }
  void Package(int iterations) {
    python.Run("import skimage.restoration\nskimage.restoration.richardson_lucy(data, psf, num_iter=" +
               std::to_string(iterations) + ", clip=False)");
  }

  // Of the last estimate.
  double ChiSquare() {
    python.Run("result[0] = chi_square(estimate, data, " + Numbers({Settings().adu, Settings().readNoise}) + ")");
    return result[0];
  }
  Fidelity Compare(double shift = 0.0) const { return orb::bench::Compare(scene, estimate, shift); }
  Fidelity CompareFrame() const { return orb::bench::Compare(scene, frame, 0.0); }
  SceneSettings const& Settings() const { return scene.Settings(); }
  double SkyNoise() const {
    SceneSettings const& s = Settings();
    return std::sqrt(s.adu * s.sky + s.readNoise * s.readNoise) / s.adu;
  }

 private:
  static std::string Numbers(std::vector<double> const& values) {
    std::string text;
    for (double const v : values) text += (text.empty() ? "" : ", ") + std::to_string(v);
    return text;
  }

  Scene scene;
  std::vector<float> frame;
  std::vector<float> estimate;
  Python python;
  std::vector<float> result;
};

void Print(std::string const& name, Fidelity const& f) {
  std::printf("| %-28s | %7.2f | %6.2f | %6.3f | %6.3f +- %5.3f | %7.2f |\n", name.c_str(), f.rms, f.skyNoise, f.sigma,
              f.flux, f.fluxSpread, f.ring);
  std::fflush(stdout);
}

void ShowQuality(SceneSettings const& settings) {
  Trial trial(settings);
  std::printf("field of %d x %d, stars of sigma %.1f blurred by %.1f, noise of the sky %.2f\n\n", settings.side,
              settings.side, settings.starSigma, settings.blur, trial.SkyNoise());
  std::printf("| %-28s | %-7s | %-6s | %-6s | %-15s | %-7s |\n", "restored by", "error", "sky", "sigma", "light kept",
              "ring");
  std::printf("|---|---|---|---|---|---|\n");
  Print("(as taken)", trial.CompareFrame());
  for (double const noise : {0.1, 0.01, 0.001, 0.0001}) {
    trial.Wiener(noise);
    Print("wiener, noise " + std::to_string(noise).substr(0, 6), trial.Compare());
  }
  for (int const iterations : {1, 2, 5, 10, 20, 50, 100}) {
    trial.Lucy(iterations);
    Print("lucy, " + std::to_string(iterations) + " iterations", trial.Compare());
  }
  for (int const iterations : {10, 50, 200}) {
    trial.Textbook(iterations);
    Print("textbook, " + std::to_string(iterations) + " iterations", trial.Compare());
  }
  for (double const factor : {4.0, 2.0, 1.0, 0.5}) {
    trial.MaximumEntropy(factor * trial.SkyNoise(), 30);
    char name[64];
    std::snprintf(name, sizeof name, "mem, noise %.1f", factor * trial.SkyNoise());
    Print(name, trial.Compare(0.5));
  }
  for (int const iterations : {10, 100}) {
    trial.MaximumEntropy(trial.SkyNoise(), iterations);
    Print("mem, " + std::to_string(iterations) + " iterations", trial.Compare(0.5));
  }
}

void ShowIterations(SceneSettings const& settings) {
  Trial trial(settings);
  std::printf("| %-10s | %-12s | %-12s | %-10s | %-10s |\n", "iterations", "lucy chi-sq", "textbook", "lucy error",
              "textbook");
  std::printf("|---|---|---|---|---|\n");
  for (int const n : {1, 2, 3, 5, 7, 10, 15, 20, 30, 50}) {
    trial.Lucy(n);
    double const ours = trial.ChiSquare();
    double const oursError = trial.Compare().rms;
    trial.Textbook(n);
    double const theirs = trial.ChiSquare();
    std::printf("| %10d | %12.4f | %12.4f | %10.2f | %10.2f |\n", n, ours, theirs, oursError, trial.Compare().rms);
    std::fflush(stdout);
  }
}

// The fewest iterations whose chi-square is at most that of so many of the textbook's.
int IterationsTo(Trial& trial, double chiSquare, int most) {
  for (int n = 1; n <= most; ++n) {
    trial.Lucy(n);
    if (trial.ChiSquare() <= chiSquare) return n;
  }
  return 0;
}

void ShowTime(SceneSettings const& settings) {
  constexpr int kTextbookIterations = 50;
  Trial trial(settings);
  double const textbook = SecondsOf([&] { trial.Textbook(kTextbookIterations); });
  double const goal = trial.ChiSquare();
  double const error = trial.Compare().rms;
  int const n = IterationsTo(trial, goal, kTextbookIterations);
  if (n == 0) {
    std::printf("a chi-square of %.4f is not reached\n", goal);
    return;
  }
  double const ours = SecondsOf([&] { trial.Lucy(n); });
  double const reached = trial.ChiSquare();
  double const oursError = trial.Compare().rms;
  double const package = SecondsOf([&] { trial.Package(kTextbookIterations); });
  std::printf(
      "%d x %d: %d textbook iterations reach chi-square %.4f (error %.2f) in %.3f s; in Python with "
      "scikit-image they take %.3f s\n",
      settings.side, settings.side, kTextbookIterations, goal, error, textbook, package);
  std::printf("lucy: %d iterations reach %.4f (error %.2f) in %.3f s: %.3f and %.3f times that\n", n, reached,
              oursError, ours, ours / textbook, ours / package);
  // At equal time: as many iterations as the textbook has time for, in scipy's transforms.
  int const equal = static_cast<int>(kTextbookIterations * ours / textbook);
  trial.Textbook(equal);
  std::printf("in that time the textbook makes %d iterations and reaches %.4f (error %.2f)\n", equal, trial.ChiSquare(),
              trial.Compare().rms);
}

}  // namespace

int main(int argc, char** argv) {
  SceneSettings settings;
  if (argc > 2) settings.side = std::max(256, std::atoi(argv[2]));
  std::string const what = argc > 1 ? argv[1] : "";
  if (what == "quality") {
    ShowQuality(settings);
  } else if (what == "iterations" || what == "time") {
    settings.adu = kManyElectrons;
    what == "time" ? ShowTime(settings) : ShowIterations(settings);
  } else {
    std::fprintf(stderr, "restoration_truth quality | iterations | time [SIDE]\n");
    return 2;
  }
  return 0;
}
