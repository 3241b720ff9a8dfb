// What a host knows of an operator: its parameters, what it reads and changes, how it reports, and how to run it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <orbimg/orbimg.h>

namespace orb::host {

struct Parameter {
  enum class Kind { kReal, kInteger, kFlag, kChoice };

  std::string name;  // as on a command line: "fixed-range"
  Kind kind;
  std::string unit;  // "pixels", "degrees" ...; empty for a pure number
  double least;      // both bounds are allowed
  double most;
  double byDefault;
  std::string help;
  std::vector<std::string> choices;  // of kChoice: the name of each number from 0 on
  // What a host takes in place of the default, where it knows the source: a level of its first plane, what lies halfway
  // between the two, the column or row of its middle, its width or height, or the noise of its first plane where there
  // is any.
  enum class Follows { kNothing, kBlack, kWhite, kMiddleLevel, kMiddleColumn, kMiddleRow, kWidth, kHeight, kNoise };
  Follows follows = Follows::kNothing;
  // Of the width of the gaussian that blurred the image: what its sigma in pixels is multiplied by. 0: it is no such
  // width.
  double ofBlur = 0.0;
};

// A table of numbers that an operator reads. All tables of a call have as many entries.
struct Table {
  std::string name;  // as on a command line: "master"
  int leastEntries;
  int mostEntries;
  bool isOfPlanes;  // one for each plane of a colour image, and none for a mono one
  std::string help;

  int CountFor(int planes) const { return !isOfPlanes ? 1 : planes < 3 ? 0 : planes; }
};

// A number that an operator finds out.
struct Result {
  std::string name;
  std::string unit;
  std::string help;
};

// One of any number of frames, with where it goes.
struct PlacedFrame {
  COrbImage* image = nullptr;
  std::vector<double> values;  // one a frame parameter, in their order
};

// One call: the images and the values. No image is owned.
struct Invocation {
  // The destination, of its final shape, or, where the operator changes the size, of the shape of the source; for most
  // operators a copy of the source.
  COrbImage* image = nullptr;
  COrbImage* source = nullptr;  // the image itself for a run in place
  COrbImage* second = nullptr;
  std::vector<double> values;  // one a parameter, in their order
  CRect* rect = nullptr;       // null: the whole image
  int progress = 0;
  std::vector<PlacedFrame> frames = {};         // of operators with frame parameters
  std::vector<double>* results = nullptr;       // of operators with results: becomes one a result, in their order
  std::vector<std::vector<float>> tables = {};  // of operators with tables, in their order; read only
};

// What the source must be like, seen from the image.
enum class SourceShape {
  kNone,           // there is no source: the operator works on the image itself
  kSame,           // the same size and planes
  kFrame,          // the same size, one plane or three: a calibration frame
  kColourToMono,   // the same size; source and image have three planes, and the image is left with one
  kAnyToColour,    // the same size; the image has one plane and is left with three
  kFrameToColour,  // the same size, one plane or three; the image has three planes
  kColour,         // the same size, three planes whatever those of the image
  kAny,            // any size, one plane or three
  kAnySize,        // any size, the same planes
};

struct ImageSize {
  std::int64_t width;
  std::int64_t height;
};

// What is counted for progress. "Rows" are those of the rectangle, limited to the image.
enum class Units {
  kNone,
  kRows,
  kRowsTimesPlanes,
  kImageRows,
  kImageRowsTimesPlanes,
  kClasses,                // of value, the same number for every image; which of them tick depends on the samples
  kResultRowsTimesPlanes,  // rows of the size that the image comes to
  kCounted,                // what countUnits finds
  kSearch,  // a share of the positions of a search over "range", and of its sub-pixel stages with the flag "fine"
};

// Whether a run in bands gives the bits of one run.
enum class Bands {
  kNone,
  kRectangle,  // by a rectangle for each band: whole rows, where a call takes none
  kStrips,     // the operator takes no rectangle, but every row of every plane may be an image of its own
};

// When progress is reported.
enum class Reports {
  kNever,
  kOnRequest,
  kAlways,
  kAlwaysForBrightness,  // always where a colour image is taken as its brightness, whatever was asked for; else never
};

// Whether a level pair without a range spoils the result.
enum class LevelUse {
  kNone,
  kAlways,
  kIfAsked,  // where the flag "levels" is set
};

struct Changes {
  bool sourceLevels = false;  // to the extrema of its planes
  bool samples = false;
  bool levels = false;
  bool planes = false;
  // Where the samples lie: what was known of positions, as the coordinates of a file's header, holds no longer.
  bool geometry = false;
  bool points = false;  // standard points are cleared; the centre may be set anew
};

struct OperatorEntry {
  std::string name;   // "invert"; "sky-flat" where the bare word says too little outside its group
  std::string title;  // one line
  // The subcommand of the program that offers it by its name: "apply", "filter" ...; empty where a subcommand of its
  // own does, or none. Empty in a room that has a group (see catalogue.cc) stands for that group.
  std::string group;
  std::vector<Parameter> parameters;

  int imagePlanes = 0;  // what the image must have; 0: one plane or three
  SourceShape sourceShape = SourceShape::kSame;
  std::string sourceName = "source";       // what messages call it: "source", "dark", "flat"
  bool needsSecond = false;                // a second image, of any size
  std::vector<Parameter> frameParameters;  // of each frame; none: the operator takes no frames
  std::vector<std::string> frameNames;     // one frame of each name, in this order; none: any number, one at least
  std::vector<Table> tables;               // that it reads
  std::vector<Result> results;             // the numbers that it finds out
  bool takesRectangle = true;              // one that limits what is written
  int overdraw = 0;  // pixels beyond the rectangle's right and bottom that a call may write as well
  // A rectangle that lies within the image is what becomes of it. Not together with takesRectangle.
  bool cutsToRectangle = false;
  // The size that a call leaves its image in; null: the size that it has.
  ImageSize (*sizeOfResult)(Invocation const&) = nullptr;
  bool mayRunInPlace = false;  // the source may be the image itself
  LevelUse levelUse = LevelUse::kNone;
  Changes changes;
  // Whether a call changes levels; null: `changes` holds for every call.
  bool (*changesLevels)(Invocation const&) = nullptr;
  // Whether a call writes a plane of the image; null: it writes all.
  bool (*writesPlane)(Invocation const&, int plane) = nullptr;

  int message = 0;                                    // number of the progress text; 0: none
  int (*messageOfCall)(Invocation const&) = nullptr;  // where it depends on the call
  Reports reports = Reports::kOnRequest;
  bool runsByPlane = false;    // a run of messages for each plane of the source
  Units units = Units::kNone;  // what the run announces
  // What it counts: more than it announces for one operator; kNone for a search and for classes, where it is not known
  // before.
  Units ticks = Units::kNone;
  int (*countUnits)(Invocation const&) = nullptr;  // where units or ticks are kCounted

  // Reports in a way of its own, in steps that are no rows, or in several runs, and counts no units.
  bool hasOwnRuns = false;
  // Returns 0 at ESC, or drops what it was at; the image then stays as it was, or is a sound result.
  bool stopsAtEscape = false;

  Bands bands = Bands::kNone;
  int marginRows = 0;  // rows above and below its own that a row of the result needs of the source

  // What the ranges of single values cannot say; an empty text, or one line.
  std::string (*check)(Invocation const&) = nullptr;
  // 1, or 0 for lack of memory or where the results do not exist; these are left empty then. Only for calls that pass
  // CheckInvocation.
  int (*run)(Invocation const&) = nullptr;

  // As on a command line, within its group: "invert", and "flat" of "sky-flat".
  std::string CommandName() const;
  // Whether a call leaves anything behind in its image.
  bool DoesWrite() const { return changes.samples || changes.levels || changes.planes; }
  std::vector<double> Defaults() const;
  // Place of a parameter; -1 if there is none of that name.
  int Find(std::string const& parameter) const;
  // Place of the width of the blur; -1 if there is none.
  int FindBlur() const;
  bool TakesFrames() const { return !frameParameters.empty(); }
  bool WritesPlane(Invocation const& call, int plane) const {
    return writesPlane == nullptr || writesPlane(call, plane);
  }
  bool ChangesLevels(Invocation const& call) const {
    return changesLevels == nullptr ? changes.levels : changesLevels(call);
  }
  ImageSize SizeOf(Invocation const& call) const;
  int MessageOf(Invocation const& call) const { return messageOfCall == nullptr ? message : messageOfCall(call); }
  // How many tables a call on an image of this many planes has.
  std::size_t TablesFor(int planes) const;
  // Whether this call reports progress, and how much.
  bool DoesReport(Invocation const& call) const;
  int UnitsOf(Invocation const& call) const;
  int TicksOf(Invocation const& call) const;
  int RunsOf(Invocation const& call) const { return runsByPlane ? call.source->GetPlanes() : 1; }
};

}  // namespace orb::host
