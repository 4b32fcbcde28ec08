// The user's system proxy in the registry, for as long as the object lives; then it is as before.
#ifndef TAVRIN_TESTS_E2E_HARNESS_INTERNET_SETTINGS_H_
#define TAVRIN_TESTS_E2E_HARNESS_INTERNET_SETTINGS_H_

#include <windows.h>

#include <string>
#include <vector>

namespace e2e {

class InternetSettings {
 public:
  InternetSettings();
  ~InternetSettings();
  InternetSettings(const InternetSettings&) = delete;
  InternetSettings& operator=(const InternetSettings&) = delete;

  void SetNumber(const wchar_t* name, DWORD value);
  void SetText(const wchar_t* name, const std::wstring& value);
  void Remove(const wchar_t* name);

 private:
  struct Saved {
    const wchar_t* name;
    bool present;
    DWORD type;
    std::vector<BYTE> data;
  };
  void Save(const wchar_t* name);

  HKEY key_ = nullptr;
  std::vector<Saved> saved_;
};

}  // namespace e2e

#endif  // TAVRIN_TESTS_E2E_HARNESS_INTERNET_SETTINGS_H_
