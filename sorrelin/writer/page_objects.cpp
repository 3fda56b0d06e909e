// The objects of one page.
#include <sorrelin/channel/file_channel.h>
#include <sorrelin/document/document_facts.h>
#include <sorrelin/document/object_table.h>
#include <sorrelin/document/page_list.h>
#include <sorrelin/platform/file.h>
#include <sorrelin/platform/units.h>
#include <sorrelin/writer/coded_image.h>
#include <sorrelin/writer/cross_reference.h>
#include <sorrelin/writer/draft.h>
#include <sorrelin/writer/image_object.h>
#include <sorrelin/writer/page_objects.h>
#include <sorrelin/writer/skeleton.h>
#include <sorrelin/writer/update_facts.h>

#include <cmath>
#include <cstdio>
#include <optional>

namespace sorrelin {

namespace {

constexpr _CCITT_ENCODE_TYPE kGroup4{-1};
constexpr int kImageResource = 2;
constexpr DWORD kPageObjects = 6;
constexpr DWORD kPaletteObjects = 2;
constexpr DWORD kProfileObjects = 2;
constexpr int64_t kUnits = PagePlacement::kUnitsPerPoint;

int ProcSetKind(EncodedPage const& page) {
  constexpr int kGreys = 0, kColours = 1, kIndices = 2;
  if (page.form == nullptr) {
    if (page.bits_per_pixel == 1) return kGreys;
    return page.bits_per_pixel == 8 ? kIndices : kColours;
  }
  if (!page.form->palette.empty()) return kIndices;
  return page.form->colours == ImageColours::kGrey ? kGreys : kColours;
}

DWORD ObjectsOf(EncodedPage const& page) {
  bool const new_profile = page.profile != nullptr && page.profile->object == 0;
  if (page.form != nullptr) return kPageObjects + (new_profile ? kProfileObjects : 0);
  return page.bits_per_pixel == 8 ? kPageObjects + kPaletteObjects : kPageObjects;
}

// Whole points, modulo 2^32; 0 where the quotient has no finite value.
LONG Points(LONG pixels, DWORD dpi) {
  double const points = pixels * kPointsPerInch / dpi + 0.5;
  return std::isfinite(points) ? static_cast<LONG>(static_cast<int64_t>(points)) : 0;
}

PagePlacement PlacementOf(EncodedPage const& page) {
  if (page.placement) return *page.placement;
  POINT const size = PageSize(page.width, page.height, static_cast<DWORD>(page.dpi.x),
                              static_cast<DWORD>(page.dpi.y));
  return {size, 0, 0, size.x * kUnits, size.y * kUnits, 1};
}

// Four decimals, whatever the locale.
struct Decimal {
  explicit Decimal(int64_t units) {
    int64_t const size = units < 0 ? -units : units;
    std::snprintf(text, sizeof text, "%s%lld.%04lld", units < 0 ? "-" : "",
                  static_cast<long long>(size / kUnits), static_cast<long long>(size % kUnits));
  }
  char text[32];
};

// The name of an image in its page's resources.
struct ImageName {
  explicit ImageName(DWORD image) {
    std::snprintf(text, sizeof text, "Im%d", static_cast<int>(image));
  }
  char text[16];
};

// A page that no longer fits is refused before its first byte, so that the document can always be
// finished.
bool HasRoom(Output const& output, EncodedPage const& page) {
  return output.current_object < ObjectTable::kRows - ObjectsOf(page) - kFinishingRows;
}

// Kept: the record of a negative size stays unfilled; its code counts until a step sets another.
_FILTER FilterOf(ObjectWriter& out, EncodedPage const& page) {
  _FILTER filter{page.compression, {}};
  if (page.bits_per_pixel == 1) {
    Status const filled =
        FillCcittParams(filter.CcittParams, {0, kGroup4, 0, 0, page.width, page.height, 1, 0, 0});
    if (filled.code()) out.Note(*filled.code());
  }
  return filter;
}

DWORD WriteImageOf(ObjectWriter& out, EncodedPage const& page, _FILTER const& filter) {
  if (page.form != nullptr) return WriteCodedImage(out, page);
  _IMAGE_PARAMETERS const params{page.width, page.height, page.bits_per_pixel,
                                 page.decode_normal ? 1 : 0, 0};
  ImageObject image{params, filter, page.data, page.size};
  if (page.bits_per_pixel == 8) image.palette = page.palette;
  return WriteImage(out, image).value();
}

// Takes the unit square, in which the picture is as coded, to its place on the page.
void WriteMatrix(ObjectWriter& out, PagePlacement const& at) {
  struct Turn {
    bool swaps;       // rows become columns
    bool from_right;  // what goes across goes to the left
    bool from_above;  // what goes up goes down
  };
  constexpr Turn kTurns[] = {{false, false, false}, {false, true, false}, {false, true, true},
                             {false, false, true},  {true, true, true},   {true, false, true},
                             {true, false, false},  {true, true, false}};
  Turn const turn = kTurns[at.orientation - 1];
  Decimal const across(turn.from_right ? -at.width : at.width);
  Decimal const up(turn.from_above ? -at.height : at.height);
  Decimal const x(turn.from_right ? at.x + at.width : at.x);
  Decimal const y(turn.from_above ? at.y + at.height : at.y);
  if (turn.swaps) {
    out.Format("0.0000 %s %s  0.0000 %s %s cm", up.text, across.text, x.text, y.text);
  } else {
    out.Format("%s 0.0000 0.0000  %s %s %s cm", across.text, up.text, x.text, y.text);
  }
}

// Kept: the contents are written to their end whatever fails in them.
void WriteContents(ObjectWriter& out, char const* image, PagePlacement const& at) {
  if (out.BeginStream() == 0) return;
  out.Line("1.0000 0.0000 0.0000 1.0000 0.0000 0.0000 cm");
  out.GoOn();
  WriteMatrix(out, at);
  out.GoOn();
  out.Format("/%s Do", image);
  out.GoOn();
  out.EndStream();
  out.WriteStreamLength();
}

void NoteUpdatedPage(Update& update, DWORD page) {
  if (update.active == 0) return;
  if (update.page_count < PageList::kSlots) update.pages.Change(update.page_count) = page;
  ++update.page_count;
}

}  // namespace

POINT PageSize(LONG width, LONG height, DWORD dpi_x, DWORD dpi_y) {
  return {Points(width, dpi_x), Points(height, dpi_y)};
}

Status BeginPage(Draft const& draft) {
  if (draft.update.active == 0 || draft.update.first_page == 0) return Status::Ok();
  LONG high = 0;
  DWORD const end = ChannelSeek(draft.output.channel, 0, &high, FILE_END);
  // Offsets have 32 bits: an end that needs more would lead back into the old bytes.
  draft.output.offset = high == 0 ? end : INVALID_SET_FILE_POINTER;
  if (draft.output.offset == INVALID_SET_FILE_POINTER) return Status::Failed(PDF_ERROR_SYSTEM);
  draft.Writer().Line("\n");
  return Status::Ok();
}

Status WritePageObjects(Draft const& draft, EncodedPage const& page) {
  ObjectWriter out = draft.Writer();
  _FILTER const filter = FilterOf(out, page);
  if (!HasRoom(draft.output, page)) out.Fail(Status::Failed(PDF_ERROR_NEW_PAGE_OBJECT));
  DWORD const proc_set = WriteProcSet(out, ProcSetKind(page), false).value();
  DWORD const image = WriteImageOf(out, page, filter);
  PagePlacement const placement = PlacementOf(page);
  // Kept: a picture of less than half a point gets no page, and that is no failure.
  if (placement.page.x == 0 || placement.page.y == 0 || !out.ok()) return out.Outcome();
  ImageName const name(image);
  PageObject const object{draft.facts.pages_root, kImageResource, image, proc_set, name.text,
                          placement.page};
  DWORD const written = WritePage(out, draft.pages, object).value();
  if (!out.ok()) return out.Outcome();
  NoteUpdatedPage(draft.update, written);
  WriteContents(out, name.text, placement);
  return out.Outcome();
}

}  // namespace sorrelin
