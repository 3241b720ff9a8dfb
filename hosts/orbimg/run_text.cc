#include <hosts/orbimg/run_text.h>

#include <algorithm>
#include <charconv>
#include <string_view>

#include <fmt/format.h>
#include <hosts/orbimg/texts.h>
#include <orbimg/orbimg.h>

namespace orb::host {
namespace {

constexpr std::string_view kNumber = "%d";

// A text of the table with its numbers in the order in which they stand there.
struct RunMessage {
  int id;
  int RunText::*first;
  int RunText::*second;
};

constexpr RunMessage kRunMessages[] = {
    {6154, nullptr, nullptr},
    {6155, &RunText::plane, nullptr},
    {6156, &RunText::iteration, nullptr},
    {6157, &RunText::plane, &RunText::iteration},
    {6158, nullptr, nullptr},
    {6159, &RunText::plane, nullptr},
    {6160, &RunText::iteration, nullptr},
    {6161, &RunText::plane, &RunText::iteration},
    {6162, nullptr, nullptr},
    {6163, &RunText::plane, nullptr},
};

struct BoxMessage {
  int id;
  char const* english;
};

constexpr BoxMessage kBoxMessages[] = {
    {6148, "not enough memory; close other programs and try again"},
    {6149, "cancelled"},
    {6150, "not enough memory; close other programs and try again"},
    {6151, "cancelled"},
};

// Takes `literal` off the front of a text.
bool Skip(std::string_view literal, std::string_view& text) {
  if (!text.starts_with(literal)) return false;
  text.remove_prefix(literal.size());
  return true;
}

bool ReadNumber(std::string_view& text, int& number) {
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc()) return false;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return true;
}

std::optional<RunText> Match(RunMessage const& message, std::string_view text) {
  std::string_view pattern = LoadString(message.id);
  RunText run;
  for (int RunText::*const number : {message.first, message.second}) {
    if (number == nullptr) break;
    std::size_t const place = pattern.find(kNumber);
    if (place == std::string_view::npos || !Skip(pattern.substr(0, place), text)) return std::nullopt;
    if (!ReadNumber(text, run.*number)) return std::nullopt;
    pattern.remove_prefix(place + kNumber.size());
  }
  if (text != pattern) return std::nullopt;
  return run;
}

}  // namespace

std::string RunText::English() const {
  std::string const where = plane > 0 ? fmt::format("plane {}, ", plane) : "";
  return where + (iteration > 0 ? fmt::format("iteration {}", iteration) : "preparing");
}

std::optional<RunText> ReadRunText(std::string const& text) {
  for (RunMessage const& message : kRunMessages) {
    if (std::optional<RunText> const run = Match(message, text)) return run;
  }
  return std::nullopt;
}

std::string BoxText(std::string const& text) {
  if (IsJapaneseLocale()) return text;
  auto const isIt = [&](BoxMessage const& box) { return text == LoadString(box.id); };
  auto const known = std::find_if(std::begin(kBoxMessages), std::end(kBoxMessages), isIt);
  return known == std::end(kBoxMessages) ? text : known->english;
}

}  // namespace orb::host
