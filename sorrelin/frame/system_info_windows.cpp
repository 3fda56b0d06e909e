// The description of the operating system.
#include <sorrelin/frame/system_info_windows.h>

#include <cwchar>
#include <iterator>

namespace sorrelin {
namespace {

constexpr WCHAR kKernel[] = L"kernel32.dll";
constexpr WCHAR kProductKey[] = L"SYSTEM\\CurrentControlSet\\Control\\ProductOptions";
constexpr WCHAR kHotfixKey[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Hotfix\\Q246009";

// A key of the local machine, open for reading.
class RegistryKey {
 public:
  explicit RegistryKey(WCHAR const* path) {
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, KEY_QUERY_VALUE, &key_) != ERROR_SUCCESS) {
      key_ = nullptr;
    }
  }
  ~RegistryKey() {
    if (key_ != nullptr) RegCloseKey(key_);
  }
  RegistryKey(RegistryKey const&) = delete;
  RegistryKey& operator=(RegistryKey const&) = delete;

  bool IsOpen() const { return key_ != nullptr; }
  // Whether a text value equals `text`, in any letter case.
  bool HasValue(WCHAR const* name, WCHAR const* text) const {
    WCHAR value[80] = {};
    DWORD bytes = sizeof value - sizeof(WCHAR);
    return key_ != nullptr &&
           RegQueryValueExW(key_, name, nullptr, nullptr, reinterpret_cast<BYTE*>(value), &bytes) ==
               ERROR_SUCCESS &&
           lstrcmpiW(value, text) == 0;
  }

 private:
  HKEY key_ = nullptr;
};

// An entry point that not every version of the system has.
template <typename Function>
Function KernelEntry(char const* name) {
  auto const address = GetProcAddress(GetModuleHandleW(kKernel), name);
  return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(address));
}

SystemInfo::ProductType WorkstationType() {
  if (GetSystemMetrics(SM_TABLETPC) != 0) return SystemInfo::kTabletPc;
  if (GetSystemMetrics(SM_MEDIACENTER) != 0) return SystemInfo::kMediaCenter;
  if (GetSystemMetrics(SM_STARTER) != 0) return SystemInfo::kStarter;
  return SystemInfo::kWorkstation;
}

SystemInfo::ProductType ServerType() {
  return GetSystemMetrics(SM_SERVERR2) != 0 ? SystemInfo::kServerR2 : SystemInfo::kServer;
}

}  // namespace

SystemInfo::SystemInfo() {
  bool const known = ReadVersion();
  ReadSystem();
  if (!known) return;
  DeriveProductType();
  DeriveVersionCode();
  DeriveServicePack();
}

SystemInfo::~SystemInfo() = default;

bool SystemInfo::ReadVersion() {
  auto* const record = reinterpret_cast<OSVERSIONINFOW*>(&m_Version);
  m_Version.dwOSVersionInfoSize = sizeof(OSVERSIONINFOEXW);
  m_bExtended = GetVersionExW(record);
  if (m_bExtended != 0) return true;
  m_Version.dwOSVersionInfoSize = sizeof(OSVERSIONINFOW);
  return GetVersionExW(record) != 0;
}

void SystemInfo::ReadSystem() {
  auto const read = KernelEntry<void(WINAPI*)(SYSTEM_INFO*)>("GetNativeSystemInfo");
  if (read != nullptr) {
    read(&m_System);
  } else {
    GetSystemInfo(&m_System);
  }
}

void SystemInfo::DeriveProductType() {
  RegistryKey const key(kProductKey);
  if (key.HasValue(L"ProductType", L"WINNT")) m_nProductType = WorkstationType();
  if (key.HasValue(L"ProductType", L"LANMANNT")) m_nProductType = kDomainController;
  if (key.HasValue(L"ProductType", L"SERVERNT")) m_nProductType = ServerType();
}

void SystemInfo::DeriveVersionCode() {
  DWORD edition = 0;
  auto const ask = KernelEntry<BOOL(WINAPI*)(DWORD, DWORD, DWORD, DWORD, DWORD*)>("GetProductInfo");
  if (ask != nullptr) {
    ask(m_Version.dwMajorVersion, m_Version.dwMinorVersion, m_Version.wServicePackMajor,
        m_Version.wServicePackMinor, &edition);
  }
  m_nVersionCode = (m_Version.dwMajorVersion & 0xFF) << 24 |
                   (m_Version.dwMinorVersion & 0xFF) << 16 | (edition & 0xFFFF);
}

void SystemInfo::DeriveServicePack() {
  WCHAR const* text = m_Version.szCSDVersion;
  if (m_Version.dwMajorVersion == 4 && lstrcmpiW(text, L"Service Pack 6") == 0 &&
      RegistryKey(kHotfixKey).IsOpen()) {
    text = L"Service Pack 6a";
  }
  _snwprintf(m_szServicePack, std::size(m_szServicePack) - 1, L"%ls (Build %d)\n", text,
             static_cast<int>(m_Version.dwBuildNumber));
}

}  // namespace sorrelin
