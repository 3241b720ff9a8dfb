// Header cards as the description of a TIFF file: a line for each card, between lines of their own.
#pragma once

#include <string>
#include <vector>

#include <hosts/io/fits_header.h>

namespace orb::host {

std::string DescriptionOf(FitsHeader const& header);
bool CarriesCards(std::string const& description);
// Up to the line that ends them, or the text.
std::vector<std::string> CardsOfDescription(std::string const& description);

}  // namespace orb::host
