// The changes that a picture goes through on its way from its file to its page.
#ifndef TOOLS_FORMATS_PICTURE_CHANGES_H_
#define TOOLS_FORMATS_PICTURE_CHANGES_H_

#include <bitset>
#include <cstddef>

namespace sorrelin::tool {

enum class Change : size_t {
  kTransparency,       // laid on white
  kDepth,              // fewer bits for each sample
  kExtraSamples,       // samples that are neither colours nor opacity are left out
  kColours,            // other colours than the file's, which PDF or the form asked for cannot hold
  kProfile,            // a colour profile is left out
  kRecodedJpeg,        // JPEG data decoded and coded by JPEG once more
  kTurned,             // turned or mirrored, as the file or the command line asks
  kUnitDensity,        // a resolution of 1 x 1 counts as none
  kAssumedResolution,  // the file states none
  kFirstPicture,       // of an animation, or of several views of one subject
  kStraightened,       // turned by a few degrees
  kCleaned,            // specks removed
  kCount
};

// What the report calls a change.
char const* NameOf(Change change);

class Changes {
 public:
  void Add(Change change) { set_.set(static_cast<size_t>(change)); }
  void Add(Changes const& other) { set_ |= other.set_; }
  bool Has(Change change) const { return set_.test(static_cast<size_t>(change)); }
  bool empty() const { return set_.none(); }
  bool operator==(Changes const&) const = default;

 private:
  std::bitset<static_cast<size_t>(Change::kCount)> set_;
};

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_PICTURE_CHANGES_H_
