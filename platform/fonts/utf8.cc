#include <cstddef>

#include <platform/fonts/utf8_internal.h>

namespace orb {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

struct Sequence {
  std::size_t length;  // 0: no character begins like this
  char32_t bits;       // of the first byte
  char32_t least;      // below it, a shorter form would have done
};

Sequence SequenceOf(unsigned char first) {
  if (first < 0x80) return {1, first, 0};
  if (first >= 0xC0 && first < 0xE0) return {2, first & 0x1Fu, 0x80};
  if (first >= 0xE0 && first < 0xF0) return {3, first & 0x0Fu, 0x800};
  if (first >= 0xF0 && first < 0xF8) return {4, first & 0x07u, 0x10000};
  return {0, 0, 0};
}

bool IsCharacter(char32_t c) { return c <= 0x10FFFF && !(c >= 0xD800 && c <= 0xDFFF); }

// Bytes of the character that begins at `at`, which goes to `c`; 0 if none does.
std::size_t ReadCharacter(std::string const& text, std::size_t at, char32_t& c) {
  Sequence const sequence = SequenceOf(static_cast<unsigned char>(text[at]));
  if (sequence.length == 0 || sequence.length > text.size() - at) return 0;
  c = sequence.bits;
  for (std::size_t i = 1; i < sequence.length; ++i) {
    auto const next = static_cast<unsigned char>(text[at + i]);
    if ((next & 0xC0u) != 0x80u) return 0;
    c = c << 6 | (next & 0x3Fu);
  }
  return c >= sequence.least && IsCharacter(c) ? sequence.length : 0;
}

}  // namespace

std::u32string DecodeUtf8(std::string const& text) {
  std::u32string characters;
  for (std::size_t at = 0; at < text.size();) {
    char32_t c = 0;
    std::size_t const length = ReadCharacter(text, at, c);
    characters.push_back(length != 0 ? c : kReplacement);
    at += length != 0 ? length : 1;
  }
  return characters;
}

}  // namespace orb
