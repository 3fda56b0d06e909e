// rastertosorrelin: the filter program that CUPS starts.
#include <sorrelin/platform/console.h>

#include <exception>
#include <new>

#include "tools/cli/command_line.h"
#include "tools/cli/interrupt.h"
#include "tools/printer/job_messages.h"
#include "tools/printer/raster_filter.h"

int main(int argc, char** argv) {
  namespace tool = sorrelin::tool;
  try {
    tool::TidyUpOnInterrupt();
    FailPastFileSizeLimit();
    FailOnClosedPipe();
    tool::FilterJob job;
    return tool::ReadFilterArguments(argc, argv, job) ? tool::RunRasterFilter(job)
                                                      : tool::kExitFailure;
  } catch (std::bad_alloc const&) {
    tool::SayToScheduler("ERROR", "There is not enough memory for the job");
  } catch (std::exception const& error) {
    tool::SayToScheduler("ERROR", error.what());
  }
  return tool::kExitFailure;
}
