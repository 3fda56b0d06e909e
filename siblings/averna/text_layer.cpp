// The page of invisible text. The renderer writes to a file by its name only, so it gets one in a
// folder of its own, which is removed, where the system allows that, before a page is rendered.
#include <siblings/averna/averna.h>
#include <siblings/averna/text_layer.h>
#include <tesseract/renderer.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <system_error>

namespace sorrelin::averna {
namespace {

namespace fs = std::filesystem;

constexpr char kFont[] = "pdf.ttf";
constexpr char kFileBase[] = "page";
constexpr char kFile[] = "page.pdf";  // the base, as the renderer completes it
constexpr int kNameTries = 16;

// A new folder that only this user can enter, removed at the end with the file in it.
class Folder {
 public:
  Folder() {
    std::error_code error;
    fs::path const parent = fs::temp_directory_path(error);
    for (int i = 0; i < kNameTries && !error && path_.empty(); ++i) {
      fs::path const path = parent / Name();
      if (fs::create_directory(path, error)) path_ = path;
    }
    fs::permissions(path_, fs::perms::owner_all, error);
  }
  ~Folder() { Remove(); }
  Folder(Folder const&) = delete;
  Folder& operator=(Folder const&) = delete;

  bool IsMade() const { return !path_.empty(); }
  fs::path const& path() const { return path_; }

  void Remove() {
    std::error_code ignored;
    fs::remove(path_ / kFile, ignored);
    fs::remove(path_, ignored);
  }

 private:
  static std::string Name() {
    std::random_device random;
    char name[40];
    std::snprintf(name, sizeof name, ".averna-%08x%08x.tmp", random(), random());
    return name;
  }

  fs::path path_;
};

bool Render(tesseract::TessBaseAPI& api, tesseract::TessPDFRenderer& renderer) {
  return renderer.BeginDocument("") && renderer.AddImage(&api) && renderer.EndDocument();
}

}  // namespace

int RenderTextLayer(tesseract::TessBaseAPI& api, std::string& pdf) {
  fs::path const data = api.GetDatapath();
  std::error_code error;
  if (!fs::exists(data / kFont, error)) return AVERNA_NO_FONT;
  Folder folder;
  if (!folder.IsMade()) return AVERNA_FAILED;
  std::ifstream file;
  {
    constexpr bool kTextOnly = true;
    tesseract::TessPDFRenderer renderer((folder.path() / kFileBase).string().c_str(),
                                        data.string().c_str(), kTextOnly);
    file.open(folder.path() / kFile, std::ios::binary);
    folder.Remove();
    if (!file.is_open() || !Render(api, renderer)) return AVERNA_FAILED;
  }
  pdf.assign(std::istreambuf_iterator<char>(file), {});
  return pdf.empty() ? AVERNA_FAILED : AVERNA_OK;
}

}  // namespace sorrelin::averna
