#include <hosts/orbimg/file_list.h>

#include <gtest/gtest.h>
#include <tests/io/expect_host_error.h>
#include <tests/io/scratch_folder.h>

namespace orb::test {
namespace {

using host::FileOrder;

TEST(FileList, APatternNamesItsFilesInNaturalOrder) {
  ScratchFolder const folder;
  for (char const* name : {"f10.fits", "f9.fits", "f2.fits", "dark.fits"}) WriteText(folder / name, "");
  std::vector<std::string> const wanted{folder / "f2.fits", folder / "f9.fits", folder / "f10.fits"};
  EXPECT_EQ(host::ExpandFiles({folder / "f*.fits"}, FileOrder::kNatural), wanted);
  EXPECT_EQ(host::ExpandFiles({folder / "f*.fits"}, FileOrder::kAsGiven), wanted);
}

TEST(FileList, NamesStayAsGivenWhereTheOrderMatters) {
  std::vector<std::string> const names{"light.fits", "b10.fits", "b2.fits"};
  EXPECT_EQ(host::ExpandFiles(names, FileOrder::kAsGiven), names);
  EXPECT_EQ(host::ExpandFiles(names, FileOrder::kNatural),
            (std::vector<std::string>{"b2.fits", "b10.fits", "light.fits"}));
}

TEST(FileList, AFileWhoseNameLooksLikeAPatternIsTakenAsItIs) {
  ScratchFolder const folder;
  WriteText(folder / "m[31].fits", "");
  WriteText(folder / "m3.fits", "");
  EXPECT_EQ(host::ExpandFiles({folder / "m[31].fits"}, FileOrder::kNatural),
            (std::vector<std::string>{folder / "m[31].fits"}));
}

TEST(FileList, APatternThatNamesNothingIsAnError) {
  ScratchFolder const folder;
  EXPECT_TRUE(FailsWith(host::Exit::kInput, "none*.fits",
                        [&] { host::ExpandFiles({folder / "none*.fits"}, FileOrder::kNatural); }));
}

TEST(FileList, StemLeavesOutEndingsOfFitsOnly) {
  EXPECT_EQ(host::StemOf("/a/light.1.fits"), "light.1");
  EXPECT_EQ(host::StemOf("light.FIT"), "light");
  EXPECT_EQ(host::StemOf("light.fits.gz"), "light");
  EXPECT_EQ(host::StemOf("light.fits.fz"), "light");
  EXPECT_EQ(host::StemOf("light.fts"), "light");
  EXPECT_EQ(host::StemOf("m31.5min"), "m31.5min");
}

}  // namespace
}  // namespace orb::test
