// FitsWriter and whole frames: round trips, headers carried on, levels, what is left when something fails.
#include <limits>

#include <gtest/gtest.h>
#include <hosts/io/fits_file.h>
#include <tests/io/expect_host_error.h>
#include <tests/io/scratch_folder.h>
#include <tests/io/stored_fits.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using host::Existing;
using host::Exit;
using host::FitsHeader;
using host::FitsReader;
using host::FitsWriter;
using host::Frame;

Frame RandomFrame(Random& random, int width, int height, int planes) {
  Frame frame;
  COrbImage image = RandomImage(random, width, height, planes);
  frame.image.Swap(&image);
  return frame;
}

TEST(FitsWriter, FramesComeBackBitForBit) {
  ScratchFolder folder;
  Random random(1);
  for (int planes : {1, 3}) {
    for (auto const& [width, height] : {std::pair(1, 1), std::pair(7, 1), std::pair(1, 9), std::pair(33, 21)}) {
      Frame frame = RandomFrame(random, width, height, planes);
      frame.image.SetPixelGrayRaw(0, 0, std::numeric_limits<float>::quiet_NaN(), 0);
      host::WriteFits(folder / "a.fits", frame, Existing::kReplace);
      Frame back;
      host::ReadFits(folder / "a.fits", back);
      EXPECT_TRUE(SameBits(frame.image, back.image));
      EXPECT_TRUE(SameLevels(frame.image, back.image));
      EXPECT_EQ(1, back.nonFinite);
    }
  }
}

TEST(FitsWriter, RowZeroIsTheLastRowOfTheFile) {
  ScratchFolder folder;
  FitsHeader header;
  float const samples[] = {1.0f, 2.0f};
  for (bool isTopDown : {false, true}) {
    if (isTopDown) header.SetText("ROWORDER", "TOP-DOWN", "");
    FitsWriter writer(folder / "a.fits", {1, 2, 1}, header, Existing::kReplace);
    writer.WriteRows(0, 0, 2, samples);
    writer.Commit();
    std::string const file = ReadText(folder / "a.fits");
    ASSERT_EQ(2u * 2880, file.size());
    std::string const one("\x3f\x80\0\0", 4);  // 1.0, big-endian
    EXPECT_EQ(one, file.substr(2880 + (isTopDown ? 0 : 4), 4));
  }
}

TEST(FitsWriter, BandsInAnyOrderEqualTheWhole) {
  ScratchFolder folder;
  Random random(2);
  Frame const frame = RandomFrame(random, 31, 50, 3);
  FitsWriter writer(folder / "a.fits", {31, 50, 3}, frame.header, Existing::kKeep);
  for (int p = 2; p >= 0; --p) {
    for (int top = 42; top >= 0; top -= 7) {
      writer.WriteRows(p, top, std::min(7, 50 - top), frame.image.GetImageAdr(0, top, p, 1, nullptr));
    }
    writer.WriteRows(p, 49, 1, frame.image.GetImageAdr(0, 49, p, 1, nullptr));
  }
  writer.Commit();
  Frame back;
  host::ReadFits(folder / "a.fits", back);
  EXPECT_TRUE(SameBits(frame.image, back.image));
}

TEST(FitsWriter, CarriesEveryCardOn) {
  ScratchFolder folder;
  StoredFits file;
  file.sizes = {2, 1};
  file.zero = 32768;
  file.cards = {"OBJECT  = 'M 13    '           / the target",
                "LONGSTR = 'a text that goes on and on, over the end of its card and a good way &'",
                "CONTINUE  'into the next'",
                "COMMENT a comment",
                "        a card without a keyword",
                "HIERARCH ESO DET NAME = 'chip' / which",
                "HISTORY first",
                "DATAMAX =                65535",
                "HISTORY second"};
  file.Write<std::int16_t>(folder / "a.fits", {1, 2});
  Frame frame;
  host::ReadFits(folder / "a.fits", frame);
  frame.header.AddHistory("third");
  host::WriteFits(folder / "b.fits", frame, Existing::kKeep);
  Frame back;
  host::ReadFits(folder / "b.fits", back);
  host::WriteFits(folder / "c.fits", back, Existing::kKeep);
  Frame again;
  host::ReadFits(folder / "c.fits", again);
  EXPECT_EQ(back.header.cards, again.header.cards);
  std::vector<std::string> expected;
  for (std::size_t i = 0; i < file.cards.size(); ++i) {
    if (i == 7) continue;  // the extreme of other samples
    if (i == 6) {
      expected.push_back("CBLACK  =              32769.0 / black level");
      expected.push_back("CWHITE  =              32770.0 / white level");
    }
    expected.push_back(file.cards[i]);
  }
  expected.push_back("HISTORY third");
  for (std::string& line : expected) line.resize(80, ' ');
  EXPECT_EQ(expected, back.header.cards);
  EXPECT_EQ("a text that goes on and on, over the end of its card and a good way into the next",
            back.header.Text("LONGSTR"));
}

TEST(FitsWriter, CardsOfACompressedFileAreThoseItHadBefore) {
  ScratchFolder folder;
  StoredFits file;
  file.sizes = {20, 20};
  file.compression = RICE_1;
  file.cards = {"OBJECT  = 'M 13    '           / the target", "HISTORY first"};
  for (std::string& line : file.cards) line.resize(80, ' ');
  file.Write(folder / "a.fits.fz", std::vector<std::int16_t>(400, 5));
  FitsReader reader(folder / "a.fits.fz");
  EXPECT_EQ(file.cards, reader.Header().cards);
}

TEST(FitsWriter, IllegalKeywordsBecomeComments) {
  ScratchFolder folder;
  FitsHeader header;
  header.cards.push_back("MY KEY  = 5");
  header.cards[0].resize(80, ' ');
  float const sample = 0.0f;
  FitsWriter writer(folder / "a.fits", {1, 1, 1}, header, Existing::kKeep);
  writer.WriteRows(0, 0, 1, &sample);
  writer.Commit();
  FitsReader reader(folder / "a.fits");
  ASSERT_EQ(1u, reader.Header().cards.size());
  EXPECT_EQ("COMMENT MY KEY  = 5", reader.Header().cards[0].substr(0, 19));
}

TEST(FitsWriter, CardsOfTheArrayAreItsOwn) {
  ScratchFolder folder;
  FitsHeader header;
  header.SetNumber("BZERO", 32768.0, "");
  header.SetInteger("NAXIS1", 99, "");
  float const sample = 4.0f;
  FitsWriter writer(folder / "a.fits", {1, 1, 1}, header, Existing::kKeep);
  writer.WriteRows(0, 0, 1, &sample);
  writer.Commit();
  FitsReader reader(folder / "a.fits");
  float back = 0.0f;
  reader.ReadRows(0, 0, 1, &back);
  EXPECT_EQ(4.0f, back);
  EXPECT_EQ("32-bit float", reader.TypeName());
}

TEST(FitsWriter, WithoutCommitNothingIsLeft) {
  ScratchFolder folder;
  {
    FitsWriter writer(folder / "a.fits", {100, 100, 3}, FitsHeader(), Existing::kKeep);
    std::vector<float> const rows(1000);
    writer.WriteRows(1, 0, 10, rows.data());
  }
  EXPECT_TRUE(folder.Names().empty());
}

TEST(FitsWriter, RefusesBadNamesAndShapes) {
  ScratchFolder folder;
  auto const open = [&](std::string const& name, host::Shape const& shape) {
    return [&folder, name, shape] { FitsWriter writer(folder / name, shape, FitsHeader(), Existing::kKeep); };
  };
  EXPECT_TRUE(FailsWith(Exit::kOutput, "a.fits.bz2: FITS files are not written so", open("a.fits.bz2", {1, 1, 1})));
  EXPECT_TRUE(FailsWith(Exit::kFailed, "2 planes", open("a.fits", {1, 1, 2})));
  EXPECT_TRUE(FailsWith(Exit::kFailed, "cannot be written", open("a.fits", {0, 1, 1})));
  EXPECT_TRUE(FailsWith(Exit::kResources, "MB left", open("a.fits", {2000000000, 2000000000, 1})));
  EXPECT_TRUE(folder.Names().empty());
}

TEST(FitsWriter, OddNamesAreTakenLiterally) {
  ScratchFolder folder;
  float const sample = 4.0f;
  for (std::string const name : {"a[1].fits", "b(2).fits", "!c.fits", " d.fits", "~e.fits"}) {
    FitsWriter writer(folder / name, {1, 1, 1}, FitsHeader(), Existing::kKeep);
    writer.WriteRows(0, 0, 1, &sample);
    writer.Commit();
    EXPECT_TRUE(std::filesystem::exists(folder / name)) << name;
  }
  EXPECT_EQ(5u, folder.Names().size());
}

TEST(FitsFrame, LevelsComeFromTheCards) {
  ScratchFolder folder;
  StoredFits file;
  file.sizes = {2, 1, 3};
  std::vector<std::int16_t> const stored{1, 2, 3, 4, 5, 5};
  auto const levelsOf = [&](std::vector<std::string> const& cards) {
    file.cards = cards;
    file.Write(folder / "a.fits", stored);
    Frame frame;
    host::ReadFits(folder / "a.fits", frame);
    std::vector<double> levels;
    for (int p = 0; p < 3; ++p) {
      levels.push_back(frame.image.GetLevelMin(p));
      levels.push_back(frame.image.GetLevelMax(p));
    }
    return levels;
  };
  EXPECT_EQ((std::vector<double>{1, 2, 3, 4, 5, 6}), levelsOf({}));
  EXPECT_EQ((std::vector<double>{10, 90, 10, 90, 10, 90}), levelsOf({"CBLACK  = 10", "CWHITE  = 90"}));
  EXPECT_EQ((std::vector<double>{10, 90, 20, 80, 10, 90}),
            levelsOf({"CBLACK  = 10", "CWHITE  = 90", "CBLACK2 = 20", "CWHITE2 = 80"}));
  EXPECT_EQ((std::vector<double>{1, 2, 3, 4, 5, 6}), levelsOf({"CBLACK  = 90", "CWHITE  = 10"}));
  EXPECT_EQ((std::vector<double>{1, 2, 3, 4, 5, 6}), levelsOf({"CBLACK  = 90"}));
}

TEST(FitsFrame, LevelsPassOverWhatIsNotFinite) {
  ScratchFolder folder;
  float const inf = std::numeric_limits<float>::infinity();
  float const nan = std::numeric_limits<float>::quiet_NaN();
  StoredFits file;
  file.bitpix = -32;
  file.sizes = {4, 1};
  file.Write<float>(folder / "some.fits", {nan, inf, -3.0f, 8.0f});
  file.Write<float>(folder / "none.fits", {nan, inf, -inf, nan});
  Frame some;
  host::ReadFits(folder / "some.fits", some);
  EXPECT_EQ(-3.0, some.image.GetLevelMin(0));
  EXPECT_EQ(8.0, some.image.GetLevelMax(0));
  Frame none;
  host::ReadFits(folder / "none.fits", none);
  EXPECT_EQ(0.0, none.image.GetLevelMin(0));
  EXPECT_EQ(255.0, none.image.GetLevelMax(0));
  EXPECT_EQ(4, none.nonFinite);
}

}  // namespace
}  // namespace orb::test
