#include <hosts/io/host_error.h>
#include <hosts/io/plain_image_internal.h>

namespace orb::host {

namespace {

bool IsLevelCard(std::string const& card) { return card.starts_with("CBLACK") || card.starts_with("CWHITE"); }

int CountCards(FitsHeader const& header) {
  int count = 0;
  for (std::string const& card : header.cards) {
    bool const isBlank = card.find_first_not_of(' ') == std::string::npos;
    if (!isBlank && !IsLevelCard(card)) ++count;
  }
  return count;
}

// Readers of a format without levels see black at 0 and white at the greatest number.
bool HasOtherLevels(COrbImage const& image, SampleType type) {
  for (int p = 0; p < image.GetPlanes(); ++p) {
    if (image.GetLevelMin(p) != 0.0 || image.GetLevelMax(p) != HighestOf(type)) return true;
  }
  return false;
}

}  // namespace

EncodedRows::EncodedRows(COrbImage const& initImage, SampleType initType, WriteSettings const& settings)
    : image(initImage),
      type(initType),
      row(static_cast<std::size_t>(image.GetWidth()) * static_cast<std::size_t>(image.GetPlanes() * BytesOf(type))) {
  for (int p = 0; p < Planes(); ++p) mappings.push_back(MappingOf(settings, type, image, p));
}

void EncodedRows::Encode(int y, int plane, int offset, int stride) {
  losses += EncodeSamples(image.GetImageAdr(0, y, plane, 1, nullptr), Width(),
                          mappings[static_cast<std::size_t>(plane)], type, row.data() + offset * BytesOf(type), stride);
}

unsigned char* EncodedRows::PlaneRow(int y, int plane) {
  Encode(y, plane, 0, 1);
  return row.data();
}

unsigned char* EncodedRows::PixelRow(int y) {
  for (int p = 0; p < Planes(); ++p) Encode(y, p, p, Planes());
  return row.data();
}

WriteReport WritePlainImage(std::string const& path, COrbImage const& image, FitsHeader const& header,
                            WriteSettings const& settings, Existing existing) {
  FileFormat const format = FormatOf(path);
  SampleType const type = ChooseType(format, settings, image.GetOrgBitsPixel(), path);
  AtomicFile output(path, existing);
  EncodedRows rows(image, type, settings);
  bool const isPacked = format == FileFormat::kPng || settings.compression != Compression::kNone;
  if (!isPacked) output.RequireSpace(static_cast<std::int64_t>(image.GetPixelCount()) * BytesOf(type));
  if (format == FileFormat::kTiff) WriteTiffRows(output, rows, header, settings);
  if (format == FileFormat::kPng) WritePngRows(output, rows);
  if (format == FileFormat::kBmp) WriteBmpRows(output, rows);
  output.Commit();
  WriteReport report;
  report.type = type;
  report.samples = rows.Losses();
  if (format == FileFormat::kTiff) return report;
  report.cards = CountCards(header);
  report.levels = !settings.mapsLevels && HasOtherLevels(image, type);
  return report;
}

}  // namespace orb::host
