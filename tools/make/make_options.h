// Options of `make`, for its command line and for lists of documents.
#ifndef TOOLS_MAKE_MAKE_OPTIONS_H_
#define TOOLS_MAKE_MAKE_OPTIONS_H_

#include <optional>

#include "tools/cli/command_line.h"
#include "tools/make/make_document.h"

namespace sorrelin::tool {

// Adds the title, the author, the subject and the keywords.
void AddDescription(Verb& verb, Description& description);

// The date of documents by SOURCE_DATE_EPOCH, which builds set that are to come out the same each
// time. nullopt if it is not set. Throws UsageError if it is no date.
std::optional<SYSTEMTIME> CreationTime();

// Adds the document, its pictures and every option.
void AddMakeOptions(Verb& verb, MakeOptions& options);

// Finds the pictures and the date of the document. Throws UsageError if the arguments conflict.
void PrepareMake(MakeOptions& options);

}  // namespace sorrelin::tool

#endif  // TOOLS_MAKE_MAKE_OPTIONS_H_
