#include <hosts/orbimg/composition.h>

#include <fmt/format.h>
#include <hosts/io/host_error.h>
#include <hosts/orbimg/composition_header.h>
#include <hosts/orbimg/file_list.h>
#include <hosts/orbimg/image_file.h>
#include <hosts/orbimg/operator_job.h>
#include <hosts/orbimg/operator_options.h>

namespace orb::host {
namespace {

void SetPlacement(std::vector<Parameter> const& parameters, FrameTransform const& transform,
                  std::vector<double>& values) {
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    if (parameters[i].name == "dx") values[i] = transform.dx;
    if (parameters[i].name == "dy") values[i] = transform.dy;
    if (parameters[i].name == "angle") values[i] = transform.angle;
  }
}

// Stars and matching know nothing of a scale.
void CheckScale(CompositionJob const& job) {
  int const scale = job.entry->Find("scale");
  if (scale < 0 || job.values[static_cast<std::size_t>(scale)] == 1.0 || !job.placement.align) return;
  throw HostError(Exit::kUsage, "--align: works at a scale of 1; leave out --scale, or resample the image first");
}

void AddHistory(CompositionJob const& job, std::vector<FrameTransform> const& transforms, FitsHeader& header) {
  OperatorEntry const& entry = *job.entry;
  std::string const how = DescribeValues(entry.parameters, job.values, {"planes"});
  header.AddHistory(fmt::format("orbimg {}{}{}", entry.name, how.empty() ? "" : ": ", how));
  for (std::size_t i = 0; i < job.files.size(); ++i) {
    header.AddHistory(fmt::format("orbimg {}: {} {} {}", entry.name, entry.frameNames[i], BareName(job.files[i]),
                                  transforms[i].Text()));
  }
}

}  // namespace

void Compose(CompositionJob const& job, Environment& environment, Composition& result) {
  CheckScale(job);
  OperatorEntry const& entry = *job.entry;
  std::vector<Frame> frames(job.files.size());
  std::vector<PlacedImage> images;
  std::vector<FitsHeader const*> headers;
  for (std::size_t i = 0; i < frames.size(); ++i) {
    ReadForWork(job.files[i], frames[i], environment);
    images.push_back({job.files[i], &frames[i].image});
    headers.push_back(&frames[i].header);
  }
  std::vector<FrameTransform>& transforms = result.transforms;
  transforms = PlaceImages(job.placement, images, environment);
  Invocation call;
  for (std::size_t i = 0; i < frames.size(); ++i) {
    frames[i].image.SetStdCtr(transforms[i].cx, transforms[i].cy);
    call.frames.push_back({&frames[i].image, job.frameValues[i]});
    SetPlacement(entry.frameParameters, transforms[i], call.frames[i].values);
  }
  COrbImage const& first = frames[0].image;
  COrbImage canvas(-32, first.GetWidth(), first.GetHeight(), entry.imagePlanes, 1.0, 0.0, 1, nullptr, nullptr);
  result.frame.image.Swap(&canvas);
  call.image = &result.frame.image;
  call.values = job.values;
  call.progress = 1;
  RunChecked(entry, call, job.files[0], environment);
  result.frame.header = JoinHeaders(headers);
  AddHistory(job, transforms, result.frame.header);
}

}  // namespace orb::host
