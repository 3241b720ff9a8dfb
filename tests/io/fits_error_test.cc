// What a FITS file that cannot be read says, and with which exit status.
#include <sys/stat.h>

#include <gtest/gtest.h>
#include <hosts/io/fits_file.h>
#include <tests/io/expect_host_error.h>
#include <tests/io/ordinary_user.h>
#include <tests/io/scratch_folder.h>
#include <tests/io/stored_fits.h>

namespace orb::test {
namespace {

using host::Exit;
using host::FitsReader;

void WriteSmall(std::string const& path, std::vector<long> sizes, int compression = 0) {
  StoredFits file;
  file.sizes = std::move(sizes);
  file.compression = compression;
  std::size_t count = 1;
  for (long n : file.sizes) count *= static_cast<std::size_t>(n);
  std::vector<std::int16_t> stored(count);
  for (std::size_t i = 0; i < count; ++i) stored[i] = static_cast<std::int16_t>(i * 7919);
  file.Write(path, stored);
}

testing::AssertionResult Refuses(std::string const& path, std::string const& reason) {
  return FailsWith(Exit::kInput, path + ": " + reason, [&] { FitsReader reader(path); });
}

TEST(FitsErrors, MissingFile) {
  ScratchFolder folder;
  EXPECT_TRUE(Refuses(folder / "none.fits", "no such file"));
  // A compressed sister is not what was asked for.
  WriteSmall(folder / "none.fits.gz", {4, 4});
  EXPECT_TRUE(Refuses(folder / "none.fits", "no such file"));
}

TEST(FitsErrors, EmptyName) {
  EXPECT_TRUE(FailsWith(Exit::kInput, "empty name", [] { FitsReader reader(""); }));
}

TEST(FitsErrors, Directory) {
  ScratchFolder folder;
  EXPECT_TRUE(Refuses(folder.Path(), "is a directory"));
}

TEST(FitsErrors, NotARegularFile) {
  ScratchFolder folder;
  ASSERT_EQ(0, mkfifo((folder / "pipe").c_str(), 0600));
  EXPECT_TRUE(Refuses(folder / "pipe", "is not a regular file"));
}

TEST(FitsErrors, NoPermission) {
  ScratchFolder folder;
  WriteSmall(folder / "a.fits", {4, 4});
  chmod(folder.Path().c_str(), 0755);
  chmod((folder / "a.fits").c_str(), 0);
  OrdinaryUser const user;
  if (!user.IsOrdinary()) GTEST_SKIP() << "skipped: cannot become an ordinary user";
  EXPECT_TRUE(Refuses(folder / "a.fits", "cannot be read: Permission denied"));
}

TEST(FitsErrors, EmptyFile) {
  ScratchFolder folder;
  WriteText(folder / "a.fits", "");
  EXPECT_TRUE(Refuses(folder / "a.fits", "the file is empty"));
}

TEST(FitsErrors, TextFile) {
  ScratchFolder folder;
  WriteText(folder / "a.fits", "dear diary,\n");
  EXPECT_TRUE(Refuses(folder / "a.fits", "not a FITS file: it does not begin with SIMPLE"));
  WriteText(folder / "b.fits", "SIMPLE");
  EXPECT_TRUE(Refuses(folder / "b.fits", "not a FITS file"));
}

TEST(FitsErrors, HeaderCutOff) {
  ScratchFolder folder;
  WriteSmall(folder / "a.fits", {4, 4});
  std::filesystem::resize_file(folder / "a.fits", 700);
  EXPECT_TRUE(Refuses(folder / "a.fits", ""));
}

TEST(FitsErrors, SamplesCutOff) {
  ScratchFolder folder;
  for (std::uintmax_t size : {2880u, 2881u, 10000u, 2880u + 2 * 100 * 100 - 1}) {
    WriteSmall(folder / "a.fits", {100, 100});
    std::filesystem::resize_file(folder / "a.fits", size);
    EXPECT_TRUE(Refuses(folder / "a.fits", "the file is truncated")) << size;
  }
}

TEST(FitsErrors, ShortCubeIsTruncated) {
  ScratchFolder folder;
  WriteSmall(folder / "a.fits", {100, 100, 3});
  std::filesystem::resize_file(folder / "a.fits", 2880 + 2 * 100 * 100);
  EXPECT_TRUE(Refuses(folder / "a.fits", "the file is truncated"));
}

TEST(FitsErrors, CompressedFilesCutOff) {
  ScratchFolder folder;
  for (int compression : {0, RICE_1}) {
    std::string const path = folder / (compression == 0 ? "a.fits.gz" : "a.fits.fz");
    WriteSmall(path, {200, 200}, compression);
    std::filesystem::resize_file(path, std::filesystem::file_size(path) * 6 / 10);
    EXPECT_TRUE(Refuses(path, "")) << path;
  }
}

TEST(FitsErrors, LastBlockWithoutItsFillIsTruncated) {
  ScratchFolder folder;
  WriteSmall(folder / "a.fits", {100, 100});
  std::filesystem::resize_file(folder / "a.fits", 2880 + 2 * 100 * 100);
  EXPECT_TRUE(Refuses(folder / "a.fits", "the file is truncated: it ends before its last block is complete"));
}

TEST(FitsErrors, NoImage) {
  ScratchFolder folder;
  fitsfile* file = nullptr;
  int status = 0;
  char name[] = "X";
  char form[] = "1E";
  char* names[] = {name};
  char* forms[] = {form};
  fits_create_file(&file, (folder / "table.fits").c_str(), &status);
  fits_create_tbl(file, BINARY_TBL, 3, 1, names, forms, nullptr, "T", &status);
  fits_close_file(file, &status);
  ASSERT_EQ(0, status);
  EXPECT_TRUE(Refuses(folder / "table.fits", "there is no image in it"));
}

TEST(FitsErrors, Axes) {
  ScratchFolder folder;
  WriteSmall(folder / "one.fits", {9});
  EXPECT_TRUE(Refuses(folder / "one.fits", "there is no image in it: its array has one axis"));
  WriteSmall(folder / "four.fits", {2, 2, 2, 2});
  EXPECT_TRUE(Refuses(folder / "four.fits", "its array has 4 axes; an image has 2 or 3"));
  WriteSmall(folder / "two.fits", {2, 2, 2});
  EXPECT_TRUE(Refuses(folder / "two.fits", "it has 2 planes; an image has 1 or 3"));
}

TEST(FitsErrors, ScaleOfZero) {
  ScratchFolder folder;
  StoredFits file;
  file.sizes = {2, 1};
  file.Write<std::int16_t>(folder / "a.fits", {1, 2});
  std::string text = ReadText(folder / "a.fits");
  std::string const card = "BSCALE  =                    0";
  text.replace(text.find("END     "), card.size(), card);
  text.replace(text.find(card) + 80, 3, "END");
  WriteText(folder / "a.fits", text);
  EXPECT_TRUE(Refuses(folder / "a.fits", "its BSCALE is 0"));
}

TEST(FitsErrors, NotEnoughMemoryIsNoCrash) {
  ScratchFolder folder;
  WriteSmall(folder / "a.fits", {4, 4});
  std::string text = ReadText(folder / "a.fits");
  for (std::string const axis : {"NAXIS1  =", "NAXIS2  ="}) {
    text.replace(text.find(axis) + 10, 20, "          2147483647");
  }
  WriteText(folder / "a.fits", text);
  EXPECT_TRUE(FailsWith(Exit::kInput, "a.fits: ", [&] { FitsReader reader(folder / "a.fits"); }));
}

}  // namespace
}  // namespace orb::test
