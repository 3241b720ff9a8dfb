#include <orbimg/restoration/fft2.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <functional>

#include <orbimg/restoration/fft2_kernels.h>
#include <orbimg/restoration/percent_stage_internal.h>

namespace {

// Lines of a length that is a power of two, side by side, would all fall into the same few lines of the cache.
constexpr std::ptrdiff_t kLinePadding = 16;

std::ptrdiff_t LineStride(int ny) { return 2 * static_cast<std::ptrdiff_t>(ny) + kLinePadding; }

// The columns that the others mirror.
std::ptrdiff_t HalfColumns(int nx) { return nx / 2 + 1; }

// One transform: its size, its tables and its arrays.
struct Job {
  FftTables& tables;
  float* spectrum;
  std::ptrdiff_t nx;
  std::ptrdiff_t ny;

  float* SpectrumRow(std::ptrdiff_t y) const { return spectrum + 2 * nx * y; }
  orb::ColumnBlock Columns(std::ptrdiff_t left) const {
    std::ptrdiff_t const count = std::min<std::ptrdiff_t>(orb::kColumnBlock, HalfColumns(static_cast<int>(nx)) - left);
    return {spectrum, nx, ny, left, count, tables.columnLine.data(), LineStride(static_cast<int>(ny))};
  }
};

// rows(y, isPair) for rows y and, for a pair, y + 1.
template <typename Rows>
bool EachPair(Job const& job, orb::PercentStage stage, Rows rows) {
  for (std::ptrdiff_t y = 0; y < job.ny; y += 2) {
    bool const isPair = y + 1 < job.ny;
    if (!stage.Advance(isPair ? y + 2 : y + 1, job.ny)) return false;
    rows(y, isPair);
  }
  return true;
}

// columns(block) for the columns 0 .. nx/2.
template <typename Columns>
bool EachBlock(Job const& job, orb::PercentStage stage, Columns columns) {
  std::ptrdiff_t const all = HalfColumns(static_cast<int>(job.nx));
  for (std::ptrdiff_t left = 0; left < all; left += orb::kColumnBlock) {
    orb::ColumnBlock const block = job.Columns(left);
    if (!stage.Advance(left + block.count, all)) return false;
    columns(block);
  }
  return true;
}

// Where `in` lies in `out`, it moves to the upper half: there no row is overwritten before it is read.
float const* OutOfTheWay(float const* in, float* out, std::ptrdiff_t samples) {
  std::less<float const*> const isBefore;
  if (!isBefore(in, out + 2 * samples) || !isBefore(out, in + samples)) return in;
  std::memmove(out + samples, in, static_cast<std::size_t>(samples) * sizeof(float));
  return out + samples;
}

}  // namespace

FftTables::FftTables(int nx, int ny)
    : rowTable(nx),
      columnTable(ny),
      columnLine(
          static_cast<std::size_t>(std::max(orb::kColumnBlock * LineStride(ny), 2 * static_cast<std::ptrdiff_t>(nx)))) {
}

int Fft2Forward(FftTables* t, float const* in, float* out, int nx, int ny, COrbImage* progress, int percentFrom,
                int percentTo) {
  Job const job{*t, out, nx, ny};
  float* const line = t->columnLine.data();
  orb::PercentReport report(progress);
  int const half = (percentTo - percentFrom) / 2;
  in = OutOfTheWay(in, out, job.nx * job.ny);
  bool const areRowsDone = EachPair(job, {report, percentFrom, half, ny}, [&](std::ptrdiff_t y, bool isPair) {
    float const* const row = in + job.nx * y;
    orb::JoinRealRows(row, isPair ? row + job.nx : nullptr, job.nx, line);
    t->rowTable.Forward(line);
    orb::PartSpectra(line, job.nx, job.SpectrumRow(y), isPair ? job.SpectrumRow(y + 1) : nullptr);
  });
  if (!areRowsDone) return 0;
  double const divisor = static_cast<double>(nx) * ny;
  return EachBlock(job, {report, percentFrom + half, half, nx}, [&](orb::ColumnBlock const& block) {
    orb::GatherColumns(block);
    for (std::ptrdiff_t c = 0; c < block.count; ++c) {
      float* const column = block.lines + c * block.lineStride;
      t->columnTable.Forward(column);
      orb::DivideLine(column, job.ny, divisor);
    }
    orb::ScatterWithMirrors(block);
  });
}

// Columns come first here: what they leave to the rows is the spectrum of real lines, two of which share one.
int Fft2Inverse(FftTables* t, float* in, float* out, int nx, int ny, COrbImage* progress, int percentFrom,
                int percentTo) {
  Job const job{*t, in, nx, ny};
  float* const line = t->columnLine.data();
  orb::PercentReport report(progress);
  int const half = (percentTo - percentFrom) / 2;
  bool const areColumnsDone = EachBlock(job, {report, percentFrom, half, ny}, [&](orb::ColumnBlock const& block) {
    orb::GatherSymmetricColumns(block);
    for (std::ptrdiff_t c = 0; c < block.count; ++c) t->columnTable.Backward(block.lines + c * block.lineStride);
    orb::ScatterColumns(block);
  });
  if (!areColumnsDone) return 0;
  return EachPair(job, {report, percentFrom + half, half, nx}, [&](std::ptrdiff_t y, bool isPair) {
    orb::JoinSpectra(job.SpectrumRow(y), isPair ? job.SpectrumRow(y + 1) : nullptr, job.nx, line);
    t->rowTable.Backward(line);
    float* const row = out + job.nx * y;
    orb::PartRealRows(line, job.nx, row, isPair ? row + job.nx : nullptr);
  });
}
