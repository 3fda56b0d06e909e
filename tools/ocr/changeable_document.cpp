// Documents changed by libqpdf, with its messages dropped and its exceptions turned into problems.
#include "tools/ocr/changeable_document.h"

#include <exception>
#include <filesystem>
#include <new>
#include <qpdf/QPDFExc.hh>
#include <qpdf/QPDFLogger.hh>
#include <system_error>

#include "tools/cli/messages.h"
#include "tools/cli/text.h"

namespace sorrelin::tool {
namespace {

constexpr int kMaxFieldDepth = 32;
constexpr char kEncrypted[] = "is encrypted, and takes no text (qpdf --decrypt in.pdf out.pdf)";
constexpr char kSigned[] =
    "is signed, and a change would void the signature (recognise an unsigned copy)";

std::string ReadProblem(std::string const& name, std::exception const& error) {
  std::error_code code;
  auto const status = std::filesystem::status(PathOf(name), code);
  if (!std::filesystem::exists(status)) return "No such file or directory (check the name)";
  auto const* const damage = dynamic_cast<QPDFExc const*>(&error);
  if (damage != nullptr && damage->getErrorCode() == qpdf_e_password) return kEncrypted;
  return std::string("cannot be read as a document: it is damaged, or none") + kMendRemedy;
}

// Whether one of the fields, or of those below them, is a signature that has been given. The type
// of a field is inherited.
bool AreSigned(QPDFObjectHandle fields, bool are_signatures, int depth) {
  if (!fields.isArray() || depth == kMaxFieldDepth) return false;
  for (QPDFObjectHandle field : fields.getArrayAsVector()) {
    QPDFObjectHandle type = field.getKeyIfDict("/FT");
    bool const is_signature = type.isNull() ? are_signatures : type.isNameAndEquals("/Sig");
    if (is_signature && !field.getKeyIfDict("/V").isNull()) return true;
    if (AreSigned(field.getKeyIfDict("/Kids"), is_signature, depth + 1)) return true;
  }
  return false;
}

}  // namespace

std::unique_ptr<ChangeableDocument> ChangeableDocument::Open(std::string const& name,
                                                             std::string& problem) {
  std::unique_ptr<ChangeableDocument> document(new ChangeableDocument);
  QPDF& qpdf = document->qpdf_;
  try {
    qpdf.setLogger(SilentLogger());
    qpdf.setSuppressWarnings(true);
    qpdf.processFile(name.c_str());
    document->pages_ = qpdf.getAllPages();
    problem = qpdf.isEncrypted() ? kEncrypted : document->IsSigned() ? kSigned : "";
  } catch (std::bad_alloc const&) {
    throw;
  } catch (std::exception const& error) {
    problem = ReadProblem(name, error);
  }
  return problem.empty() ? std::move(document) : nullptr;
}

bool ChangeableDocument::IsSigned() {
  QPDFObjectHandle root = qpdf_.getRoot();
  if (!root.getKeyIfDict("/Perms").isNull()) return true;
  return AreSigned(root.getKeyIfDict("/AcroForm").getKeyIfDict("/Fields"), false, 0);
}

}  // namespace sorrelin::tool
