#include <orbimg/restoration/mem_solver.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <limits>
#include <utility>

#include <orbimg/restoration/mem_progress_internal.h>

namespace {

enum Result { kStopped = 0, kBadVariance = 1, kTooFewArrays = 2, kOperatorFailed = 3, kDirectionCut = 5, kEscape = 8 };
enum Task { kConvolve = 1, kCorrelate = 2, kConvolveOneOff = 3 };

constexpr double kLowest = 1e-10;  // of an estimate
constexpr double kStartLag = 1e-10;
constexpr int kMostSteps = 10;        // of a line search
constexpr int kStepsWithSlope = 6;    // that renew the second derivative
constexpr int kStepsWithLag = 5;      // that renew lag
constexpr double kFlat = 1e-7;        // a derivative that counts as 0
constexpr double kSameStep = 1e-4;    // a relative change of the step that counts as none
constexpr double kNearLimit = 0.99;   // where a step lands that went beyond its limit,
constexpr double kFromBefore = 0.01;  // between the limit and the step before
constexpr double kMostFall = 0.9;     // a pixel's share that a step may take away
constexpr double kCutFall = 0.5;      // what it takes where it was more

double AtLeastLowest(double v) { return v < kLowest ? kLowest : v; }

// The arrays and the arguments of a call, under the names of the header.
struct Problem {
  float* x;
  float* y;
  float* weight;
  float* gradient;
  float* scratch;
  float* curvature;
  float* blurredDirection;
  float* hessianDirection;
  float const* psf;
  float* kernelWork;
  ConvolveOperator op;
  float* kernelStore;
  double* limits;
  double variance;
  int workArrays;
  int nx;
  int ny;
  int halfX;
  int halfY;
  bool doesReport;
  bool hasStart;
  COrbImage* progress;
  int planeNumber;
};

class Solver {
 public:
  explicit Solver(Problem arguments)
      : p(std::move(arguments)), n(static_cast<std::ptrdiff_t>(p.nx) * p.ny), run(p.progress, p.planeNumber) {}

  int Solve() {
    int const code = Search();
    run.End();
    return code;
  }

 private:
  int Search();

  int SetUp();
  int CountData();
  void MakeStart();
  void SquareKernel();
  void MakeResidual();
  void CountUnknowns();
  void StartLag();

  int Iterate(int k);
  void Precondition();
  void MakeDirection(bool isFirst);
  int MakeCurvature();
  bool CutDirection();
  void FindStepLimits();
  void SearchLine();
  void StepAlongLine();
  void RenewLag();
  bool IsSearchGood() const;
  void Update();
  void MakeStatistics();
  bool IsAtEnd(int k) const;
  void Report(int k) const;
  int Finish();

  // 0, or the code to return.
  int Apply(int task, float* out, float const* in, float const* kernel, int percentFrom, int percentTo);
  int ApplySilently(int task, float* out, float const* in);
  int CodeOf(int status) const { return status == 0 || status == kEscape ? status : kOperatorFailed; }
  bool Show(int percent) { return run.Show(percent); }
  float*& Direction() { return p.y; }

  Problem p;
  std::ptrdiff_t n;
  orb::MemProgress run;

  double ndata = 0.0;
  double nunk = 0.0;
  double scale = 0.0;
  double sigma = 0.0;
  double chi = 0.0;
  double chiNew = 0.0;
  double lag = kStartLag;
  double lag0 = kStartLag;
  double lagSaved = 0.0;
  double ratio = kStartLag;
  double a = 0.0;
  double aOld = 0.0;
  double aLimit = 0.0;
  double aLow = 0.0;
  double aHigh = 0.0;
  double S1 = 0.0;
  double dAd = 0.0;
  double Q1 = 0.0;
  double Q2 = 0.0;
  double G = 0.0;
  double G1 = 0.0;
  double rmsStep = 0.0;
  double maxStep = 0.0;
  double rmsRes = 0.0;
  double nsd = 0.0;
  int stage = 0;
  int sub = 0;
  int iuch = 0;
};

int Solver::Search() {
  int code = SetUp();
  for (int k = 1; code == 0; ++k) {
    code = Iterate(k);
    if (code == 0 && IsAtEnd(k)) return Finish();
  }
  return code;
}

int Solver::Apply(int task, float* out, float const* in, float const* kernel, int percentFrom, int percentTo) {
  int mode = task;
  p.op(out, in, kernel, p.kernelStore, p.nx, p.ny, p.halfX, p.halfY, &mode, p.progress, percentFrom, percentTo);
  return CodeOf(mode);
}

int Solver::ApplySilently(int task, float* out, float const* in) {
  int mode = task;
  p.op(out, in, p.psf, p.kernelStore, p.nx, p.ny, p.halfX, p.halfY, &mode, nullptr, 0, 0);
  return CodeOf(mode);
}

// ---- Setup

int Solver::SetUp() {
  run.StartSetUp();
  if (!(p.variance > 0.0)) return kBadVariance;
  if (p.workArrays < 4) return kTooFewArrays;
  if (int const code = CountData(); code != 0) return code;
  MakeStart();
  if (!Show(12)) return kEscape;
  sigma = std::sqrt(p.variance) * scale;
  SquareKernel();
  if (!Show(15)) return kEscape;
  if (int const code = Apply(kConvolveOneOff, p.curvature, p.weight, p.kernelWork, 15, 35); code != 0) return code;
  for (std::ptrdiff_t i = 0; i < n; ++i) p.curvature[i] = static_cast<float>(p.curvature[i] * (1.0 / sigma));
  if (!Show(40) || !Show(42)) return kEscape;
  if (int const code = Apply(kConvolve, p.scratch, p.x, p.psf, 42, 62); code != 0) return code;
  MakeResidual();
  if (!Show(65)) return kEscape;
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    p.scratch[i] = static_cast<float>(static_cast<double>(p.y[i]) * p.weight[i] * (-1.0 / sigma));
  }
  if (!Show(67)) return kEscape;
  if (int const code = Apply(kCorrelate, p.gradient, p.scratch, p.psf, 67, 87); code != 0) return code;
  CountUnknowns();
  if (!Show(90)) return kEscape;
  chi = 0.0;
  for (std::ptrdiff_t i = 0; i < n; ++i) chi += static_cast<double>(p.y[i]) * p.y[i] * p.weight[i];
  chi /= sigma * sigma;
  if (!Show(95)) return kEscape;
  for (std::ptrdiff_t i = 0; i < n; ++i) p.scratch[i] = static_cast<float>(-std::log(static_cast<double>(p.x[i])));
  if (!Show(100)) return kEscape;
  StartLag();
  run.End();
  return 0;
}

int Solver::CountData() {
  std::ptrdiff_t const zeros = std::count(p.weight, p.weight + n, 0.0f);
  ndata = static_cast<double>(n - zeros);
  if (!Show(2)) return kEscape;
  for (float* each : {p.gradient, p.scratch, p.curvature, p.blurredDirection, p.hessianDirection}) {
    std::fill_n(each, n, 0.0f);
  }
  if (!Show(5)) return kEscape;
  double sum = 0.0;
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    if (p.weight[i] != 0.0f) sum += p.y[i];
  }
  scale = ndata / sum;
  return Show(7) ? 0 : kEscape;
}

void Solver::MakeStart() {
  if (!p.hasStart) {
    std::fill_n(p.x, n, 1.0f);
    return;
  }
  double sum = 0.0;
  for (std::ptrdiff_t i = 0; i < n; ++i) sum += p.x[i];
  double const toMeanOfOne = static_cast<double>(n) / sum;
  for (std::ptrdiff_t i = 0; i < n; ++i) p.x[i] = static_cast<float>(AtLeastLowest(p.x[i] * toMeanOfOne));
}

// Turned by 180 degrees, so that a convolution with it is a correlation with the squares.
void Solver::SquareKernel() {
  std::ptrdiff_t const count =
      (2 * static_cast<std::ptrdiff_t>(p.halfX) + 1) * (2 * static_cast<std::ptrdiff_t>(p.halfY) + 1);
  for (std::ptrdiff_t i = 0; i < count; ++i) p.kernelWork[i] = p.psf[count - 1 - i] * p.psf[count - 1 - i];
}

void Solver::MakeResidual() {
  for (std::ptrdiff_t i = 0; i < n; ++i) p.y[i] = static_cast<float>(p.y[i] * scale - p.scratch[i]);
}

void Solver::CountUnknowns() {
  nunk = static_cast<double>(n);
  if (ndata == nunk) return;
  nunk = static_cast<double>(n - std::count(p.gradient, p.gradient + n, 0.0f));
  if (!p.hasStart) return;
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    if (p.gradient[i] == 0.0f) p.x[i] = 1.0f;
  }
}

void Solver::StartLag() {
  if (!p.hasStart) return;
  double ofChi = 0.0;
  double ofEntropy = 0.0;
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    ofChi += static_cast<double>(p.gradient[i]) * p.gradient[i] * p.x[i];
    ofEntropy += static_cast<double>(p.scratch[i]) * p.scratch[i] * p.x[i];
  }
  if (!(ofEntropy > 0.0)) return;
  lag0 = std::sqrt(ofChi / ofEntropy);
  lag = lag0 / std::sqrt(chi / ndata);
}

// ---- Main iteration

int Solver::Iterate(int k) {
  run.StartIteration(k);
  if (!Show(0)) return kEscape;
  Precondition();
  if (!Show(5)) return kEscape;
  MakeDirection(k == 1);
  if (!Show(10)) return kEscape;
  if (int const code = MakeCurvature(); code != 0) return code;
  if (!Show(25)) return kEscape;
  for (std::ptrdiff_t i = 0; i < n; ++i) p.scratch[i] = p.blurredDirection[i] * p.weight[i];
  if (int const code = Apply(kCorrelate, p.hessianDirection, p.scratch, p.psf, 25, 45); code != 0) return code;
  for (std::ptrdiff_t i = 0; i < n; ++i) p.scratch[i] = -Direction()[i] / p.x[i];
  if (!Show(50)) return kEscape;
  FindStepLimits();
  if (!Show(55)) return kEscape;
  SearchLine();
  if (!Show(70)) return kEscape;
  Update();
  if (!Show(75)) return kEscape;
  double const factor = a / sigma;
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    p.gradient[i] = static_cast<float>(p.gradient[i] + p.hessianDirection[i] * factor);
  }
  if (!Show(95)) return kEscape;
  MakeStatistics();
  if (p.doesReport) Report(k);
  return Show(100) ? 0 : kEscape;
}

// The gradient of Q by its diagonal. Intended: x becomes 1/x as floats and later comes back from there, and scratch is
// what the last line search left, -ln of a point a little off the present x.
void Solver::Precondition() {
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    p.x[i] = 1.0f / p.x[i];
    p.scratch[i] = static_cast<float>((p.gradient[i] - p.scratch[i] * lag) / (p.x[i] * lag + p.curvature[i]));
  }
}

// d = s - beta d; x holds 1/x. The first direction is s itself.
void Solver::MakeDirection(bool isFirst) {
  float* const d = Direction();
  if (isFirst) {
    std::copy_n(p.scratch, n, d);
    return;
  }
  double sv = 0.0;
  double sdx = 0.0;
  double ddx = 0.0;
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    double const s = p.scratch[i];
    double const di = d[i];
    sv += s * p.hessianDirection[i];
    sdx += s * di * p.x[i];
    ddx += di * di * p.x[i];
  }
  double const beta = (sv / sigma + sdx * lag) / (ddx * lag + dAd);
  for (std::ptrdiff_t i = 0; i < n; ++i) d[i] = static_cast<float>(d[i] * -beta + p.scratch[i]);
}

// b = H d and the parabola of chi-square along d; once more where the direction had to be cut. x comes back from 1/x.
int Solver::MakeCurvature() {
  iuch = 0;
  for (;;) {
    if (int const code = ApplySilently(kConvolve, p.blurredDirection, Direction()); code != 0) return code;
    S1 = 0.0;
    double bbw = 0.0;
    for (std::ptrdiff_t i = 0; i < n; ++i) {
      double const b = p.blurredDirection[i];
      S1 += static_cast<double>(p.gradient[i]) * Direction()[i];
      bbw += b * b * p.weight[i];
    }
    dAd = bbw / sigma;
    Q1 = 2.0 * S1 / sigma;
    Q2 = dAd / sigma;
    if (iuch == 1) return 0;
    double L = 0.0;
    for (std::ptrdiff_t i = 0; i < n; ++i) {
      p.x[i] = 1.0f / p.x[i];
      L += std::log(static_cast<double>(p.x[i])) * Direction()[i];
    }
    aLimit = -(lag * L + S1) / dAd;
    if (!CutDirection()) return 0;
    iuch = 1;
  }
}

// No step of aLimit may bring a pixel down by more than 90 %; one that would be is set to go down by half.
bool Solver::CutDirection() {
  float* const d = Direction();
  double const side = aLimit <= 0.0 ? -1.0 : 1.0;
  double const most = kMostFall / std::fabs(aLimit);
  double const cut = kCutFall / std::fabs(aLimit);
  bool isCut = false;
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    if (!(p.x[i] * most + side * d[i] < 0.0)) continue;
    d[i] = static_cast<float>(p.x[i] * (-side * cut));
    isCut = true;
  }
  return isCut;
}

// The steps at which the first pixel reaches 0, on either side. scratch holds -d/x.
void Solver::FindStepLimits() {
  auto const [least, most] = std::minmax_element(p.scratch, p.scratch + n);
  aLow = 1.0 / *least;
  aHigh = 1.0 / *most;
}

// Newton's search for the zero of G, the derivative of Q along d, with lag renewed under way (stage 0); if that ends
// where it should not, again from 0 with the balance of the last iteration (stage 1), which is accepted as it is.
void Solver::SearchLine() {
  a = aOld;
  bool const isInside = !(aLow < 0.0 && !(a > aLow)) && !(aHigh > 0.0 && !(a < aHigh));
  if (!isInside) a = 0.0;
  lagSaved = lag;
  for (stage = 0; stage < 2; ++stage) {
    sub = 0;
    do {
      StepAlongLine();
    } while (sub < kMostSteps && (sub < 2 || (std::fabs(G) >= kFlat && std::fabs((a - aOld) / a) >= kSameStep)));
    if (stage == 1 || IsSearchGood()) return;
    a = 0.0;
    lag = lagSaved;
  }
}

void Solver::StepAlongLine() {
  float const* const d = Direction();
  aOld = a;
  ++sub;
  double sd = 0.0;
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    p.scratch[i] = static_cast<float>(-std::log(AtLeastLowest(d[i] * a + p.x[i])));
    sd += static_cast<double>(p.scratch[i]) * d[i];
  }
  G = ((a * dAd + S1) - lag * sd) / nunk;
  if (sub <= kStepsWithSlope) {
    double ddx = 0.0;
    for (std::ptrdiff_t i = 0; i < n; ++i) ddx += static_cast<double>(d[i]) * d[i] / (d[i] * a + p.x[i]);
    G1 = (lag * ddx + dAd) / nunk;
  }
  a = a - G / G1;
  // Intended: a limit binds on its own side of 0 only. On the other it is where no pixel falls at all.
  if (aLow < 0.0 && a <= aLow) a = aLow * kNearLimit + aOld * kFromBefore;
  if (aHigh > 0.0 && a >= aHigh) a = aHigh * kNearLimit + aOld * kFromBefore;
  chiNew = (a * Q2 + Q1) * a + chi;
  if (sub <= kStepsWithLag) RenewLag();
}

// The multiplier that balances the gradients of the two terms, weakened as chi-square nears the number of data.
void Solver::RenewLag() {
  double const deviation = std::sqrt(chiNew / ndata);
  if (stage == 1) {
    lag = lag0 / deviation;
    return;
  }
  float const* const d = Direction();
  double const c = a / sigma;
  double ofChi = 0.0;
  double ofEntropy = 0.0;
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    double const u = p.hessianDirection[i] * c + p.gradient[i];
    double const t = d[i] * a + p.x[i];
    double const s = p.scratch[i];
    ofChi += t * u * u;
    ofEntropy += t * s * s;
  }
  if (ofEntropy == 0.0) {
    lag = 0.0;
    return;
  }
  ratio = std::sqrt(ofChi / ofEntropy);
  lag = ratio / deviation;
}

bool Solver::IsSearchGood() const { return a <= 0.0 && std::fabs((a - aLimit) / aLimit) <= 0.5 && sub < kMostSteps; }

void Solver::Update() {
  if (stage == 0) lag0 = ratio;
  float const* const d = Direction();
  for (std::ptrdiff_t i = 0; i < n; ++i) p.x[i] = static_cast<float>(AtLeastLowest(d[i] * a + p.x[i]));
  chi = chiNew;
}

void Solver::MakeStatistics() {
  float const* const d = Direction();
  double dd = 0.0;
  double largest = 0.0;
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    dd += static_cast<double>(d[i]) * d[i];
    largest = std::max(largest, std::fabs(static_cast<double>(d[i])));
  }
  rmsStep = std::sqrt(dd / nunk) * std::fabs(a) / scale;
  maxStep = largest * std::fabs(a) / scale;
  rmsRes = std::sqrt(sigma * dAd / ndata) * std::fabs(a) / sigma;
  nsd = std::sqrt(chi / ndata);
}

// Statistics that are not numbers reach nothing, and nothing but a number of iterations ends their search; without one
// they end it at once, or it would not end at all.
bool Solver::IsAtEnd(int k) const {
  if (rmsStep <= p.limits[0] || maxStep <= p.limits[1] || rmsRes <= p.limits[2]) return true;
  if (p.limits[3] > 0.0) return k >= p.limits[3];
  return std::isnan(rmsStep) || std::isnan(maxStep) || std::isnan(rmsRes);
}

int Solver::Finish() {
  p.limits[0] = rmsStep;
  p.limits[1] = maxStep;
  p.limits[2] = rmsRes;
  p.limits[3] = nsd;
  float const least = *std::min_element(p.x, p.x + n);
  for (std::ptrdiff_t i = 0; i < n; ++i) p.x[i] = static_cast<float>(p.x[i] / scale);
  int const code = iuch == 1 ? kDirectionCut : kStopped;
  // Intended: compared as floats, as the bound was rounded when it was stored.
  return least <= static_cast<float>(kLowest) ? code * 10 + 6 : code;
}

void Solver::Report(int k) const {
  if (k == 1) {
    std::printf("maximum entropy restoration\n\n");
    std::printf(
        "array dimension      %15lld\nnumber of data       %15.0f\nnumber of unknowns   %15.0f\n"
        "number of work-arrays%15d\nfactor to o(1)-scale %15.8e\n",
        static_cast<long long>(n), ndata, nunk, p.workArrays, scale);
  }
  std::printf(
      "\nmain iter %20d     g function %20.12e\nsub  iter %20.1f     a value    %20.12e\n"
      "sdir iuch %20d     a limit    %20.12e\nrms step  %20.12f     low limit  %20.12e\n"
      "max step  %20.12e     lagpar     %20.12e\nrms res   %20.12e     nsd        %20.12e\n",
      k, G, sub + 0.1 * stage, a, iuch, aLimit, rmsStep, aLow, maxStep, lag, rmsRes, nsd);
}

}  // namespace

int MemSolve(float* x, float* y, float* weight, float* work, float const* psf, float* kernelWork, ConvolveOperator op,
             float* kernelStore, double* limits, double variance, int workArrays, int nx, int ny, int halfX, int halfY,
             int report, int useStart, COrbImage* progress, int planeNumber) {
  std::ptrdiff_t const n = static_cast<std::ptrdiff_t>(nx) * ny;
  Problem problem{x,   y,          weight,        work,        work + n,     work + 2 * n, work + 3 * n, work + 4 * n,
                  psf, kernelWork, std::move(op), kernelStore, limits,       variance,     workArrays,   nx,
                  ny,  halfX,      halfY,         report != 0, useStart > 0, progress,     planeNumber};
  return Solver(std::move(problem)).Solve();
}
