#include <sstream>

#include <hosts/io/fits_card_internal.h>
#include <hosts/io/tiff_description_internal.h>

namespace orb::host {

namespace {
constexpr char kFirst[] = "SIMPLE  =                    T / header cards of the image";
constexpr char kLast[] = "END";
}  // namespace

std::string DescriptionOf(FitsHeader const& header) {
  std::string text = std::string(kFirst) + "\n";
  for (std::string card : header.cards) {
    card.erase(card.find_last_not_of(' ') + 1);
    text += card + "\n";
  }
  return text + kLast;
}

bool CarriesCards(std::string const& description) { return description.starts_with("SIMPLE  ="); }

std::vector<std::string> CardsOfDescription(std::string const& description) {
  std::vector<std::string> cards;
  std::istringstream lines(description);
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line == kLast) break;
    if (line.size() <= kCardLength) cards.push_back(PadCard(line));
  }
  return cards;
}

}  // namespace orb::host
