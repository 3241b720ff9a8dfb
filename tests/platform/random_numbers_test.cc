// DrawRandom and SkipRandom against calls of rand, from every kind of state, and where rand is not the C library's.
#include <platform/random_numbers_internal.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

bool isForeign = false;
int foreignCalls = 0;

}  // namespace

// In this program's libraries too, as a program may do: the C library's numbers, or others when asked.
extern "C" __attribute__((visibility("default"))) int rand() noexcept {
  return isForeign ? ++foreignCalls * 3 : static_cast<int>(random());
}

namespace orb::test {
namespace {

std::vector<float> CallEach(std::size_t count) {
  std::vector<float> numbers(count);
  for (float& number : numbers) number = static_cast<float>(rand());
  return numbers;
}

std::vector<float> DrawEach(std::size_t count) {
  std::vector<float> numbers(count);
  DrawRandom(count, numbers.data());
  return numbers;
}

// `seed` puts the generator into one state, again and again.
template <typename Seed>
void ExpectTheNumbersOfCalls(Seed seed) {
  for (std::size_t count : {0, 1, 30, 511, 512, 513, 1000, 40000}) {
    SCOPED_TRACE(count);
    seed();
    std::vector<float> const expected = CallEach(count);
    std::vector<float> const after = CallEach(700);
    seed();
    EXPECT_EQ(expected, DrawEach(count));
    EXPECT_EQ(after, CallEach(700));
    seed();
    SkipRandom(count);
    EXPECT_EQ(after, DrawEach(700));
  }
}

TEST(RandomNumbers, AreThoseOfCalls) {
  for (unsigned seed : {0u, 1u, 2u, 123456789u, 4294967295u}) {
    ExpectTheNumbersOfCalls([=] { srand(seed); });
  }
}

TEST(RandomNumbers, GoOnFromAnyPointOfTheSequence) {
  for (int drawn = 1; drawn < 40; drawn += 6) {
    ExpectTheNumbersOfCalls([=] {
      srand(5);
      for (int i = 0; i < drawn; ++i) static_cast<void>(rand());
    });
  }
}

// States of all sizes that a program may give to the generator.
TEST(RandomNumbers, KeepTheStateThatAProgramMade) {
  for (std::size_t bytes : {8, 32, 64, 128, 256}) {
    SCOPED_TRACE(bytes);
    alignas(std::int32_t) char own[256];
    char* const before = initstate(1, own, bytes);
    ExpectTheNumbersOfCalls([&] { srand(77); });
    EXPECT_EQ(own, setstate(before));
  }
}

TEST(RandomNumbers, ComeFromAForeignRandWhereThereIsOne) {
  isForeign = true;
  ExpectTheNumbersOfCalls([] { foreignCalls = 10; });
  isForeign = false;
  EXPECT_EQ(10 + 40000 + 700, foreignCalls);
}

}  // namespace
}  // namespace orb::test
