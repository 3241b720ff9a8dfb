#include <hosts/io/fits_header.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <regex>
#include <string_view>

#include <hosts/io/fits_card_internal.h>

namespace orb::host {

namespace {

constexpr std::size_t kHistoryWidth = kCardLength - 8;

// `stem` followed by nothing but digits.
bool IsNumbered(std::string_view keyword, std::string_view stem) {
  if (!keyword.starts_with(stem)) return false;
  keyword.remove_prefix(stem.size());
  return std::all_of(keyword.begin(), keyword.end(), [](unsigned char c) { return std::isdigit(c) != 0; });
}

bool IsWcs(std::string const& keyword) {
  static std::regex const pattern(
      "(CTYPE|CRPIX|CRVAL|CDELT|CROTA|CUNIT|CNAME|CRDER|CSYER)[0-9]+[A-Z]?|(CD|PC|PV|PS)[0-9]+_[0-9]+[A-Z]?|"
      "(WCSAXES|WCSNAME|LONPOLE|LATPOLE|RADESYS|EQUINOX)[A-Z]?|RADECSYS|PLTSOLVD|"
      "(A|B|AP|BP)_(ORDER|DMAX|[0-9]+_[0-9]+)");
  return std::regex_match(keyword, pattern);
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
