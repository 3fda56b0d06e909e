// Trained data are in the folder tessdata beside the library or the program, unless TESSDATA_PREFIX
// names another. Tesseract itself knows the program's alone, and would go on to the current
// directory. It is built without OpenMP there.
#include <siblings/averna/engine_system.h>
#include <windows.h>

#include <filesystem>

namespace sorrelin::averna {
namespace {

constexpr DWORD kPathUnits = 1 << 15;  // the longest path
constexpr char kVariable[] = "TESSDATA_PREFIX";
constexpr wchar_t kFolder[] = L"tessdata";

std::filesystem::path FolderBeside(HMODULE module) {
  std::wstring path(kPathUnits, L'\0');
  path.resize(GetModuleFileNameW(module, path.data(), kPathUnits));
  return std::filesystem::path(path).parent_path() / kFolder;
}

HMODULE ThisLibrary() {
  HMODULE library = nullptr;
  GetModuleHandleExW(
      GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
      reinterpret_cast<wchar_t const*>(&DataFolder), &library);
  return library;
}

// Tesseract opens files by names in the process's code page. Where that lacks a letter of the path,
// its short form does without.
std::string NarrowName(std::wstring const& path) {
  std::wstring name(kPathUnits, L'\0');
  name.resize(GetShortPathNameW(path.c_str(), name.data(), kPathUnits));
  std::wstring const& wide = GetACP() == CP_UTF8 || name.empty() ? path : name;
  int const units = static_cast<int>(wide.size());
  int const bytes =
      WideCharToMultiByte(CP_ACP, 0, wide.data(), units, nullptr, 0, nullptr, nullptr);
  std::string narrow(static_cast<size_t>(bytes), '\0');
  WideCharToMultiByte(CP_ACP, 0, wide.data(), units, narrow.data(), bytes, nullptr, nullptr);
  return narrow;
}

}  // namespace

std::string DataFolder() {
  if (GetEnvironmentVariableA(kVariable, nullptr, 0) != 0) return {};
  std::filesystem::path const own = FolderBeside(ThisLibrary());
  std::filesystem::path const of_program = FolderBeside(nullptr);
  bool const has_own = GetFileAttributesW(own.c_str()) != INVALID_FILE_ATTRIBUTES;
  bool const has_program = GetFileAttributesW(of_program.c_str()) != INVALID_FILE_ATTRIBUTES;
  return NarrowName((has_program && !has_own ? of_program : own).wstring());
}

int ParallelLevels() { return 0; }

void SetParallelLevels(int) {}

}  // namespace sorrelin::averna
