// How many pages are worked on side by side.
#ifndef TOOLS_CLI_JOBS_H_
#define TOOLS_CLI_JOBS_H_

#include <algorithm>
#include <thread>

namespace sorrelin::tool {

inline constexpr int kMaxJobs = 64;

// Processors, but not more than pictures of a usual size leave memory for.
inline int UsualJobs() {
  constexpr int kUsualMostJobs = 4;
  return std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, kUsualMostJobs);
}

}  // namespace sorrelin::tool

#endif  // TOOLS_CLI_JOBS_H_
