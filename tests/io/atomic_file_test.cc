// AtomicFile: checks of the place, whole or nothing, full disks.
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <random>

#include <gtest/gtest.h>
#include <hosts/io/atomic_file.h>
#include <hosts/io/fits_file.h>
#include <hosts/io/picture_file.h>
#include <tests/io/expect_host_error.h>
#include <tests/io/ordinary_user.h>
#include <tests/io/scratch_folder.h>

namespace orb::test {
namespace {

using host::AtomicFile;
using host::Existing;
using host::Exit;

testing::AssertionResult Refuses(std::string const& path, std::string const& reason,
                                 Existing existing = Existing::kKeep) {
  return FailsWith(Exit::kOutput, reason, [&] { AtomicFile file(path, existing); });
}

TEST(AtomicFile, AppearsOnCommit) {
  ScratchFolder folder;
  AtomicFile file(folder / "a.txt", Existing::kKeep);
  WriteText(file.TemporaryPath(), "content");
  EXPECT_FALSE(std::filesystem::exists(folder / "a.txt"));
  file.Commit();
  EXPECT_EQ("content", ReadText(folder / "a.txt"));
  EXPECT_EQ(1u, folder.Names().size());
}

TEST(AtomicFile, LeavesNothingWithoutCommit) {
  ScratchFolder folder;
  WriteText(folder / "a.txt", "old");
  {
    AtomicFile file(folder / "a.txt", Existing::kReplace);
    WriteText(file.TemporaryPath(), "new");
  }
  EXPECT_EQ("old", ReadText(folder / "a.txt"));
  EXPECT_EQ(1u, folder.Names().size());
}

TEST(AtomicFile, KeepsAnExistingFile) {
  ScratchFolder folder;
  WriteText(folder / "a.txt", "old");
  EXPECT_TRUE(Refuses(folder / "a.txt", folder / "a.txt: exists already; use --force"));
  EXPECT_EQ(1u, folder.Names().size());
}

TEST(AtomicFile, KeepsAFileThatCameUpMeanwhile) {
  ScratchFolder folder;
  {
    AtomicFile file(folder / "a.txt", Existing::kKeep);
    WriteText(folder / "a.txt", "of someone else");
    EXPECT_TRUE(FailsWith(Exit::kOutput, "exists already", [&] { file.Commit(); }));
  }
  EXPECT_EQ("of someone else", ReadText(folder / "a.txt"));
  EXPECT_EQ(1u, folder.Names().size());
}

TEST(AtomicFile, ReplacesWithTheSamePermissions) {
  ScratchFolder folder;
  WriteText(folder / "a.txt", "old");
  chmod((folder / "a.txt").c_str(), 0640);
  AtomicFile file(folder / "a.txt", Existing::kReplace);
  WriteText(file.TemporaryPath(), "new");
  file.Commit();
  EXPECT_EQ("new", ReadText(folder / "a.txt"));
  struct stat status {};
  stat((folder / "a.txt").c_str(), &status);
  EXPECT_EQ(0640u, status.st_mode & 07777u);
}

TEST(AtomicFile, FollowsLinks) {
  ScratchFolder folder;
  std::filesystem::create_directory(folder / "sub");
  WriteText(folder / "sub/real.txt", "old");
  std::filesystem::create_symlink("sub/real.txt", folder / "link.txt");
  AtomicFile file(folder / "link.txt", Existing::kReplace);
  WriteText(file.TemporaryPath(), "new");
  file.Commit();
  EXPECT_EQ("new", ReadText(folder / "sub/real.txt"));
  EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.txt"));
}

TEST(AtomicFile, RefusesBadPlaces) {
  ScratchFolder folder;
  WriteText(folder / "file", "x");
  EXPECT_TRUE(Refuses("", "empty name"));
  EXPECT_TRUE(Refuses(folder / "missing/a.txt", "there is no folder " + folder.Path() + "/missing; make it first"));
  EXPECT_TRUE(Refuses(folder / "file/a.txt", "is not a folder"));
  EXPECT_TRUE(Refuses(folder.Path(), "is a directory", Existing::kReplace));
  EXPECT_TRUE(Refuses(folder.Path() + "/", "is a folder's name", Existing::kReplace));
  EXPECT_TRUE(Refuses("/dev/null", "is not a regular file", Existing::kReplace));
}

TEST(AtomicFile, RefusesAFolderThatMayNotBeWritten) {
  ScratchFolder folder;
  chmod(folder.Path().c_str(), 0555);
  OrdinaryUser const user;
  if (!user.IsOrdinary()) GTEST_SKIP() << "skipped: cannot become an ordinary user";
  EXPECT_TRUE(Refuses(folder / "a.txt", "a.txt: cannot write in the folder " + folder.Path() + ": Permission denied"));
}

TEST(AtomicFile, RefusesAFolderThatCannotBeWritten) {
  // Nobody, not even the superuser, makes files here.
  EXPECT_TRUE(Refuses("/proc/a.txt", "/proc/a.txt: cannot write in the folder /proc"));
}

TEST(AtomicFile, SaysWhenSpaceIsShort) {
  ScratchFolder folder;
  AtomicFile const file(folder / "a.txt", Existing::kKeep);
  file.RequireSpace(1);
  EXPECT_TRUE(FailsWith(Exit::kResources, "a.txt: needs 4611686018427 MB, but the disk has",
                        [&] { file.RequireSpace(1LL << 62); }));
}

// A file system of one megabyte in memory.
class SmallDisk {
 public:
  SmallDisk() : isMounted(mount("none", folder.Path().c_str(), "tmpfs", 0, "size=1m") == 0), error(errno) {}
  ~SmallDisk() {
    if (isMounted) umount(folder.Path().c_str());
  }

  ScratchFolder folder;
  bool isMounted;
  int error;
};

#define ORB_REQUIRE_DISK(disk) \
  if (!(disk).isMounted) GTEST_SKIP() << "skipped: no small file system can be mounted: " << std::strerror((disk).error)

TEST(FullDisk, FitsFilesSayHowMuchIsNeeded) {
  SmallDisk disk;
  ORB_REQUIRE_DISK(disk);
  EXPECT_TRUE(FailsWith(Exit::kResources, "a.fits: needs 4 MB, but the disk has 1 MB left", [&] {
    host::FitsWriter writer(disk.folder / "a.fits", {1000, 1000, 1}, host::FitsHeader(), Existing::kKeep);
  }));
  EXPECT_TRUE(disk.folder.Names().empty());
}

TEST(FullDisk, FitsFilesThatRunOutOfSpaceAreRemoved) {
  SmallDisk disk;
  ORB_REQUIRE_DISK(disk);
  std::vector<float> const rows(400 * 400, 1.0f);
  EXPECT_TRUE(FailsWith(Exit::kResources, "a.fits: the disk is full", [&] {
    host::FitsWriter writer(disk.folder / "a.fits", {400, 400, 1}, host::FitsHeader(), Existing::kKeep);
    WriteText(disk.folder / "hog", std::string(800 * 1024, 'x'));  // someone else takes what was free
    writer.WriteRows(0, 0, 400, rows.data());
    writer.Commit();
  }));
  EXPECT_EQ(std::vector<std::string>{"hog"}, disk.folder.Names());
}

TEST(FullDisk, PicturesThatRunOutOfSpaceAreRemoved) {
  SmallDisk disk;
  ORB_REQUIRE_DISK(disk);
  constexpr int kSide = 1024;
  DibPtr const dib(GlobalAlloc(GMEM_ZEROINIT, sizeof(BITMAPINFOHEADER) + 3 * kSide * kSide));
  auto* const header = static_cast<BITMAPINFOHEADER*>(GlobalLock(dib.get()));
  *header = BITMAPINFOHEADER{sizeof(BITMAPINFOHEADER), kSide, kSide, 1, 24, 0, 3 * kSide * kSide, 0, 0, 0, 0};
  auto* const bytes = reinterpret_cast<unsigned char*>(header + 1);
  std::mt19937 random(1);  // noise, which no picture format makes small
  for (int i = 0; i < 3 * kSide * kSide; ++i) bytes[i] = static_cast<unsigned char>(random());
  for (std::string const name : {"a.bmp", "a.png"}) {
    EXPECT_TRUE(FailsWith(Exit::kResources, name + ": the disk is full",
                          [&] { host::WritePicture(disk.folder / name, dib.get(), Existing::kKeep); }));
    EXPECT_TRUE(disk.folder.Names().empty());
  }
}

}  // namespace
}  // namespace orb::test
