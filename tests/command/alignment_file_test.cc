#include <hosts/orbimg/alignment_file.h>

#include <filesystem>

#include <gtest/gtest.h>
#include <hosts/orbimg/output_check.h>
#include <tests/io/expect_host_error.h>
#include <tests/io/scratch_folder.h>

namespace orb::test {
namespace {

using host::AlignedFrame;
using host::AlignmentList;
using host::Exit;

AlignmentList TwoFrames(ScratchFolder const& folder) {
  AlignmentList list;
  list.reference = folder / "sub/a.fits";
  list.frames = {AlignedFrame{folder / "sub/a.fits", {0.0, 0.0, 0.0, 10.0, 11.0}, "reference", 50, std::nullopt},
                 AlignedFrame{folder / "b.fits", {1.0 / 3.0, -2.5e-7, 0.1, 545.5, 367.5}, "all stars", 42, 0.125}};
  list.leftOut = {{folder / "c.fits", "no stars"}};
  return list;
}

TEST(AlignmentFile, ReadsBackWhatWasWrittenToTheLastBit) {
  ScratchFolder const folder;
  AlignmentList const list = TwoFrames(folder);
  WriteText(folder / "a.json", host::FormatAlignment(list, folder / "a.json"));
  AlignmentList const read = host::ReadAlignment(folder / "a.json");
  ASSERT_EQ(read.frames.size(), 2u);
  EXPECT_TRUE(std::filesystem::path(read.reference) == std::filesystem::path(read.frames[0].file));
  EXPECT_EQ(std::filesystem::absolute(read.frames[0].file).lexically_normal(), folder / "sub/a.fits");
  AlignedFrame const& frame = read.frames[1];
  EXPECT_EQ(frame.transform.dx, 1.0 / 3.0);
  EXPECT_EQ(frame.transform.dy, -2.5e-7);
  EXPECT_EQ(frame.transform.angle, 0.1);
  EXPECT_EQ(frame.transform.cx, 545.5);
  EXPECT_EQ(frame.transform.cy, 367.5);
  EXPECT_EQ(frame.method, "all stars");
  EXPECT_EQ(frame.stars, 42);
  EXPECT_EQ(frame.residual, 0.125);
}

TEST(AlignmentFile, NoResidualIsNull) {
  ScratchFolder const folder;
  std::string const text = host::FormatAlignment(TwoFrames(folder), folder / "a.json");
  EXPECT_NE(text.find("\"residual\": null"), std::string::npos) << text;
  WriteText(folder / "a.json", text);
  EXPECT_FALSE(host::ReadAlignment(folder / "a.json").frames[0].residual.has_value());
}

TEST(AlignmentFile, NamesAreRelativeToItsFolder) {
  ScratchFolder const folder;
  std::string const text = host::FormatAlignment(TwoFrames(folder), folder / "a.json");
  EXPECT_NE(text.find("\"file\": \"sub/a.fits\""), std::string::npos) << text;
  EXPECT_NE(text.find("\"file\": \"b.fits\""), std::string::npos) << text;
  EXPECT_NE(text.find("\"reason\": \"no stars\""), std::string::npos) << text;
}

TEST(AlignmentFile, OtherTextsAreRefusedInOneLine) {
  ScratchFolder const folder;
  for (char const* text : {"[]", "{\"kind\": \"orbimg truth\"}", "{\"kind\": \"orbimg alignment\"}", "nonsense {",
                           "{\"kind\": \"orbimg alignment\", \"reference\": \"a\", \"frames\": [{\"file\": 3}]}"}) {
    WriteText(folder / "a.json", text);
    EXPECT_TRUE(FailsWith(Exit::kInput, "not an alignment file", [&] { host::ReadAlignment(folder / "a.json"); }))
        << text;
  }
  EXPECT_TRUE(FailsWith(Exit::kInput, "none.json", [&] { host::ReadAlignment(folder / "none.json"); }));
}

TEST(AlignmentFile, AShiftThatIsNoShiftIsRefused) {
  ScratchFolder const folder;
  AlignmentList list = TwoFrames(folder);
  list.frames[1].transform.dx = 1e9;
  WriteText(folder / "a.json", host::FormatAlignment(list, folder / "a.json"));
  EXPECT_TRUE(FailsWith(Exit::kInput, "out of range", [&] { host::ReadAlignment(folder / "a.json"); }));
}

}  // namespace
}  // namespace orb::test
