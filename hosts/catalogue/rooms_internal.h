// The rooms of the library, each with its operators, and what their entries share.
#pragma once

#include <string>
#include <vector>

#include <hosts/catalogue/operator_entry.h>

namespace orb::host {

std::vector<OperatorEntry> CoreOperators();
std::vector<OperatorEntry> ToneOperators();
std::vector<OperatorEntry> StackingOperators();
std::vector<OperatorEntry> PointOperators();
std::vector<OperatorEntry> LabOperators();
std::vector<OperatorEntry> ChannelOperators();
std::vector<OperatorEntry> FilterOperators();
std::vector<OperatorEntry> RankFilterOperators();
std::vector<OperatorEntry> StarFilterOperators();
std::vector<OperatorEntry> GeometryOperators();
std::vector<OperatorEntry> ResampleOperators();
std::vector<OperatorEntry> MemOperators();
std::vector<OperatorEntry> RestorationOperators();
std::vector<OperatorEntry> SkyOperators();

// The image of a call as an operator object while this lives.
template <typename Operator>
class AsOperator {
 public:
  explicit AsOperator(Invocation const& call) : image(call.image), source(call.source) { object.Swap(image); }
  AsOperator(AsOperator const&) = delete;
  AsOperator& operator=(AsOperator const&) = delete;
  ~AsOperator() { object.Swap(image); }

  Operator* operator->() { return &object; }
  // The source of the call; in place it has moved along with the image.
  COrbImage* Source() { return source == image ? &object : source; }

 private:
  COrbImage* image;
  COrbImage* source;
  Operator object;
};

Parameter Real(std::string name, std::string unit, double least, double most, double byDefault, std::string help);
Parameter Integer(std::string name, std::string unit, int least, int most, int byDefault, std::string help);
Parameter Flag(std::string name, std::string help);
Parameter Choice(std::string name, std::vector<std::string> choices, std::string help);

// An operator on whole images that moves their samples: positions and standard points do not outlast it. Units and
// ticks are the rows of every plane of the result.
OperatorEntry OfMovedSamples(std::string name, std::string title);

// "dx", "dy" and "angle" of an image that is sampled through the transform; `what` is what it is called.
std::vector<Parameter> Placement(std::string const& what, double mostAngle);

}  // namespace orb::host
