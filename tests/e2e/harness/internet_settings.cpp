#include "tests/e2e/harness/internet_settings.h"

#include <stdexcept>

namespace e2e {

InternetSettings::InternetSettings() {
  const wchar_t* path = L"Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings";
  if (RegCreateKeyExW(HKEY_CURRENT_USER, path, 0, nullptr, 0, KEY_QUERY_VALUE | KEY_SET_VALUE,
                      nullptr, &key_, nullptr) != ERROR_SUCCESS) {
    throw std::runtime_error("no registry key for the internet settings");
  }
  Save(L"ProxyEnable");
  Save(L"ProxyServer");
}

InternetSettings::~InternetSettings() {
  for (const Saved& value : saved_) {
    if (value.present) {
      RegSetValueExW(key_, value.name, 0, value.type, value.data.data(),
                     static_cast<DWORD>(value.data.size()));
    } else {
      RegDeleteValueW(key_, value.name);
    }
  }
  RegCloseKey(key_);
}

void InternetSettings::Save(const wchar_t* name) {
  Saved value{name, false, REG_NONE, std::vector<BYTE>(4096)};
  DWORD size = static_cast<DWORD>(value.data.size());
  value.present =
      RegQueryValueExW(key_, name, nullptr, &value.type, value.data.data(), &size) == ERROR_SUCCESS;
  value.data.resize(size);
  saved_.push_back(value);
}

void InternetSettings::SetNumber(const wchar_t* name, DWORD value) {
  RegSetValueExW(key_, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof(value));
}

void InternetSettings::SetText(const wchar_t* name, const std::wstring& value) {
  const DWORD size = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
  RegSetValueExW(key_, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()), size);
}

void InternetSettings::Remove(const wchar_t* name) {
  RegDeleteValueW(key_, name);
}

}  // namespace e2e
