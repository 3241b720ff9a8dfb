// The entries of the point operators: what they hand on, their tables, and what their checks say.
#include <cmath>
#include <limits>

#include <tests/catalogue/trial.h>

namespace orb::test {
namespace {

using host::CheckInvocation;
using host::Invocation;
using host::OperatorEntry;

class PointEntry : public testing::Test {
 protected:
  // What the entry leaves in a copy of the source, and what `run(operator object, source)` leaves.
  template <typename Operator, typename Run>
  void ExpectHandsOn(std::string const& name, int planes, std::vector<double> values, Run run,
                     std::vector<std::vector<float>> tables = {}) {
    OperatorEntry const& entry = *host::FindOperator(name);
    COrbImage source = RandomImage(random, 20, 10, planes);
    COrbImage image(source);
    Invocation call{&image, &source, nullptr, values, nullptr, 0};
    call.tables = tables;
    ASSERT_EQ("", CheckInvocation(entry, call));
    EXPECT_EQ(1, entry.run(call));
    Operator expected;
    expected.CopyImage(source, nullptr, nullptr);
    run(expected, &source);
    EXPECT_TRUE(SameBits(expected, image)) << name;
  }

  // The complaint about a call on random images, with this change.
  template <typename Change>
  std::string Spoilt(std::string const& name, int planes, Change change) {
    OperatorEntry const& entry = *host::FindOperator(name);
    COrbImage image = RandomImage(random, 20, 10, planes);
    COrbImage source = RandomImage(random, 20, 10, planes);
    Invocation call{&image, &source, nullptr, entry.Defaults(), nullptr, 0};
    call.tables.resize(entry.TablesFor(planes), {0.0f, 0.5f, 1.0f});
    EXPECT_EQ("", CheckInvocation(entry, call));
    change(call);
    return CheckInvocation(entry, call);
  }

  Random random{5};
};

TEST_F(PointEntry, HandsItsValuesOn) {
  ExpectHandsOn<CImgBright>("bright", 3, {11.0, 22.0, 33.0}, [](CImgBright& image, COrbImage* source) {
    image.Do(11.0, 22.0, 33.0, source, nullptr, 0);
  });
  for (int operation = 0; operation < 4; ++operation) {
    for (int clamp : {0, 1}) {
      ExpectHandsOn<CImgCalculation>(
          "calculate", 1, {7.0, 1.0 * operation, 1.0 * clamp},
          [&](CImgCalculation& image, COrbImage* source) { image.Do(7.0, operation, clamp, source, nullptr, 0); });
    }
  }
  ExpectHandsOn<CImgColorBalance>("balance", 3, {1.0, 2.0, 3.0}, [](CImgColorBalance& image, COrbImage* source) {
    image.Do(1.0, 2.0, 3.0, source, nullptr, 0);
  });
  ExpectHandsOn<CImgReduceTone>("posterise", 3, {5.0},
                                [](CImgReduceTone& image, COrbImage* source) { image.Do(5, source, nullptr, 0); });
  for (int palette = 0; palette < 7; ++palette) {
    ExpectHandsOn<CImgFalseColor>(
        "false-colour", 3, {10.0, 90.0, 1.0 * palette, 2.0},
        [&](CImgFalseColor& image, COrbImage* source) { image.Do(10.0, 90.0, palette, 2, source, nullptr, 0); });
  }
}

TEST_F(PointEntry, HandsItsTablesOn) {
  std::vector<std::vector<float>> tables = {{0.0f, 0.5f, 1.0f}, {1.0f, 0.5f, 0.0f}, {0.2f, 0.1f, 0.3f}, {0, 0, 1}};
  std::vector<float*> pointers;
  for (std::vector<float>& table : tables) pointers.push_back(table.data());
  auto const run = [&](CImgToneCurve& image, COrbImage* source) { image.Do(pointers.data(), 3, source, nullptr, 0); };
  ExpectHandsOn<CImgToneCurve>("curve", 3, {}, run, tables);
  ExpectHandsOn<CImgToneCurve>("curve", 1, {}, run, {tables[0]});
}

TEST_F(PointEntry, NamesWhatIsWrongWithItsTables) {
  EXPECT_EQ("curve: 0 tables; it takes 1", Spoilt("curve", 1, [](Invocation& call) { call.tables.clear(); }));
  EXPECT_EQ("curve: 1 tables; it takes 4", Spoilt("curve", 3, [](Invocation& call) { call.tables.resize(1); }));
  EXPECT_EQ("bright: 1 tables; it takes 0", Spoilt("bright", 3, [](Invocation& call) { call.tables.resize(1); }));
  EXPECT_EQ("curve: the table master has 1 entries; it must have from 2 to 1048576",
            Spoilt("curve", 1, [](Invocation& call) { call.tables[0].resize(1); }));
  EXPECT_EQ("curve: the table plane has 4 entries, the first one 3; all must have the same number",
            Spoilt("curve", 3, [](Invocation& call) { call.tables[2].resize(4); }));
  EXPECT_EQ("curve: the table master has the entry nan at place 1; it must be a finite number",
            Spoilt("curve", 1, [](Invocation& call) { call.tables[0][1] = std::numeric_limits<float>::quiet_NaN(); }));
}

TEST_F(PointEntry, NamesWhatIsWrongWithItsValues) {
  auto const divideByZero = [](Invocation& call) { call.values = {0.0, 3.0, 0.0}; };
  EXPECT_EQ("calculate: value is 0; to divide, it must be another number", Spoilt("calculate", 1, divideByZero));
  EXPECT_EQ("", Spoilt("calculate", 1, [](Invocation& call) { call.values = {0.0, 0.0, 0.0}; }));
  EXPECT_EQ("false-colour: low and high leave no range between them",
            Spoilt("false-colour", 3, [](Invocation& call) { call.values[1] = call.values[0] + 1e-12; }));
}

TEST_F(PointEntry, FalseColourPaintsAMonoSourceOnAColourImage) {
  OperatorEntry const& entry = *host::FindOperator("false-colour");
  COrbImage mono = RandomImage(random, 20, 10, 1);
  COrbImage image = RandomImage(random, 20, 10, 3);
  Invocation call{&image, &mono, nullptr, entry.Defaults(), nullptr, 0};
  EXPECT_EQ("", CheckInvocation(entry, call));
  call.image = &mono;
  call.source = &image;
  EXPECT_EQ("false-colour: the image has one plane; colours need three", CheckInvocation(entry, call));
}

TEST_F(PointEntry, EqualiseReportsARunForEachPlane) {
  OperatorEntry const& entry = *host::FindOperator("equalise");
  COrbImage source = RandomImage(random, 20, 10, 3);
  Invocation call;
  call.source = &source;
  EXPECT_EQ(3, entry.RunsOf(call));
  EXPECT_EQ(1, host::FindOperator("bright")->RunsOf(call));
}

}  // namespace
}  // namespace orb::test
