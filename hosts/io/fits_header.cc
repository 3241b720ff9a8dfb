#include <hosts/io/fits_header.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <string_view>

#include <hosts/io/fits_card_internal.h>

namespace orb::host {

namespace {

constexpr std::size_t kHistoryWidth = kCardLength - 8;

bool IsDigits(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c) != 0; });
}

// `stem` and digits, or `stem` alone.
bool IsNumbered(std::string_view keyword, std::string_view stem) {
  return keyword == stem || (keyword.starts_with(stem) && IsDigits(keyword.substr(stem.size())));
}

// Digits, an underscore, digits.
bool IsIndexPair(std::string_view text) {
  std::size_t const middle = text.find('_');
  return middle != std::string_view::npos && IsDigits(text.substr(0, middle)) && IsDigits(text.substr(middle + 1));
}

bool IsWcs(std::string_view keyword) {
  static constexpr std::array<std::string_view, 8> kNames{"WCSAXES", "WCSNAME", "LONPOLE",  "LATPOLE",
                                                          "RADESYS", "EQUINOX", "RADECSYS", "PLTSOLVD"};
  static constexpr std::array<std::string_view, 9> kOfAxis{"CTYPE", "CRPIX", "CRVAL", "CDELT", "CROTA",
                                                           "CUNIT", "CNAME", "CRDER", "CSYER"};
  static constexpr std::array<std::string_view, 4> kOfPair{"CD", "PC", "PV", "PS"};
  static constexpr std::array<std::string_view, 4> kDistortion{"A_", "B_", "AP_", "BP_"};
  for (std::string_view stem : kDistortion) {
    if (!keyword.starts_with(stem)) continue;
    std::string_view const rest = keyword.substr(stem.size());
    if (rest == "ORDER" || rest == "DMAX" || IsIndexPair(rest)) return true;
  }
  auto const matches = [](std::string_view key) {
    auto const behind = [key](std::string_view stem) { return key.substr(std::min(stem.size(), key.size())); };
    return std::find(kNames.begin(), kNames.end(), key) != kNames.end() ||
           std::any_of(kOfAxis.begin(), kOfAxis.end(),
                       [&](auto stem) { return key.starts_with(stem) && IsDigits(behind(stem)); }) ||
           std::any_of(kOfPair.begin(), kOfPair.end(),
                       [&](auto stem) { return key.starts_with(stem) && IsIndexPair(behind(stem)); });
  };
  if (matches(keyword)) return true;
  // A letter at the end names an alternative set of coordinates.
  return !keyword.empty() && std::isupper(static_cast<unsigned char>(keyword.back())) != 0 &&
         matches(keyword.substr(0, keyword.size() - 1));
}

std::string CardPrefix(std::string const& keyword) {
  bool const isShort = keyword.size() <= 8 && keyword.find(' ') == std::string::npos;
  return isShort ? keyword : "HIERARCH " + keyword + " ";
}

std::string TrimRight(std::string text) {
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

}  // namespace

bool FitsHeader::IsStructural(std::string const& keyword) {
  // DATAMIN and DATAMAX are there because every step changes the samples, and a wrong extreme is worse than none.
  static constexpr std::array<std::string_view, 30> kNames{
      "SIMPLE",   "XTENSION", "BITPIX",  "EXTEND",   "PCOUNT",   "GCOUNT",   "GROUPS",   "INHERIT",
      "BSCALE",   "BZERO",    "BLANK",   "DATAMIN",  "DATAMAX",  "CHECKSUM", "DATASUM",  "END",
      "TFIELDS",  "ZIMAGE",   "ZBITPIX", "ZCMPTYPE", "ZQUANTIZ", "ZDITHER0", "ZMASKCMP", "ZSIMPLE",
      "ZTENSION", "ZEXTEND",  "ZPCOUNT", "ZGCOUNT",  "ZHECKSUM", "ZDATASUM"};
  static constexpr std::array<std::string_view, 7> kNumbered{"NAXIS", "ZNAXIS", "ZTILE", "ZNAME",
                                                             "ZVAL",  "TTYPE",  "TFORM"};
  return std::find(kNames.begin(), kNames.end(), keyword) != kNames.end() ||
         std::any_of(kNumbered.begin(), kNumbered.end(), [&](auto stem) { return IsNumbered(keyword, stem); });
}

std::size_t FitsHeader::Find(std::string const& keyword) const {
  auto const found =
      std::find_if(cards.begin(), cards.end(), [&](auto const& card) { return KeywordOf(card) == keyword; });
  return static_cast<std::size_t>(found - cards.begin());
}

std::size_t FitsHeader::EndOfCard(std::size_t index) const {
  std::size_t end = std::min(index + 1, cards.size());
  while (end < cards.size() && ContinuationOf(cards[end])) ++end;
  return end;
}

void FitsHeader::Carry(std::vector<std::string> const& fileCards) {
  bool dropsContinuation = false;
  for (std::string const& card : fileCards) {
    bool const isContinuation = ContinuationOf(card).has_value();
    if (!isContinuation) dropsContinuation = IsStructural(KeywordOf(card));
    if (dropsContinuation) continue;
    if (card.starts_with("COMMENT   FITS (Flexible Image Transport System) format is defined in 'Astronomy")) continue;
    if (card.starts_with("COMMENT   and Astrophysics', volume 376, page 359; bibcode: 2001A&A...376..359H")) continue;
    cards.push_back(card);
  }
}

bool FitsHeader::Has(std::string const& keyword) const { return Find(keyword) < cards.size(); }

std::optional<std::string> FitsHeader::Text(std::string const& keyword) const {
  std::size_t const index = Find(keyword);
  if (index == cards.size()) return std::nullopt;
  auto const first = ValueOf(cards[index]);
  if (!first) return std::nullopt;
  std::string text = TrimRight(first->value);
  if (!first->isText) return text;
  for (std::size_t i = index + 1; i < EndOfCard(index) && text.ends_with('&'); ++i) {
    text.pop_back();
    text += TrimRight(ContinuationOf(cards[i])->value);
  }
  return text;
}

std::optional<double> FitsHeader::Number(std::string const& keyword) const {
  std::size_t const index = Find(keyword);
  if (index == cards.size()) return std::nullopt;
  auto const parsed = ValueOf(cards[index]);
  if (!parsed || parsed->isText || parsed->value.empty()) return std::nullopt;
  std::string digits = parsed->value;
  std::replace_if(
      digits.begin(), digits.end(), [](char c) { return c == 'D' || c == 'd'; }, 'E');  // Fortran's exponent
  if (digits[0] == '+') digits.erase(0, 1);
  double number = 0.0;
  auto const result = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (result.ec != std::errc() || result.ptr != digits.data() + digits.size()) return std::nullopt;
  return number;
}

std::string FitsHeader::CommentOf(std::string const& keyword) const {
  std::size_t const index = Find(keyword);
  if (index == cards.size()) return std::string();
  std::size_t const last = EndOfCard(index) - 1;
  auto const value = last == index ? ValueOf(cards[index]) : ContinuationOf(cards[last]);
  return value ? value->comment : std::string();
}

void FitsHeader::Replace(std::string const& keyword, std::vector<std::string> const& newCards) {
  std::size_t index = Find(keyword);
  if (index < cards.size()) {
    auto const begin = cards.begin() + static_cast<std::ptrdiff_t>(index);
    cards.erase(begin, cards.begin() + static_cast<std::ptrdiff_t>(EndOfCard(index)));
  } else {
    index = Find("HISTORY");
  }
  cards.insert(cards.begin() + static_cast<std::ptrdiff_t>(index), newCards.begin(), newCards.end());
}

void FitsHeader::SetText(std::string const& keyword, std::string const& value, std::string const& comment) {
  Replace(keyword, FormatTextCards(CardPrefix(keyword), value, comment.empty() ? CommentOf(keyword) : comment));
}

void FitsHeader::SetNumber(std::string const& keyword, double value, std::string const& comment) {
  Replace(keyword,
          {FormatCard(CardPrefix(keyword), FormatNumber(value), comment.empty() ? CommentOf(keyword) : comment)});
}

void FitsHeader::SetInteger(std::string const& keyword, long long value, std::string const& comment) {
  Replace(keyword,
          {FormatCard(CardPrefix(keyword), std::to_string(value), comment.empty() ? CommentOf(keyword) : comment)});
}

void FitsHeader::Remove(std::string const& keyword) {
  for (std::size_t index = Find(keyword); index < cards.size(); index = Find(keyword)) {
    cards.erase(cards.begin() + static_cast<std::ptrdiff_t>(index),
                cards.begin() + static_cast<std::ptrdiff_t>(EndOfCard(index)));
  }
}

void FitsHeader::RemoveWcs() {
  std::vector<std::string> kept;
  for (std::size_t i = 0; i < cards.size(); i = EndOfCard(i)) {
    if (IsWcs(KeywordOf(cards[i]))) continue;
    for (std::size_t k = i; k < EndOfCard(i); ++k) kept.push_back(cards[k]);
  }
  cards.swap(kept);
}

void FitsHeader::AddHistory(std::string const& text) {
  std::string rest = text;
  do {
    std::size_t length = rest.size();
    if (length > kHistoryWidth) {
      std::size_t const blank = rest.rfind(' ', kHistoryWidth);
      length = blank == std::string::npos || blank == 0 ? kHistoryWidth : blank;
    }
    cards.push_back(PadCard("HISTORY " + rest.substr(0, length)));
    rest.erase(0, length);
    rest.erase(0, rest.find_first_not_of(' '));
  } while (!rest.empty());
}

}  // namespace orb::host
