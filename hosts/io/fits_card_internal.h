// One card of a FITS header: 80 characters with a keyword, a value and a comment.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace orb::host {

inline constexpr std::size_t kCardLength = 80;

struct CardValue {
  bool isText = false;
  std::string value;    // a text unquoted, with its trailing blanks; any other value as it stands
  std::string comment;  // without the slash
};

// The first eight characters without trailing blanks, or what stands between HIERARCH and the equals sign.
std::string KeywordOf(std::string const& card);
// Nothing for cards without a value: HISTORY, COMMENT, CONTINUE, blank ones.
std::optional<CardValue> ValueOf(std::string const& card);
// The text of a CONTINUE card; nothing for other cards.
std::optional<CardValue> ContinuationOf(std::string const& card);

// Blanks to 80 characters; whatever is not printable ASCII becomes a question mark.
std::string PadCard(std::string card);
std::string FormatCard(std::string const& keyword, std::string const& value, std::string const& comment);
// As many cards as the text needs: one and CONTINUE cards.
std::vector<std::string> FormatTextCards(std::string const& keyword, std::string const& text,
                                         std::string const& comment);
// Shortest form that reads back as the same double, with a point or an exponent; empty, which is FITS for "undefined",
// for a number that is not finite.
std::string FormatNumber(double number);

}  // namespace orb::host
