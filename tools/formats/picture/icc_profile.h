// ICC colour profiles that picture files carry.
#ifndef TOOLS_FORMATS_PICTURE_ICC_PROFILE_H_
#define TOOLS_FORMATS_PICTURE_ICC_PROFILE_H_

#include <sorrelin/platform/types.h>

#include <memory>
#include <span>
#include <vector>

namespace sorrelin::tool {

// Shared by the pages of a file. Null where a picture has none.
using ProfileBytes = std::shared_ptr<std::vector<BYTE> const>;

// Components of the colours that a profile describes: 1 grey, 3 RGB, 4 CMYK. 0 if it is damaged, or
// of a kind that no image of a document can have.
int ProfileComponents(std::span<BYTE const> profile);

// The profile without what follows its stated end. Null unless it describes `components`
// components.
ProfileBytes UsableProfile(std::span<BYTE const> profile, int components);

}  // namespace sorrelin::tool

#endif  // TOOLS_FORMATS_PICTURE_ICC_PROFILE_H_
