// Names of changes, as messages and reports print them.
#include "tools/formats/picture/changes.h"

namespace sorrelin::tool {

char const* NameOf(Change change) {
  switch (change) {
    case Change::kTransparency:
      return "transparency laid on white";
    case Change::kDepth:
      return "samples reduced to 8 bits";
    case Change::kExtraSamples:
      return "samples beyond the colours left out";
    case Change::kColours:
      return "colours converted";
    case Change::kProfile:
      return "colour profile left out";
    case Change::kRecodedJpeg:
      return "JPEG data coded anew";
    case Change::kTurned:
      return "turned";
    case Change::kUnitDensity:
      return "resolution of 1 x 1 taken as none";
    case Change::kAssumedResolution:
      return "resolution assumed";
    case Change::kFirstPicture:
      return "only the first picture taken";
    case Change::kStraightened:
      return "straightened";
    case Change::kCleaned:
      return "specks removed";
    case Change::kCount:
      break;
  }
  return "";
}

}  // namespace sorrelin::tool
