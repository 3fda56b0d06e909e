// The form of a document, read without its pages, which may be many.
#include "tools/documents/document_form.h"

#include <algorithm>
#include <array>
#include <functional>
#include <new>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFExc.hh>
#include <qpdf/QPDFLogger.hh>
#include <qpdf/QPDFWriter.hh>
#include <vector>

#include "tools/cli/messages.h"
#include "tools/documents/qpdf_document.h"
#include "tools/documents/stream_reader.h"

namespace sorrelin::tool {
namespace {

// Of a catalog, those that the library writes itself if they are references.
constexpr std::array<char const*, 2> kOwnReferences = {"/Pages", "/Outlines"};
// What a page takes from the root of the page tree where it has no such key, and added pages have
// none.
constexpr std::array<char const*, 2> kInherited = {"/CropBox", "/Rotate"};
constexpr char kLastVersion[] = "1.7";
constexpr char kOptionsHint[] = " (leave --no-rewrite and --in-place out)";

bool IsWrittenByLibrary(std::string const& key, QPDFObjectHandle value) {
  bool const is_reference_key =
      std::find(kOwnReferences.begin(), kOwnReferences.end(), key) != kOwnReferences.end();
  return key == "/Type" || (is_reference_key && value.isIndirect());
}

void Open(QPDF& qpdf, std::string const& name) {
  qpdf.setLogger(SilentLogger());
  qpdf.setSuppressWarnings(true);
  qpdf.processFile(name.c_str());
}

bool HasStreamTable(QPDF& qpdf) {
  if (qpdf.getTrailer().getKey("/Type").isNameAndEquals("/XRef")) return true;
  if (qpdf.getTrailer().hasKey("/XRefStm")) return true;
  auto const table = qpdf.getXRefTable();
  return std::any_of(table.begin(), table.end(),
                     [](auto const& row) { return row.second.getType() == 2; });
}

// A field without a type has that of its parent.
bool HoldsSignature(QPDFObjectHandle field, QPDFObjectHandle type, int depth) {
  constexpr int kMaxDepth = 16;
  if (!field.isDictionary() || depth > kMaxDepth) return false;
  if (field.hasKey("/FT")) type = field.getKey("/FT");
  if (type.isNameAndEquals("/Sig") && field.hasKey("/V")) return true;
  QPDFObjectHandle kids = field.getKey("/Kids");
  for (int i = 0; kids.isArray() && i < kids.getArrayNItems(); ++i) {
    if (HoldsSignature(kids.getArrayItem(i), type, depth + 1)) return true;
  }
  return false;
}

bool HasSignatures(QPDF& qpdf) {
  QPDFObjectHandle root = qpdf.getRoot();
  if (root.hasKey("/Perms")) return true;
  QPDFObjectHandle fields = root.getKey("/AcroForm").getKeyIfDict("/Fields");
  for (int i = 0; fields.isArray() && i < fields.getArrayNItems(); ++i) {
    if (HoldsSignature(fields.getArrayItem(i), QPDFObjectHandle::newNull(), 0)) return true;
  }
  return false;
}

// The keys of the catalog that are lost when the library writes a new one.
QPDFObjectHandle OtherKeys(QPDF& qpdf) {
  QPDFObjectHandle keys = QPDFObjectHandle::newDictionary();
  for (auto& [key, value] : qpdf.getRoot().getDictAsMap()) {
    if (!IsWrittenByLibrary(key, value)) keys.replaceKey(key, value);
  }
  return keys;
}

bool HasInheritedKeys(QPDF& qpdf) {
  QPDFObjectHandle pages = qpdf.getRoot().getKey("/Pages");
  return pages.isDictionary() && std::any_of(kInherited.begin(), kInherited.end(),
                                             [&](char const* key) { return pages.hasKey(key); });
}

std::string ObstacleOf(QPDF& qpdf, bool repaired) {
  std::string const hint = kRewriteHint;
  if (repaired) return "is damaged, and takes no pages" + hint;
  if (HasStreamTable(qpdf)) return "keeps objects in object streams, and takes no pages" + hint;
  if (qpdf.getPDFVersion() >= "2.0")
    return "is of PDF " + qpdf.getPDFVersion() + ", and takes no pages" + hint;
  if (!OtherKeys(qpdf).getKeys().empty())
    return std::string("has what an added page would take from its catalog") + kOptionsHint;
  if (HasInheritedKeys(qpdf))
    return std::string("has a page tree that would turn or crop added pages") + kOptionsHint;
  return "";
}

// libqpdf mends tables in silence; without its help, those that are wrong are seen.
bool NeedsRepair(std::string const& name) {
  QPDF qpdf;
  qpdf.setAttemptRecovery(false);
  std::string ignored;
  return !CatchDamage([&] { Open(qpdf, name); }, ignored);
}

// Hangs all pages on the root of the tree, where the library looks for them, and leaves nothing
// there that further pages would inherit.
void FlattenPages(QPDF& qpdf) {
  qpdf.updateAllPagesCache();
  qpdf.pushInheritedAttributesToPage();
  std::vector<QPDFObjectHandle> const pages = qpdf.getAllPages();
  QPDFObjectHandle root = qpdf.getRoot().getKey("/Pages");
  for (QPDFObjectHandle page : pages) page.replaceKey("/Parent", root);
  root.replaceKey("/Kids", QPDFObjectHandle::newArray(pages));
  root.replaceKey("/Count", QPDFObjectHandle::newInteger(static_cast<long long>(pages.size())));
}

void Write(QPDF& qpdf, std::string const& to) {
  QPDFWriter writer(qpdf, to.c_str());
  writer.setObjectStreamMode(qpdf_o_disable);
  writer.setStreamDataMode(qpdf_s_preserve);
  writer.setPreserveUnreferencedObjects(false);
  if (qpdf.getPDFVersion() >= "2.0") writer.forcePDFVersion(kLastVersion);
  writer.write();
}

// Does `work`, which rewrites a document; false with the reason in `problem` if libqpdf fails.
bool Try(std::function<void()> const& work, std::string& problem) {
  if (CatchDamage(work, problem)) return true;
  problem = std::string("cannot be rewritten: it is damaged beyond repair") + kMendRemedy;
  return false;
}

}  // namespace

std::optional<DocumentForm> ReadForm(std::string const& name, std::string& problem) {
  DocumentForm form;
  try {
    QPDF qpdf;
    Open(qpdf, name);
    form.encrypted = qpdf.isEncrypted();
    form.has_signatures = HasSignatures(qpdf);
    form.obstacle = ObstacleOf(qpdf, NeedsRepair(name));
    form.catalog_keys = OtherKeys(qpdf).unparse();
    return form;
  } catch (QPDFExc const& error) {
    form.encrypted = error.getErrorCode() == qpdf_e_password;
  } catch (std::bad_alloc const&) {
    throw;
  } catch (std::exception const&) {
  }
  problem = std::string("cannot be opened: it is damaged beyond repair") + kMendRemedy;
  return form.encrypted ? std::optional(form) : std::nullopt;
}

bool RewriteDocument(std::string const& from, std::string const& to, std::string& problem) {
  return Try(
      [&] {
        QPDF qpdf;
        Open(qpdf, from);
        FlattenPages(qpdf);
        Write(qpdf, to);
      },
      problem);
}

bool RestoreCatalog(std::string const& from, std::string const& catalog_keys, std::string const& to,
                    std::string& problem) {
  return Try(
      [&] {
        QPDF qpdf;
        Open(qpdf, from);
        QPDFObjectHandle root = qpdf.getRoot();
        QPDFObjectHandle keys = QPDFObjectHandle::parse(&qpdf, catalog_keys);
        for (auto& [key, value] : keys.getDictAsMap()) {
          if (!root.hasKey(key)) root.replaceKey(key, value);
        }
        Write(qpdf, to);
      },
      problem);
}

bool IsSound(std::string const& name, unsigned pages) {
  QPDF qpdf;
  qpdf.setAttemptRecovery(false);
  size_t found = 0;
  std::string ignored;
  bool const read = CatchDamage(
      [&] {
        Open(qpdf, name);
        found = qpdf.getAllPages().size();
      },
      ignored);
  return read && found == pages;
}

}  // namespace sorrelin::tool
