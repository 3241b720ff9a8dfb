// The interface towards a host: harmless defaults, and one main window for each thread.
#include <new>
#include <thread>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>

namespace orb::test {
namespace {

TEST(HostWindow, DoesNothingByDefault) {
  HostWindow window;
  window.OnStart("text");
  window.OnPosition(50);
  window.OnText("text");
  window.OnEnd(nullptr);
  window.OnMessageBox("text", 0);
  EXPECT_FALSE(window.PollEscape());
}

TEST(HostWindow, IsNullUntilSet) { EXPECT_EQ(nullptr, MainWindow()); }

TEST(HostWindow, BelongsToItsThread) {
  HostWindow mine;
  HostWindow theirs;
  SetMainWindow(&mine);
  HostWindow* before = &mine;
  HostWindow* after = nullptr;
  std::thread other([&] {
    before = MainWindow();
    SetMainWindow(&theirs);
    after = MainWindow();
  });
  other.join();
  EXPECT_EQ(nullptr, before);
  EXPECT_EQ(&theirs, after);
  EXPECT_EQ(&mine, MainWindow());
  SetMainWindow(nullptr);
  EXPECT_EQ(nullptr, MainWindow());
}

TEST(Object, LackOfMemoryIsBadAlloc) { EXPECT_THROW(AfxThrowMemoryException(), std::bad_alloc); }

}  // namespace
}  // namespace orb::test
