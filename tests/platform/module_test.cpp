// Shared libraries: the order in which names are tried, and the life of a handle.
#include <gtest/gtest.h>
#include <sorrelin/platform/error.h>
#include <sorrelin/platform/module.h>

#include <filesystem>
#include <string>

#include "tests/support/temp_dir.h"

namespace {

namespace fs = std::filesystem;

// Libraries that were built for this test, each with its own number.
fs::path const kThing = THING_1;       // libthing.so
fs::path const kOtherThing = THING_2;  // another library
constexpr int kBesideNumber = 3;       // libsorrelin-test-beside.so, beside the platform library
constexpr int kPrivateNumber = 4;      // libsorrelin-test-private.so, in the folder sorrelin there

class Module {
 public:
  explicit Module(fs::path const& name) : handle_(LoadLibraryW(name.u16string().c_str())) {}
  ~Module() {
    if (handle_ != nullptr) FreeLibrary(handle_);
  }
  Module(Module const&) = delete;
  Module& operator=(Module const&) = delete;
  HMODULE get() const { return handle_; }
  // What the library says that it is; 0 if it cannot say.
  int Number() const {
    auto const number = reinterpret_cast<int (*)()>(GetProcAddress(handle_, "ThingNumber"));
    return number != nullptr ? number() : 0;
  }

 private:
  HMODULE handle_;
};

std::u16string FileNameOf(HMODULE module) {
  WCHAR buffer[4096];
  DWORD const length = GetModuleFileNameW(module, buffer, 4096);
  return {buffer, length};
}

DWORD LoadError(WCHAR const* name) {
  SetLastError(0);
  EXPECT_EQ(LoadLibraryW(name), nullptr);
  return GetLastError();
}

TEST(LoadLibrary, DllNameFindsTheSystemsForm) {
  test::TempDir const dir;
  fs::copy_file(kThing, dir / "libthing.so");
  fs::copy_file(kOtherThing, dir / "libaz_az.so");
  for (char const* const name : {"Thing.dll", "thing.dll", "THING.DLL", "ThInG.DlL"}) {
    EXPECT_EQ(Module(dir / name).Number(), 1) << name;
  }
  EXPECT_EQ(Module(dir / "AZ_az.dll").Number(), 2);
}

TEST(LoadLibrary, NameAsGivenComesFirst) {
  test::TempDir const dir;
  fs::copy_file(kThing, dir / "libthing.so");
  fs::copy_file(kOtherThing, dir / "Thing.dll");
  EXPECT_EQ(Module(dir / "Thing.dll").Number(), 2);
  EXPECT_EQ(Module(dir / "THING.dll").Number(), 1);
  EXPECT_EQ(Module(dir / "libthing.so").Number(), 1);
}

TEST(LoadLibrary, OtherSuffixesAreTakenAsTheyAre) {
  test::TempDir const dir;
  fs::copy_file(kThing, dir / "libthing.so");
  fs::copy_file(kThing, dir / "lib.so");
  for (char const* const name : {"Thing", "thing.so", "Thing.dl", "Thingdll", ".dll"}) {
    EXPECT_EQ(Module(dir / name).get(), nullptr) << name;
  }
}

TEST(LoadLibrary, OnlyTheLastComponentIsChanged) {
  test::TempDir const dir;
  fs::create_directory(dir / "Upper.dll");
  fs::copy_file(kThing, dir / "Upper.dll" / "libthing.so");
  EXPECT_EQ(Module(dir / "Upper.dll" / "Thing.dll").Number(), 1);
  EXPECT_EQ(Module(dir / "Upper.dll" / "Other.dll").get(), nullptr);
}

TEST(LoadLibrary, BareNameIsFoundBesideThePlatformLibrary) {
  EXPECT_EQ(Module(u"Sorrelin-Test-Beside.dll").Number(), kBesideNumber);
  EXPECT_EQ(Module(u"libsorrelin-test-beside.so").Number(), kBesideNumber);
}

TEST(LoadLibrary, BareNameIsFoundInThePrivateFolderLast) {
  EXPECT_EQ(Module(u"Sorrelin-Test-Private.dll").Number(), kPrivateNumber);
  EXPECT_EQ(Module(u"sorrelin-test-beside.dll").Number(), kBesideNumber);
}

// The first time it is searched for, then it is known.
TEST(LoadLibrary, BareNameIsFoundAgain) {
  for (int time = 0; time < 3; ++time) {
    EXPECT_EQ(Module(u"SORRELIN-TEST-BESIDE.dll").Number(), kBesideNumber) << time;
    EXPECT_EQ(GetModuleHandleW(u"SORRELIN-TEST-BESIDE.dll"), nullptr) << time;
  }
}

TEST(LoadLibrary, BareNameIsFoundOnTheSystemsPath) {
  Module const zlib(u"libz.so.1");
  EXPECT_NE(GetProcAddress(zlib.get(), "inflate"), nullptr);
}

TEST(LoadLibrary, BareNameIsNotTakenFromTheWorkingDirectory) {
  test::TempDir const dir;
  fs::copy_file(kThing, dir / "libthing.so");
  fs::path const before = fs::current_path();
  fs::current_path(dir.path());
  HMODULE const bare = Module(u"Thing.dll").get();
  int const relative = Module(u"./Thing.dll").Number();
  fs::current_path(before);
  EXPECT_EQ(bare, nullptr);
  EXPECT_EQ(relative, 1);
}

TEST(LoadLibrary, NameThatLoadsNothingIsError126) {
  test::TempDir const dir;
  test::WriteAll(dir / "libtext.so", {'t', 'e', 'x', 't'});
  EXPECT_EQ(LoadError(u""), 126u);
  EXPECT_EQ(LoadError(nullptr), 126u);
  EXPECT_EQ(LoadError(u"a\xD800.dll"), 126u);
  EXPECT_EQ(LoadError(u"No such library.dll"), 126u);
  EXPECT_EQ(LoadError(u"No such library.so"), 126u);
  EXPECT_EQ(LoadError((dir.path().u16string() + u"/").c_str()), 126u);
  EXPECT_EQ(LoadError((dir / "Text.dll").u16string().c_str()), 126u);
}

TEST(LoadLibrary, NonAsciiPathsLoad) {
  test::TempDir const dir;
  fs::create_directory(dir / "\xC3\xBC");
  fs::copy_file(kThing, dir / "\xC3\xBC" / "libthing.so");
  EXPECT_EQ(Module(dir / "\xC3\xBC" / "Thing.dll").Number(), 1);
}

TEST(GetProcAddress, MissingEntryPointIsError127) {
  Module const module(kThing);
  EXPECT_NE(GetProcAddress(module.get(), "ThingNumber"), nullptr);
  EXPECT_EQ(GetProcAddress(module.get(), "thingnumber"), nullptr);
  EXPECT_EQ(GetLastError(), 127u);
  SetLastError(0);
  EXPECT_EQ(GetProcAddress(module.get(), nullptr), nullptr);
  EXPECT_EQ(GetLastError(), 127u);
}

TEST(GetProcAddress, ValuesThatAreNoModuleAreNotFollowed) {
  int local = 0;
  HMODULE const end = reinterpret_cast<HMODULE>(~uintptr_t{0});
  for (HMODULE const module : {HMODULE{}, end, static_cast<HMODULE>(&local)}) {
    SetLastError(0);
    EXPECT_EQ(GetProcAddress(module, "malloc"), nullptr);
    EXPECT_EQ(GetLastError(), 127u);
    EXPECT_EQ(FreeLibrary(module), 0);
    EXPECT_EQ(GetLastError(), 6u);
  }
}

TEST(FreeLibrary, EachLoadIsReleasedOnce) {
  auto const name = kThing.u16string();
  HMODULE const module = LoadLibraryW(name.c_str());
  EXPECT_EQ(LoadLibraryW(name.c_str()), module);
  EXPECT_NE(FreeLibrary(module), 0);
  EXPECT_NE(GetProcAddress(module, "ThingNumber"), nullptr);
  EXPECT_NE(FreeLibrary(module), 0);
  EXPECT_EQ(GetProcAddress(module, "ThingNumber"), nullptr);
  EXPECT_EQ(FreeLibrary(module), 0);
  EXPECT_EQ(GetLastError(), 6u);
}

TEST(GetModuleHandle, KnowsLoadedLibrariesOnly) {
  auto const name = kOtherThing.u16string();
  EXPECT_EQ(GetModuleHandleW(name.c_str()), nullptr);
  EXPECT_EQ(GetLastError(), 126u);
  {
    Module const module(name);
    EXPECT_EQ(GetModuleHandleW(name.c_str()), module.get());
  }
  EXPECT_EQ(GetModuleHandleW(name.c_str()), nullptr);
}

// The platform library's file has its version after the bare name.
TEST(GetModuleHandle, KnowsLoadedLibrariesByBareNames) {
  HMODULE const platform = GetModuleHandleW(u"libsorrelin-platform.so");
  ASSERT_NE(platform, nullptr);
  EXPECT_EQ(GetModuleHandleW(u"sorrelin-platform.dll"), platform);
  EXPECT_NE(GetModuleHandleW(u"libc.so.6"), nullptr);
  EXPECT_EQ(GetModuleHandleW(u"Thing-that-nobody-has.dll"), nullptr);
  EXPECT_EQ(GetLastError(), 126u);
}

TEST(GetModuleHandle, TakesNoLoad) {
  Module const module(kThing);
  GetModuleHandleW(kThing.u16string().c_str());
  EXPECT_NE(FreeLibrary(LoadLibraryW(kThing.u16string().c_str())), 0);
  EXPECT_EQ(module.Number(), 1);
  EXPECT_EQ(GetModuleHandleW(u""), nullptr);
  EXPECT_EQ(GetLastError(), 126u);
}

TEST(GetModuleHandle, NullIsTheHostProgram) {
  HMODULE const host = GetModuleHandleW(nullptr);
  ASSERT_NE(host, nullptr);
  EXPECT_NE(GetProcAddress(host, "malloc"), nullptr);
  EXPECT_EQ(FreeLibrary(host), 0);
  EXPECT_EQ(FileNameOf(host), FileNameOf(nullptr));
}

TEST(GetModuleFileName, NullIsTheHostProgram) {
  EXPECT_EQ(fs::path(FileNameOf(nullptr)), fs::read_symlink("/proc/self/exe"));
}

TEST(GetModuleFileName, IsTheLibrarysPath) {
  Module const module(kThing);
  EXPECT_EQ(fs::path(FileNameOf(module.get())), kThing);
  Module const beside(u"Sorrelin-Test-Beside.dll");
  fs::path const path = FileNameOf(beside.get());
  EXPECT_TRUE(path.is_absolute());
  EXPECT_EQ(path.filename(), "libsorrelin-test-beside.so");
}

TEST(GetModuleFileName, RelativeLoadHasAWholePath) {
  test::TempDir const dir;
  fs::copy_file(kThing, dir / "libthing.so");
  fs::path const before = fs::current_path();
  fs::current_path(dir.path());
  {
    Module const module(u"./libthing.so");
    EXPECT_EQ(fs::path(FileNameOf(module.get())), fs::canonical(dir / "libthing.so"));
  }
  fs::current_path(before);
}

TEST(GetModuleFileName, SmallBufferCutsThePath) {
  std::u16string const path = FileNameOf(nullptr);
  WCHAR buffer[5] = {u'?', u'?', u'?', u'?', u'?'};
  EXPECT_EQ(GetModuleFileNameW(nullptr, buffer, 4), 3u);
  EXPECT_EQ(GetLastError(), 122u);
  EXPECT_EQ(std::u16string(buffer), path.substr(0, 3));
  EXPECT_EQ(buffer[4], u'?');
  std::u16string exact(path.size() + 1, u'?');
  SetLastError(0);
  EXPECT_EQ(GetModuleFileNameW(nullptr, exact.data(), static_cast<DWORD>(exact.size())),
            path.size());
  EXPECT_EQ(GetLastError(), 0u);
  EXPECT_EQ(GetModuleFileNameW(nullptr, buffer, 0), 0u);
  EXPECT_EQ(GetModuleFileNameW(nullptr, nullptr, 4), 0u);
}

TEST(GetModuleFileName, ValueThatIsNoModuleIsError126) {
  int local = 0;
  WCHAR buffer[10];
  EXPECT_EQ(GetModuleFileNameW(&local, buffer, 10), 0u);
  EXPECT_EQ(GetLastError(), 126u);
}

}  // namespace
