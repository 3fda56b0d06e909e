// One run over a list of documents.
#ifndef TOOLS_BATCH_BATCH_RUN_H_
#define TOOLS_BATCH_BATCH_RUN_H_

#include <string>

#include "tools/batch/list_file.h"

namespace sorrelin::tool {

struct BatchOptions {
  std::string list;
  std::string results;  // the name of the file
  Shard shard;
  int jobs = 1;        // documents at a time
  bool force = false;  // make every document, whatever is there
  bool quiet = false;
};

// Makes the documents that are not done, each in a process of its own, names on standard error what
// fails, and returns the exit code.
int RunBatch(BatchOptions const& options);

}  // namespace sorrelin::tool

#endif  // TOOLS_BATCH_BATCH_RUN_H_
