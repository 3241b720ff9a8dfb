// The cards of a FITS header, carried along from file to file.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace orb::host {

class FitsHeader {
 public:
  // Every card as 80 characters, in order, without those that describe the array itself (see IsStructural): a writer
  // makes these anew.
  std::vector<std::string> cards;

  // Appends cards of a file, without structural ones (see below) and without the two comments that every writer puts on
  // top.
  void Carry(std::vector<std::string> const& fileCards);

  // SIMPLE, BITPIX, NAXIS..., EXTEND, BSCALE, BZERO, BLANK, DATAMIN, DATAMAX, CHECKSUM, DATASUM, what belongs to an
  // extension or to compression, END.
  static bool IsStructural(std::string const& keyword);

  // Keywords of more than eight characters or of several words are HIERARCH ones, without that word.
  bool Has(std::string const& keyword) const;
  std::optional<std::string> Text(
      std::string const& keyword) const;  // unquoted, trailing blanks off; numbers as they stand
  std::optional<double> Number(std::string const& keyword) const;  // nothing where the value is not a number

  // Changes the first such card in place, or appends a card before the first HISTORY card. An empty comment keeps the
  // card's own. Long texts take CONTINUE cards. A number that is not finite leaves the value undefined.
  void SetText(std::string const& keyword, std::string const& value, std::string const& comment);
  void SetNumber(std::string const& keyword, double value, std::string const& comment);
  void SetInteger(std::string const& keyword, long long value, std::string const& comment);
  void Remove(std::string const& keyword);
  void RemoveWcs();  // WCS cards: for results whose geometry changed
  // One or more HISTORY cards; long texts are wrapped at blanks.
  void AddHistory(std::string const& text);

 private:
  std::size_t Find(std::string const& keyword) const;  // cards.size() if there is none
  std::size_t EndOfCard(std::size_t index) const;      // behind the card and its CONTINUE cards
  std::string CommentOf(std::string const& keyword) const;
  void Replace(std::string const& keyword, std::vector<std::string> const& newCards);
};

}  // namespace orb::host
