// Tesseract has been built with the folder of the system's packages, and mostly with OpenMP.
#include <siblings/averna/engine_system.h>

// OpenMP's, from the runtime that Tesseract itself links, whichever this compiler has; null where
// it links none.
extern "C" {
[[gnu::weak]] int omp_get_max_active_levels();
[[gnu::weak]] void omp_set_max_active_levels(int levels);
}

namespace sorrelin::averna {

std::string DataFolder() { return {}; }

int ParallelLevels() {
  return omp_get_max_active_levels != nullptr ? omp_get_max_active_levels() : 0;
}

void SetParallelLevels(int levels) {
  if (omp_set_max_active_levels != nullptr) omp_set_max_active_levels(levels);
}

}  // namespace sorrelin::averna
