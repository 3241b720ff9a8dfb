// What a maximum entropy restoration tells the host: the texts of its stages, for one plane or for one of several, and
// percentages. Without an image to report through, nothing is told and nothing stops it.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

#include <orbimg/core/orb_image.h>
#include <orbimg/resources/message_table.h>

namespace orb {

class MemProgress {
 public:
  // `plane` counts from 1; 0: the image has only one.
  MemProgress(COrbImage* reporter, int plane) : image(reporter), planeNumber(plane) {}

  void StartPreparing() { StartStage(6158, 6159); }
  void StartSetUp() { StartStage(6162, 6163); }

  void StartIteration(int k) {
    if (planeNumber == 0) {
      Start(Format(LoadString(6160), k));
    } else {
      Start(Format(LoadString(6161), planeNumber, k));
    }
  }

  // False on ESC.
  bool Show(int percent) { return image == nullptr || image->ShowProgress(percent) != 0; }

  void End() {
    if (image != nullptr) image->ShowProgressEnd(static_cast<char const*>(nullptr));
  }

 private:
  void StartStage(int messageId, int messageIdOfPlane) {
    Start(planeNumber == 0 ? LoadString(messageId) : Format(LoadString(messageIdOfPlane), planeNumber));
  }

  void Start(std::string const& text) {
    if (image != nullptr) image->ShowProgressInit(text.c_str());
  }

  // The text with its numbers in place of each %d.
  template <typename... Numbers>
  static std::string Format(char const* text, Numbers... numbers) {
    std::string result = text;
    (Replace(result, numbers), ...);
    return result;
  }

  static void Replace(std::string& text, int number) {
    std::size_t const place = text.find("%d");
    if (place != std::string::npos) text.replace(place, 2, std::to_string(number));
  }

  COrbImage* image;
  int planeNumber;
};

}  // namespace orb
