// Calls of every operator of the catalogue, on random images.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <hosts/catalogue/catalogue.h>
#include <hosts/catalogue/check.h>
#include <tests/support/test_images.h>

namespace orb::test {

// One way to call an operator: the planes of its images, and the values of its parameters.
struct Way {
  host::OperatorEntry const* entry;
  int planes;
  int sourcePlanes;
  int secondPlanes;  // also of some frames
  std::vector<double> values;
  std::string name;
};

inline std::ostream& operator<<(std::ostream& out, Way const& way) { return out << way.name; }

// The images of a call and the call itself.
class Trial {
 public:
  Trial(Way const& way, Random& random, int width, int height)
      : entry(*way.entry),
        image(RandomImage(random, width, height, way.planes)),
        source(RandomImage(random, width, height, way.sourcePlanes)),
        second(RandomImage(random, width + 3, std::max(height - 1, 1), way.secondPlanes)) {
    if (entry.TakesFrames()) AddFrames(random, width, height, way.secondPlanes);
    if (entry.sourceShape == host::SourceShape::kAny || entry.sourceShape == host::SourceShape::kAnySize) {
      source = RandomImage(random, width + 1, std::max(height - 2, 1), way.sourcePlanes);
    }
    for (COrbImage* each : Images()) {
      each->SetStdPt(0, CfPoint(1.5, 0.25));
      each->SetStdPt(1, CfPoint(width - 0.75, height - 0.5));
      each->SetStdCtr(width / 2.0, height / 2.0);
    }
    call.image = &image;
    cut = CRect(width / 3, height / 4, width - width / 5, height - height / 6);
    if (entry.cutsToRectangle) call.rect = &cut;
    if (entry.sourceShape != host::SourceShape::kNone) call.source = &source;
    if (entry.needsSecond) call.second = &second;
    call.values = way.values;
    if (!entry.results.empty()) call.results = &results;
    AddTables(random);
  }
  Trial(Trial const&) = delete;
  Trial& operator=(Trial const&) = delete;

  bool IsSound() const { return host::CheckInvocation(entry, call).empty(); }
  // With the same lots for operators that draw them.
  void Run() {
    std::srand(1);
    EXPECT_EQ(1, entry.run(call));
  }

  // All but the image itself.
  std::vector<COrbImage*> Inputs() {
    std::vector<COrbImage*> inputs{&source, &second};
    for (COrbImage& frame : frames) inputs.push_back(&frame);
    return inputs;
  }
  std::vector<COrbImage*> Images() {
    std::vector<COrbImage*> images = Inputs();
    images.insert(images.begin(), &image);
    return images;
  }

  host::OperatorEntry const& entry;
  COrbImage image;
  COrbImage source;
  COrbImage second;
  std::vector<COrbImage> frames;
  std::vector<double> results;
  CRect cut;
  host::Invocation call;

 private:
  void AddTables(Random& random) {
    std::uniform_real_distribution<float> number(0.0f, 1.0f);
    call.tables.resize(entry.TablesFor(image.GetPlanes()), std::vector<float>(40));
    for (std::vector<float>& table : call.tables) {
      for (float& v : table) v = number(random);
    }
  }

  // As it is, shifted, turned, and partly off the image; every second one has `otherPlanes`.
  void AddFrames(Random& random, int width, int height, int otherPlanes) {
    std::vector<std::vector<double>> const placements = {
        {0.0, 0.0, 0.0}, {1.25, -2.0, 0.0}, {-0.5, 0.75, 3.5}, {width / 2.0, height / 3.0, -40.0}};
    std::size_t const count = entry.frameNames.empty() ? placements.size() : entry.frameNames.size();
    for (std::size_t i = 0; i < count; ++i) {
      int const more = static_cast<int>(i);
      frames.push_back(
          RandomImage(random, width + more, std::max(height - more, 1), i % 2 == 0 ? image.GetPlanes() : otherPlanes));
    }
    for (std::size_t i = 0; i < count; ++i) call.frames.push_back({&frames[i], placements[i]});
  }
};

// What an operator leaves in its image and in its results.
inline void ExpectSameOutcome(Trial const& expected, Trial const& actual) {
  EXPECT_TRUE(SameBits(expected.image, actual.image));
  EXPECT_TRUE(SameLevels(expected.image, actual.image));
  EXPECT_EQ(expected.results, actual.results);
}

// Defaults, every choice, every flag, and values off the defaults.
inline std::vector<std::vector<double>> ValueSets(host::OperatorEntry const& entry) {
  using Kind = host::Parameter::Kind;
  std::vector<std::vector<double>> sets{entry.Defaults()};
  std::vector<double> moved = entry.Defaults();
  for (std::size_t i = 0; i < moved.size(); ++i) {
    host::Parameter const& parameter = entry.parameters[i];
    if (parameter.kind == Kind::kReal && parameter.unit == "pixels") moved[i] = i % 2 == 0 ? 1.25 : -2.0;
    if (parameter.kind == Kind::kReal && parameter.unit == "degrees") moved[i] = 3.5;
    // One that a size hangs on keeps near what suits small images.
    double const other = entry.sizeOfResult != nullptr ? moved[i] + 1.0 : 20.0;
    if (parameter.kind == Kind::kInteger) moved[i] = std::min(parameter.most, other);
  }
  if (moved != sets[0]) sets.push_back(moved);
  for (std::size_t i = 0; i < moved.size(); ++i) {
    host::Parameter const& parameter = entry.parameters[i];
    if (parameter.kind != Kind::kChoice && parameter.kind != Kind::kFlag) continue;
    for (double v = 1.0; v <= parameter.most; ++v) {
      if (v == moved[i]) continue;  // a choice whose default is not the first
      sets.push_back(moved);
      sets.back()[i] = v;
    }
  }
  return sets;
}

inline std::string NameOf(host::OperatorEntry const& entry, Way const& way) {
  std::string name = entry.name + "_" + std::to_string(way.planes) + std::to_string(way.sourcePlanes) +
                     std::to_string(way.secondPlanes);
  for (std::size_t i = 0; i < way.values.size(); ++i) {
    std::string const value = std::to_string(way.values[i]);
    name += "_" + entry.parameters[i].name + "_" + value.substr(0, value.find('.') + 3);
  }
  for (char& c : name) {
    if (c == '.') c = 'p';
    if (c == '-') c = 'm';
  }
  return name;
}

inline std::vector<Way> AllWays() {
  using host::SourceShape;
  std::vector<Way> ways;
  for (host::OperatorEntry const& entry : host::Catalogue()) {
    for (int planes : {1, 3}) {
      for (int sourcePlanes : {1, 3}) {
        for (int secondPlanes : {1, 3}) {
          SourceShape const shape = entry.sourceShape;
          bool const mayDiffer = shape == SourceShape::kFrame || shape == SourceShape::kAnyToColour ||
                                 shape == SourceShape::kFrameToColour || shape == SourceShape::kAny ||
                                 shape == SourceShape::kColour;
          if (entry.imagePlanes != 0 && planes != entry.imagePlanes) continue;
          if (shape == SourceShape::kColour && sourcePlanes != 3) continue;
          if (!mayDiffer && sourcePlanes != planes) continue;
          if (!entry.needsSecond && !entry.TakesFrames() && secondPlanes != 1) continue;
          if (shape == SourceShape::kColourToMono && planes != 3) continue;
          if (shape == SourceShape::kFrameToColour && planes != 3) continue;
          if (shape == SourceShape::kAnyToColour && planes != 1) continue;
          for (auto const& values : ValueSets(entry)) {
            Way way{&entry, planes, sourcePlanes, secondPlanes, values, ""};
            way.name = NameOf(entry, way);
            ways.push_back(way);
          }
        }
      }
    }
  }
  return ways;
}

inline std::vector<Way> WaysOf(bool (*isWanted)(Way const&)) {
  std::vector<Way> ways = AllWays();
  std::erase_if(ways, [&](Way const& way) { return !isWanted(way); });
  return ways;
}

inline std::string NameOfWay(testing::TestParamInfo<Way> const& info) { return info.param.name; }

}  // namespace orb::test
