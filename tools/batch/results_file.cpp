// Reads and adds results. A line is one write at the end of the file; one that a kill has cut is
// removed by the next run.
#include "tools/batch/results_file.h"

#include <sorrelin/platform/error.h>

#include <charconv>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <qpdf/JSON.hh>
#include <stdexcept>
#include <thread>

#include "tools/cli/json.h"
#include "tools/cli/messages.h"
#include "tools/cli/text.h"

namespace sorrelin::tool {
namespace {

using namespace std::chrono_literals;

// Children of a run that was killed hold the file until they have tidied up.
constexpr auto kLongestWait = 5s;
constexpr auto kBetweenTries = 50ms;

constexpr std::string_view kLineStart = "{\"line\": ";

HANDLE OpenForOne(std::string const& name) {
  auto const end = std::chrono::steady_clock::now() + kLongestWait;
  auto const path = WideName(PathOf(name));
  for (;;) {
    HANDLE const file = CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ,
                                    nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file != INVALID_HANDLE_VALUE || GetLastError() != ERROR_SHARING_VIOLATION) return file;
    if (std::chrono::steady_clock::now() >= end) return file;
    std::this_thread::sleep_for(kBetweenTries);
    SetLastError(ERROR_SHARING_VIOLATION);
  }
}

std::string ProblemOfOpen() {
  if (GetLastError() == ERROR_SHARING_VIOLATION) {
    return "is held by another worker (wait until that has ended, or name another file)";
  }
  return "cannot be written: " + LastSystemError() + kRoomRemedy;
}

std::string LineOf(Result const& result) {
  std::string problems;
  for (std::string const& problem : result.problems) {
    problems += (problems.empty() ? "" : ", ") + JsonString(problem);
  }
  return std::string(kLineStart) + std::to_string(result.line) +
         ", \"output\": " + (result.output.empty() ? "null" : JsonString(result.output)) +
         ", \"state\": " + JsonString(result.state) +
         ", \"pages\": " + std::to_string(result.pages) +
         ", \"bytes\": " + std::to_string(result.bytes) +
         ", \"seconds\": " + JsonNumber(result.seconds) +
         ", \"signature\": " + JsonString(result.signature) + ", \"problems\": [" + problems +
         "]}\n";
}

struct Recorded {
  std::string output;
  std::string state;
  WrittenBefore written;
};

// Throws std::runtime_error if the line is no JSON.
Recorded RecordedIn(std::string const& line) {
  Recorded result;
  std::string bytes;
  JSON::parse(line).forEachDictItem([&](std::string const& key, JSON value) {
    if (key == "output") value.getString(result.output);
    if (key == "state") value.getString(result.state);
    if (key == "bytes") value.getNumber(bytes);
    if (key == "signature") value.getString(result.written.signature);
  });
  std::from_chars(bytes.data(), bytes.data() + bytes.size(), result.written.bytes);
  result.written.whole = result.state == kMade;
  return result;
}

// Moves the file's position there, and cuts off what is after it. False with the system's error.
bool EndAt(HANDLE file, uint64_t place) {
  LONG high = static_cast<LONG>(place >> 32);
  SetLastError(ERROR_SUCCESS);
  DWORD const low = SetFilePointer(file, static_cast<LONG>(place), &high, FILE_BEGIN);
  if (low == INVALID_SET_FILE_POINTER && GetLastError() != ERROR_SUCCESS) return false;
  DWORD size_high = 0;
  uint64_t const size = GetFileSize(file, &size_high);
  return (uint64_t{size_high} << 32 | size) == place || SetEndOfFile(file) != FALSE;
}

}  // namespace

std::unique_ptr<ResultsFile> ResultsFile::Open(std::string const& name, std::string& problem) {
  HANDLE const file = OpenForOne(name);
  if (file == INVALID_HANDLE_VALUE) return problem = ProblemOfOpen(), nullptr;
  std::unique_ptr<ResultsFile> results(new ResultsFile(file));
  return results->Read(name, problem) ? std::move(results) : nullptr;
}

ResultsFile::~ResultsFile() { CloseHandle(file_); }

// Leaves a file alone that holds anything but results. The position is at the end then.
bool ResultsFile::Read(std::string const& name, std::string& problem) {
  std::ifstream file(name, std::ios::binary);
  uint64_t whole_bytes = 0;
  std::string line;
  while (std::getline(file, line)) {
    bool const whole = !file.eof();
    std::string_view const start = std::string_view(line).substr(0, kLineStart.size());
    if (!kLineStart.starts_with(start) || (whole && !TakeLine(line))) {
      return problem = "holds other things than results (name another file)", false;
    }
    if (whole) whole_bytes += line.size() + 1;
  }
  file.close();
  if (EndAt(file_, whole_bytes)) return true;
  return problem = "cannot be written: " + LastSystemError() + kRoomRemedy, false;
}

bool ResultsFile::TakeLine(std::string const& line) {
  try {
    Recorded const result = RecordedIn(line);
    if (result.state == kMade || result.state == kIncomplete) {
      written_[result.output] = result.written;
    } else if (auto const before = written_.find(result.output); before != written_.end()) {
      before->second.whole = false;
    }
    return !result.state.empty();
  } catch (std::runtime_error const&) {
    return false;
  }
}

std::optional<WrittenBefore> ResultsFile::Find(std::string const& output) const {
  auto const found = written_.find(output);
  if (found == written_.end()) return std::nullopt;
  return found->second;
}

bool ResultsFile::Add(Result const& result, std::string& problem) {
  std::string const line = LineOf(result);
  DWORD count = 0;
  if (WriteFile(file_, line.data(), static_cast<DWORD>(line.size()), &count, nullptr) != FALSE) {
    return true;
  }
  problem = "cannot be written: " + LastSystemError() + kRoomRemedy;
  return false;
}

}  // namespace sorrelin::tool
