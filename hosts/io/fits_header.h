// The cards of a FITS header, carried along from file to file.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace orb::host {

class FitsHeader {
 public:
  // Every card as 80 characters, in order, without those that describe the array itself (SIMPLE, BITPIX, NAXIS..., EXTEND,
  // BSCALE, BZERO, BLANK, CHECKSUM, DATASUM, compression keywords, END): a writer makes these anew.
  std::vector<std::string> cards;

  bool Has(std::string const& keyword) const;
  std::optional<std::string> Text(std::string const& keyword) const;  // unquoted, trailing blanks off
  std::optional<double> Number(std::string const& keyword) const;

  // Changes the card's value in place, or appends a card before the first HISTORY card.
  void SetText(std::string const& keyword, std::string const& value, std::string const& comment);
  void SetNumber(std::string const& keyword, double value, std::string const& comment);
  void SetInteger(std::string const& keyword, long long value, std::string const& comment);
  void Remove(std::string const& keyword);
  void RemoveWcs();  // WCS cards: for results whose geometry changed
  // One or more HISTORY cards; long texts are wrapped at blanks.
  void AddHistory(std::string const& text);
};

}  // namespace orb::host
