// A libsane whose only scanner has a feeder with the sheets that SHEETS names, as in "text blank":
//
//   text    a sheet with ink        short   ends before the lines that it has announced
//   blank   a sheet without         jam     stops in the middle
//   silent  sends half a sheet, and then answers without data for ever
//   stuck   sends half a sheet, and then never answers
//   held    a sheet after which the scanner is never closed
//
// SHEETS_DEPTH is 1 for bilevel sheets and 8 for grey ones, which are SHEETS_LINES long.
#include <sane/sane.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr int kWidth = 640;

SANE_Device const device = {"sheets", "Noname", "sheets", "feeder"};
SANE_Device const* devices[] = {&device, nullptr};
char const* const sources[] = {"Feeder", nullptr};
SANE_Option_Descriptor source = {"source",
                                 "Source",
                                 "",
                                 SANE_TYPE_STRING,
                                 SANE_UNIT_NONE,
                                 16,
                                 SANE_CAP_SOFT_SELECT | SANE_CAP_SOFT_DETECT,
                                 SANE_CONSTRAINT_STRING_LIST,
                                 {}};

std::vector<std::string> sheets;
size_t sheet = 0;  // counted from 1
int line = 0;

int NumberOf(char const* name, int usual) {
  char const* const text = std::getenv(name);
  return text != nullptr ? std::atoi(text) : usual;
}
int Depth() { return NumberOf("SHEETS_DEPTH", 8); }
int Lines() { return NumberOf("SHEETS_LINES", 400); }
int LineBytes() { return kWidth * Depth() / 8; }
std::string const& Kind() { return sheets[sheet - 1]; }

// Bars of ink, 40 lines high, each at a place of its own.
unsigned char ByteAt(int x) {
  unsigned char const white = Depth() == 1 ? 0 : 255;
  bool const is_ink = Kind() != "blank" && line / 40 % 2 == 1 && x > line / 40 % 16;
  return is_ink ? static_cast<unsigned char>(255 - white) : white;
}

SANE_Status AtMiddle() {
  if (Kind() == "jam") return SANE_STATUS_JAMMED;
  if (Kind() == "short") return SANE_STATUS_EOF;
  while (Kind() == "stuck") pause();
  return SANE_STATUS_GOOD;
}

}  // namespace

extern "C" {

SANE_Status sane_init(SANE_Int*, SANE_Auth_Callback) {
  char const* const text = std::getenv("SHEETS");
  std::istringstream words(text != nullptr ? text : "");
  sheets.assign(std::istream_iterator<std::string>(words), {});
  return SANE_STATUS_GOOD;
}
SANE_Status sane_get_devices(SANE_Device const*** list, SANE_Bool) {
  *list = devices;
  return SANE_STATUS_GOOD;
}
SANE_Status sane_open(SANE_String_Const, SANE_Handle* handle) {
  *handle = &sheet;
  return SANE_STATUS_GOOD;
}
void sane_close(SANE_Handle) {
  while (sheet > 0 && Kind() == "held") pause();
}
SANE_Option_Descriptor const* sane_get_option_descriptor(SANE_Handle, SANE_Int index) {
  source.constraint.string_list = sources;
  return index == 1 ? &source : nullptr;
}
SANE_Status sane_control_option(SANE_Handle, SANE_Int, SANE_Action action, void* value, SANE_Int*) {
  if (action == SANE_ACTION_GET_VALUE) std::strcpy(static_cast<char*>(value), sources[0]);
  return SANE_STATUS_GOOD;
}
SANE_Status sane_get_parameters(SANE_Handle, SANE_Parameters* shape) {
  *shape = {SANE_FRAME_GRAY, SANE_TRUE, LineBytes(), kWidth, Lines(), Depth()};
  return SANE_STATUS_GOOD;
}
SANE_Status sane_start(SANE_Handle) {
  if (sheet == sheets.size()) return SANE_STATUS_NO_DOCS;
  ++sheet;
  line = 0;
  return SANE_STATUS_GOOD;
}
SANE_Status sane_read(SANE_Handle, SANE_Byte* data, SANE_Int room, SANE_Int* count) {
  *count = 0;
  if (line == Lines()) return SANE_STATUS_EOF;
  if (line == Lines() / 2) {
    SANE_Status const status = AtMiddle();
    if (status != SANE_STATUS_GOOD || Kind() == "silent") return status;
  }
  *count = std::min(room, LineBytes());
  for (int x = 0; x < *count; ++x) data[x] = ByteAt(x);
  ++line;
  return SANE_STATUS_GOOD;
}
void sane_cancel(SANE_Handle) {}
SANE_String_Const sane_strstatus(SANE_Status status) {
  return status == SANE_STATUS_JAMMED ? "Document feeder jammed" : "Error";
}

}  // extern "C"
