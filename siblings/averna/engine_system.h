// What differs from system to system in a build of Tesseract.
#ifndef SIBLINGS_AVERNA_ENGINE_SYSTEM_H_
#define SIBLINGS_AVERNA_ENGINE_SYSTEM_H_

#include <string>

namespace sorrelin::averna {

// The folder of the trained data, in the encoding in which Tesseract opens files; empty to leave
// the choice to Tesseract.
std::string DataFolder();

// How deeply parallel regions of this thread may be nested; 0 where Tesseract has no threads.
int ParallelLevels();
void SetParallelLevels(int levels);

}  // namespace sorrelin::averna

#endif  // SIBLINGS_AVERNA_ENGINE_SYSTEM_H_
