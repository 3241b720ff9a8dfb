#include <platform/random_numbers_internal.h>

#include <cstdint>
#include <cstdlib>
#include <mutex>

namespace orb {

namespace {

#if defined(__GLIBC__)

constexpr std::size_t kLeastTakenOver = 512;  // that many calls cost more than a change of states

// The state of rand, taken out of the C library's hands while this lives. Only documented calls touch it, so that its
// form is the C library's own matter.
class TakenState {
 public:
  TakenState() : guard(mutex), state(initstate(kSeed, standIn, sizeof(standIn))) {
    initstate_r(kSeed, spare, sizeof(spare), &generator);
    // Both start alike now. A program may have put a rand of its own in place of the C library's.
    firstOfRand = std::rand();
    isOfRand = Next() == firstOfRand;
    setstate_r(state, &generator);
  }
  ~TakenState() {
    setstate_r(spare, &generator);  // notes in `state` how far it was used
    setstate(state);
  }
  TakenState(TakenState const&) = delete;
  TakenState& operator=(TakenState const&) = delete;

  // Whether Next gives rand's numbers.
  bool IsOfRand() const { return isOfRand; }
  // What rand was asked for to know that: if it is another generator, the first of its numbers.
  int FirstOfRand() const { return firstOfRand; }

  int Next() {
    std::int32_t number = 0;
    random_r(&generator, &number);
    return number;
  }

 private:
  static constexpr unsigned kSeed = 1;
  static constexpr std::size_t kStateBytes = 128;

  // Never freed, as some other thread may be handed the stand-in's address as the state that it replaces.
  static std::mutex mutex;
  static char standIn[kStateBytes];

  std::lock_guard<std::mutex> guard;
  char* state;
  alignas(std::int32_t) char spare[kStateBytes];
  random_data generator{};
  int firstOfRand;
  bool isOfRand;
};

std::mutex TakenState::mutex;
alignas(std::int32_t) char TakenState::standIn[kStateBytes];

// Calls take(number) for each.
template <typename Take>
void EachNumber(std::size_t count, Take take) {
  if (count >= kLeastTakenOver) {
    TakenState taken;
    if (taken.IsOfRand()) {
      for (; count > 0; --count) take(taken.Next());
      return;
    }
    take(taken.FirstOfRand());
    --count;
  }
  for (; count > 0; --count) take(std::rand());
}

#else

template <typename Take>
void EachNumber(std::size_t count, Take take) {
  for (; count > 0; --count) take(std::rand());
}

#endif

}  // namespace

void DrawRandom(std::size_t count, float* to) {
  EachNumber(count, [&](int number) { *to++ = static_cast<float>(number); });
}

void SkipRandom(std::size_t count) {
  EachNumber(count, [](int) {});
}

}  // namespace orb
