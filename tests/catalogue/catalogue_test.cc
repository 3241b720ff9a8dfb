// The catalogue itself: complete, consistent, presentable.
#include <cctype>
#include <set>

#include <gtest/gtest.h>
#include <hosts/catalogue/catalogue.h>
#include <hosts/catalogue/check.h>

namespace orb::test {
namespace {

using host::Catalogue;
using host::OperatorEntry;
using host::Parameter;

TEST(Catalogue, HasEveryOperator) {
  std::set<std::string> names;
  for (OperatorEntry const& entry : Catalogue()) names.insert(entry.name);
  EXPECT_EQ(Catalogue().size(), names.size());
  EXPECT_EQ((std::set<std::string>{"background-smooth",
                                   "balance",
                                   "bin",
                                   "blur-median",
                                   "bright",
                                   "calculate",
                                   "clip",
                                   "colour",
                                   "compose-cmy",
                                   "compose-lab",
                                   "compose-lrgb",
                                   "compose-lrgb-mean",
                                   "compose-rgb",
                                   "composite",
                                   "contour",
                                   "crop",
                                   "curve",
                                   "custom",
                                   "dark",
                                   "digital-development",
                                   "disk-rank",
                                   "equalise",
                                   "false-colour",
                                   "flat",
                                   "flip",
                                   "gaussian",
                                   "gray",
                                   "invert",
                                   "lab-enhance",
                                   "laplacian",
                                   "level-area",
                                   "level-mean",
                                   "level-median",
                                   "lucy",
                                   "map",
                                   "match",
                                   "mean",
                                   "mean-off-edges",
                                   "median",
                                   "mem",
                                   "minmax",
                                   "mosaic",
                                   "nebula-smooth",
                                   "noise-cut",
                                   "posterise",
                                   "rejection",
                                   "resample",
                                   "resize",
                                   "rotate",
                                   "rotational-gradient",
                                   "scroll",
                                   "separate",
                                   "separate-sum",
                                   "shape-median",
                                   "shape-rank",
                                   "shape-unsharp",
                                   "sharpen",
                                   "sharpen-edges",
                                   "sky-blank",
                                   "sky-flat",
                                   "sky-mask",
                                   "sky-model",
                                   "sky-ramp",
                                   "sky-select",
                                   "star-enhance",
                                   "star-sharp",
                                   "turn",
                                   "unsharp",
                                   "wiener"}),
            names);
}

TEST(Catalogue, FindsByName) {
  for (OperatorEntry const& entry : Catalogue()) EXPECT_EQ(&entry, host::FindOperator(entry.name));
  EXPECT_EQ(nullptr, host::FindOperator("no such"));
}

TEST(Catalogue, GroupsHoldTheEntriesThatNameThem) {
  std::set<std::string> names;
  for (OperatorEntry const* entry : host::OperatorsOf("apply")) {
    EXPECT_EQ("apply", entry->group);
    names.insert(entry->name);
  }
  EXPECT_TRUE(names.contains("invert"));
  EXPECT_FALSE(names.contains("match"));
  EXPECT_TRUE(host::OperatorsOf("no such").empty());
}

void ExpectSentence(std::string const& text) {
  ASSERT_FALSE(text.empty());
  EXPECT_EQ(std::string::npos, text.find('\n')) << text;
  EXPECT_NE('.', text.back()) << text;
  EXPECT_EQ(std::tolower(static_cast<unsigned char>(text[0])), text[0]) << text;
}

void ExpectPresentable(std::vector<Parameter> const& parameters) {
  std::set<std::string> names;
  for (Parameter const& parameter : parameters) {
    SCOPED_TRACE(parameter.name);
    names.insert(parameter.name);
    ExpectSentence(parameter.help);
    EXPECT_LT(parameter.least, parameter.most);
    EXPECT_EQ("", host::CheckValue(parameter, parameter.byDefault));
    EXPECT_EQ(parameter.kind == Parameter::Kind::kChoice, !parameter.choices.empty());
  }
  EXPECT_EQ(parameters.size(), names.size());
}

TEST(Catalogue, EntriesArePresentable) {
  for (OperatorEntry const& entry : Catalogue()) {
    SCOPED_TRACE(entry.name);
    ExpectSentence(entry.title);
    EXPECT_NE(nullptr, entry.run);
    EXPECT_EQ(entry.reports == host::Reports::kNever, entry.message == 0);
    if (entry.message != 0) {
      EXPECT_STRNE("", LoadString(entry.message));
    }
    EXPECT_EQ(entry.reports == host::Reports::kNever || entry.hasOwnRuns, entry.units == host::Units::kNone);
    ExpectPresentable(entry.parameters);
    ExpectPresentable(entry.frameParameters);
    for (host::Table const& table : entry.tables) {
      EXPECT_FALSE(table.name.empty());
      EXPECT_LT(table.leastEntries, table.mostEntries);
      ExpectSentence(table.help);
    }
    for (host::Result const& result : entry.results) {
      EXPECT_FALSE(result.name.empty());
      ExpectSentence(result.help);
    }
    EXPECT_EQ(entry.parameters.size(), entry.Defaults().size());
    if (entry.reports == host::Reports::kAlwaysForBrightness) {
      EXPECT_GE(entry.Find("per-plane"), 0);
    }
    if (entry.units == host::Units::kSearch) {
      EXPECT_GE(entry.Find("range"), 0);
      EXPECT_GE(entry.Find("fine"), 0);
    }
    if (entry.levelUse == host::LevelUse::kIfAsked) {
      EXPECT_GE(entry.Find("levels"), 0);
    }
  }
}

TEST(Catalogue, FindsParametersByName) {
  OperatorEntry const& composite = *host::FindOperator("composite");
  int const mode = composite.Find("mode");
  ASSERT_GE(mode, 0);
  EXPECT_EQ("weighted", composite.parameters[static_cast<std::size_t>(mode)].choices[2]);
  EXPECT_EQ(-1, composite.Find("no such"));
}

// The numbers of the modes, through the results that tell them apart: a = 6, b = 3.
TEST(Catalogue, ModesAreInTheirOrder) {
  OperatorEntry const& composite = *host::FindOperator("composite");
  std::size_t const mode = static_cast<std::size_t>(composite.Find("mode"));
  std::size_t const ratio = static_cast<std::size_t>(composite.Find("ratio"));
  float const expected[] = {4.5f, 9.0f, 5.25f, 3.0f, 18.0f, 2.0f, 3.0f, 6.0f, 3.0f};
  for (std::size_t m = 0; m < 9; ++m) {
    COrbImage image(-32, 1, 1, 1, 1.0, 0.0, 1, nullptr, nullptr);
    COrbImage first(image);
    COrbImage second(image);
    first.SetPixelGrayRaw(0, 0, 6.0f, 0);
    second.SetPixelGrayRaw(0, 0, 3.0f, 0);
    host::Invocation call{&image, &first, &second, composite.Defaults(), nullptr, 0};
    call.values[mode] = static_cast<double>(m);
    call.values[ratio] = 0.25;
    ASSERT_EQ("", host::CheckInvocation(composite, call));
    composite.run(call);
    EXPECT_EQ(expected[m], image.GetPixelGrayRaw(0, 0, 0)) << composite.parameters[mode].choices[m];
  }
}

// Clamp, levels and the geometry reach their arguments.
TEST(Catalogue, CompositeHandsItsValuesOn) {
  OperatorEntry const& composite = *host::FindOperator("composite");
  auto const run = [&](std::vector<std::pair<std::string, double>> const& values) {
    COrbImage image(-32, 4, 4, 1, 1.0, 0.0, 1, nullptr, nullptr);
    COrbImage first(image);
    COrbImage second(image);
    first.SetPixelGrayRaw(2, 1, 1.0f, 0);
    second.SetPixelGrayRaw(1, 2, 5.0f, 0);
    image.CImage::SetLevel(0, 0.0, 510.0);
    host::Invocation call{&image, &first, &second, composite.Defaults(), nullptr, 0};
    for (auto const& [name, value] : values) call.values[static_cast<std::size_t>(composite.Find(name))] = value;
    EXPECT_EQ("", host::CheckInvocation(composite, call));
    composite.run(call);
    return image.GetPixelGrayRaw(2, 1, 0);
  };
  double const subtract = 3.0;
  EXPECT_EQ(1.0f, run({{"mode", subtract}}));
  EXPECT_EQ(-4.0f, run({{"mode", subtract}, {"dx", 1.0}, {"dy", -1.0}}));
  EXPECT_EQ(0.0f, run({{"mode", subtract}, {"dx", 1.0}, {"dy", -1.0}, {"clamp", 1.0}}));
  EXPECT_EQ(-8.0f, run({{"mode", subtract}, {"dx", 1.0}, {"dy", -1.0}, {"levels", 1.0}}));
}

TEST(Catalogue, RejectionFindsTheMaximaThatItNeeds) {
  OperatorEntry const& rejection = *host::FindOperator("rejection");
  COrbImage image(-32, 9, 9, 1, 1.0, 0.0, 1, nullptr, nullptr);
  COrbImage first(image);
  COrbImage second(image);
  for (int i = 0; i < 81; ++i) {
    first.SetPixelGrayRaw(i % 9, i / 9, 10.0f, 0);
    second.SetPixelGrayRaw(i % 9, i / 9, 20.0f, 0);
  }
  first.SetPixelGrayRaw(4, 4, 100.0f, 0);
  second.SetPixelGrayRaw(1, 7, 100.0f, 0);
  host::Invocation call{&image, &first, &second, rejection.Defaults(), nullptr, 0};
  call.values[static_cast<std::size_t>(rejection.Find("radius"))] = 1.0;
  ASSERT_EQ("", host::CheckInvocation(rejection, call));
  rejection.run(call);
  EXPECT_EQ(100.0, first.GetMaxPixel(0));
  EXPECT_EQ(20.0f, image.GetPixelGrayRaw(4, 4, 0));  // the star of the first frame alone is left out
}

}  // namespace
}  // namespace orb::test
