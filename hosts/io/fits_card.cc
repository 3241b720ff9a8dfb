#include <algorithm>
#include <charconv>
#include <cmath>

#include <hosts/io/fits_card_internal.h>

namespace orb::host {

namespace {

constexpr std::size_t kKeywordLength = 8;
constexpr std::size_t kFixedValueWidth = 20;  // a fixed-format value ends in column 30
constexpr std::size_t kTextLength = 67;       // between the quotes of a card, with room for an ampersand

std::string TrimRight(std::string text) {
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

std::string TrimLeft(std::string const& text) {
  std::size_t const first = text.find_first_not_of(' ');
  return first == std::string::npos ? std::string() : text.substr(first);
}

std::string CommentBehind(std::string const& field, std::size_t from) {
  std::size_t const slash = field.find('/', from);
  return slash == std::string::npos ? std::string() : TrimRight(TrimLeft(field.substr(slash + 1)));
}

CardValue ParseField(std::string const& rawField) {
  std::string const field = TrimLeft(rawField);
  CardValue result;
  if (field.empty() || field[0] != '\'') {
    std::size_t const slash = field.find('/');
    result.value = TrimRight(field.substr(0, slash));
    result.comment = CommentBehind(field, 0);
    return result;
  }
  result.isText = true;
  std::size_t i = 1;
  for (; i < field.size(); ++i) {
    if (field[i] == '\'') {
      if (i + 1 >= field.size() || field[i + 1] != '\'') break;
      ++i;  // two quotes stand for one
    }
    result.value += field[i];
  }
  result.comment = CommentBehind(field, std::min(i + 1, field.size()));
  return result;
}

bool IsHierarch(std::string const& card) {
  return card.starts_with("HIERARCH ") && card.find('=') != std::string::npos;
}

std::string Quote(std::string const& text) {
  std::string quoted = "'";
  for (char c : text) quoted += c == '\'' ? std::string("''") : std::string(1, c);
  quoted.resize(std::max(quoted.size(), kKeywordLength + 1), ' ');
  return quoted + "'";
}

// The longest beginning of `text` that fits on a card once its quotes are doubled.
std::size_t FittingLength(std::string const& text) {
  std::size_t used = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    used += text[i] == '\'' ? 2 : 1;
    if (used > kTextLength) return i;
  }
  return text.size();
}

}  // namespace

std::string KeywordOf(std::string const& card) {
  if (IsHierarch(card)) return TrimLeft(TrimRight(card.substr(9, card.find('=') - 9)));
  return TrimRight(card.substr(0, kKeywordLength));
}

std::optional<CardValue> ValueOf(std::string const& card) {
  if (IsHierarch(card)) return ParseField(card.substr(card.find('=') + 1));
  if (card.size() < kKeywordLength + 2 || card.compare(kKeywordLength, 2, "= ") != 0) return std::nullopt;
  std::string const keyword = KeywordOf(card);
  if (keyword.empty() || keyword == "HISTORY" || keyword == "COMMENT") return std::nullopt;
  return ParseField(card.substr(kKeywordLength + 2));
}

std::optional<CardValue> ContinuationOf(std::string const& card) {
  if (!card.starts_with("CONTINUE  ")) return std::nullopt;
  return ParseField(card.substr(kKeywordLength));
}

std::string PadCard(std::string card) {
  card.resize(kCardLength, ' ');
  for (char& c : card) {
    if (c < ' ' || c > '~') c = '?';
  }
  return card;
}

std::string FormatCard(std::string const& keyword, std::string const& value, std::string const& comment) {
  std::string card = keyword;
  card.resize(std::max(card.size(), kKeywordLength), ' ');
  card += "= ";
  bool const isText = !value.empty() && value[0] == '\'';
  std::string const blanks(value.size() < kFixedValueWidth ? kFixedValueWidth - value.size() : 0, ' ');
  card += isText ? value + blanks : blanks + value;
  if (!comment.empty()) card += " / " + comment;
  return PadCard(card);
}

std::vector<std::string> FormatTextCards(std::string const& keyword, std::string const& text,
                                         std::string const& comment) {
  std::vector<std::string> cards;
  std::string rest = text;
  for (;;) {
    std::size_t const length = FittingLength(rest);
    bool const isLast = length == rest.size();
    std::string const value = Quote(rest.substr(0, length) + (isLast ? "" : "&"));
    std::string const& shown = isLast ? comment : std::string();
    if (cards.empty()) {
      cards.push_back(FormatCard(keyword, value, shown));
    } else {
      cards.push_back(PadCard("CONTINUE  " + value + (shown.empty() ? "" : " / " + shown)));
    }
    if (isLast) return cards;
    rest.erase(0, length);
  }
}

std::string FormatNumber(double number) {
  if (!std::isfinite(number)) return std::string();
  char digits[64];
  auto const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
  std::string text(digits, end);
  std::replace(text.begin(), text.end(), 'e', 'E');
  if (text.find_first_of(".E") == std::string::npos) text += ".0";
  return text;
}

}  // namespace orb::host
