// The verbs of the command line, one source file each.
#ifndef TOOLS_VERBS_VERBS_H_
#define TOOLS_VERBS_VERBS_H_

#include "tools/cli/command_line.h"

namespace sorrelin::tool {

void AddAppend(Program& program);
void AddBatch(Program& program);
void AddCount(Program& program);
void AddExtract(Program& program);
void AddInfo(Program& program);
void AddMake(Program& program);
void AddOcrVerb(Program& program);
void AddScan(Program& program);
void AddWords(Program& program);

}  // namespace sorrelin::tool

#endif  // TOOLS_VERBS_VERBS_H_
