#include <orbimg/stacking/line_median_internal.h>

#include <algorithm>
#include <iterator>

#include <orbimg/stacking/median_composite_kernels.h>

namespace orb {

// The columns of a block in which a line has samples, counted from the block's first.
LineMedian::Interval LineMedian::Block::Inside(FrameLine const& line) const {
  return Interval{std::clamp(line.Begin(), begin, end) - begin, std::clamp(line.End(), begin, end) - begin};
}

void LineMedian::Compute(FrameLines lines, int plane, std::ptrdiff_t columns, float* out) {
  if (lines.empty()) {
    std::fill(out, out + columns, 0.0f);
    return;
  }
  Prepare(lines, plane);
  for (std::ptrdiff_t begin = 0; begin < columns; begin += kKeyColumns) {
    std::ptrdiff_t const end = std::min<std::ptrdiff_t>(begin + kKeyColumns, columns);
    Block const block{lines, plane, begin, end};
    bool const hasGaps = std::any_of(lines.begin(), lines.end(),
                                     [&](auto const& line) { return line->Begin() > begin || line->End() < end; });
    if (hasGaps) {
      CountLines(block);
      LoadWithGaps(block);
    } else {
      LoadKeyRows(starts, begin, block.Columns(), &keys.front().row);
    }
    // The last block may have idle columns, with what an earlier one left there.
    ExchangeRows(network->Exchanges(), &keys.front().row, soon);
    for (std::uintptr_t& address : soon) address += sizeof(KeyRow);
    StoreKeysRow(keys[static_cast<std::size_t>(network->Rank())].row, block.Columns(), out + begin);
    for (std::ptrdiff_t x = begin; hasGaps && x < end; ++x) {
      if (counts[x - begin] == 0) out[x] = 0.0f;
    }
  }
}

void LineMedian::Prepare(FrameLines lines, int plane) {
  starts.clear();
  soon.clear();
  for (auto const& line : lines) {
    starts.push_back(line->Samples(plane));
    std::uintptr_t const address = line->NextAddress(plane);
    if (address != 0) soon.push_back(address);
  }
  int const inputs = static_cast<int>(lines.size());
  if (network.has_value() && network->Inputs() == inputs) return;
  keys.resize(lines.size());
  network.emplace(inputs, inputs / 2);
}

void LineMedian::CountLines(Block const& block) {
  std::fill(std::begin(counts), std::end(counts), 0);
  for (auto const& line : block.lines) {
    auto const [begin, end] = block.Inside(*line);
    CountRow(end - begin, counts + begin);
  }
  int const inputs = network->Inputs();
  std::transform(std::begin(counts), std::end(counts), std::begin(lows),
                 [inputs](int n) { return inputs / 2 - n / 2; });
}

void LineMedian::LoadWithGaps(Block const& block) {
  Keys* key = keys.data();
  for (auto const& line : block.lines) {
    auto const [begin, end] = block.Inside(*line);
    if (begin > 0) FillGapsRow(begin, lows, key->row);
    LoadKeysRow(line->Samples(block.plane) + block.begin + begin, end - begin, key->row + begin);
    if (end < block.Columns()) FillGapsRow(block.Columns() - end, lows + end, key->row + end);
    ++key;
  }
}

}  // namespace orb
