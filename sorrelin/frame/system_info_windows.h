// A description of the operating system. Windows only; no operation of the library makes one.
#ifndef SORRELIN_FRAME_SYSTEM_INFO_WINDOWS_H_
#define SORRELIN_FRAME_SYSTEM_INFO_WINDOWS_H_

#include <sorrelin/platform/types.h>

namespace sorrelin {

class SystemInfo {
 public:
  enum ProductType : DWORD {
    kProductUnknown = 0,
    kWorkstation = 1,
    kDomainController = 2,
    kServer = 3,
    kTabletPc = 4,  // a workstation of these kinds
    kMediaCenter = 5,
    kStarter = 6,
    kServerR2 = 7  // a server of version 5.2, second release
  };

  // Asks the system. What it does not report is 0.
  SystemInfo();
  virtual ~SystemInfo();

  ProductType product_type() const { return m_nProductType; }
  // Major version, minor version and edition (the number that GetProductInfo reports, or 0) as
  // 0xMMmmEEEE.
  DWORD version_code() const { return m_nVersionCode; }
  // The service pack and the build, one line with its end.
  WCHAR const* service_pack() const { return m_szServicePack; }
  OSVERSIONINFOEXW const& version() const { return m_Version; }
  SYSTEM_INFO const& system() const { return m_System; }
  // Whether `version` has the fields of the extended record.
  bool is_extended() const { return m_bExtended != 0; }

 private:
  static constexpr int kServicePackUnits = 128;

  bool ReadVersion();
  void ReadSystem();
  void DeriveProductType();
  void DeriveVersionCode();
  void DeriveServicePack();

  ProductType m_nProductType = kProductUnknown;
  DWORD m_nVersionCode = 0;
  WCHAR m_szServicePack[kServicePackUnits] = {};
  OSVERSIONINFOEXW m_Version = {};
  SYSTEM_INFO m_System = {};
  int m_bExtended = 0;
};

}  // namespace sorrelin

#endif  // SORRELIN_FRAME_SYSTEM_INFO_WINDOWS_H_
