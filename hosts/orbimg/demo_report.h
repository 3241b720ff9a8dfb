// What the demo found out about its own result.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include <hosts/orbimg/truth_check.h>

namespace orb::host {

struct DemoFiles {
  std::string truth;
  std::vector<std::string> raw;         // lights
  std::vector<std::string> calibrated;  // in the same order
  std::string alignment;
  std::string median;     // stack of all
  std::string rejection;  // of the first light and the one with the trail
};

struct DemoReport {
  int frames = 0;
  int starsInField = 0;  // bright enough to count on
  int starsFound = 0;    // in the reference
  int framesAligned = 0;
  double worstTransformError = 0.0;  // pixels
  double rmsTransformError = 0.0;    // pixels
  double noiseOfFrame = 0.0;         // ADU, where all frames overlap
  double noiseOfStack = 0.0;
  SpikeCount hotInRaw;
  SpikeCount hotInCalibrated;
  SpikeCount hotInStack;
  double trailInFrame = 0.0;  // ADU
  double trailInStack = 0.0;
  double trailInRejection = 0.0;
  bool hasCaption = false;                              // the picture carries a text: a font was found
  std::vector<std::pair<std::string, double>> seconds;  // of each step

  double NoiseGain() const { return noiseOfFrame / noiseOfStack; }
};

// Fills in everything but the seconds.
void MeasureDemo(DemoFiles const& files, DemoReport& report);

std::string FormatReport(DemoReport const& report);
std::string FormatReportJson(DemoReport const& report);

}  // namespace orb::host
