#include "client/doctor/access_list.h"

#include <algorithm>
#include <array>
#include <cwchar>
#include <iterator>

namespace vpn {
namespace {

// To write or add a file, to append or add a directory, to delete a child; to delete, to change the
// list, to change the owner; everything; to write in general.
constexpr unsigned long kWriteRights =
    0x0002 | 0x0004 | 0x0040 | 0x00010000 | 0x00040000 | 0x00080000 | 0x10000000 | 0x40000000;

// The words that hold one of these rights, or several. Some have the names of what their bits mean
// in a directory service or the registry.
constexpr const wchar_t* kWriteWords[] = {L"DC", L"LC", L"DT", L"SD", L"WD", L"WO",
                                          L"FA", L"FW", L"GA", L"GW", L"KA", L"KW"};

// Entries that allow: plain ones, those with a condition, and both for a kind of object.
constexpr const wchar_t* kAllowTypes[] = {L"A", L"XA", L"OA", L"ZA"};

// The system, the administrators, the built-in one among them, whoever owns what is created, and
// Windows' own installer.
constexpr const wchar_t* kTrusted[] = {
    L"SY",
    L"BA",
    L"LA",
    L"CO",
    L"OW",
    L"S-1-3-4",
    L"S-1-5-18",
    L"S-1-5-32-544",
    L"S-1-5-80-956008885-3418522649-1831038044-1853292631-2271478464"};

struct KnownTrustee {
  const wchar_t* sid;
  const wchar_t* name;
};
constexpr KnownTrustee kNames[] = {{L"WD", L"everyone"},
                                   {L"BU", L"the users"},
                                   {L"AU", L"every user who is signed in"},
                                   {L"IU", L"every user at the screen"},
                                   {L"BG", L"the guests"},
                                   {L"AN", L"anonymous users"}};

template <class List>
bool IsAmong(const List& list, const std::wstring& word) {
  return std::find(std::begin(list), std::end(list), word) != std::end(list);
}

bool AllowsWriting(const std::wstring& rights) {
  if (!rights.empty() && rights[0] >= L'0' && rights[0] <= L'9') {
    return (std::wcstoul(rights.c_str(), nullptr, 0) & kWriteRights) != 0;
  }
  for (size_t at = 0; at + 1 < rights.size(); at += 2) {
    if (IsAmong(kWriteWords, rights.substr(at, 2))) {
      return true;
    }
  }
  return false;
}

std::wstring NameOfTrustee(const std::wstring& sid) {
  for (const KnownTrustee& known : kNames) {
    if (sid == known.sid) {
      return known.name;
    }
  }
  return sid;
}

// The fields of an entry: type, flags, rights, two object types, trustee.
std::array<std::wstring, 6> FieldsOf(const std::wstring& entry) {
  std::array<std::wstring, 6> fields;
  size_t field = 0;
  for (const wchar_t unit : entry) {
    if (unit == L';') {
      ++field;
    } else if (field < fields.size()) {
      fields[field] += unit;
    }
  }
  return fields;
}

// The position behind the entry that begins at `open`. A condition has parentheses of its own, and
// texts in quotes with any more.
size_t EndOfEntry(const std::wstring& sddl, size_t open) {
  size_t depth = 0;
  bool isQuoted = false;
  for (size_t at = open; at < sddl.size(); ++at) {
    if (sddl[at] == L'"') {
      isQuoted = !isQuoted;
    } else if (!isQuoted && sddl[at] == L'(') {
      ++depth;
    } else if (!isQuoted && sddl[at] == L')' && --depth == 0) {
      return at + 1;
    }
  }
  return sddl.size();
}

// What stands behind "O:", up to the next part; empty when it is not told.
std::wstring OwnerOf(const std::wstring& sddl) {
  if (!sddl.starts_with(L"O:")) {
    return {};
  }
  const size_t end = std::min(sddl.find(L"G:", 2), sddl.find(L"D:", 2));
  return sddl.substr(2, end == std::wstring::npos ? end : end - 2);
}

void AddOnce(std::vector<std::wstring>& names, const std::wstring& name) {
  if (!IsAmong(names, name)) {
    names.push_back(name);
  }
}

void AddFromList(const std::wstring& sddl, std::vector<std::wstring>& writers) {
  const size_t start = sddl.find(L"D:");
  if (start == std::wstring::npos ||
      std::wstring_view(sddl).substr(start).starts_with(L"D:NO_ACCESS_CONTROL")) {
    writers.emplace_back(L"everyone");
    return;
  }
  for (size_t open = sddl.find(L'(', start); open != std::wstring::npos;) {
    const size_t end = EndOfEntry(sddl, open);
    const auto fields = FieldsOf(sddl.substr(open + 1, end - open - 2));
    // An entry that only files inherit counts as well: the programs are files.
    if (IsAmong(kAllowTypes, fields[0]) && !IsAmong(kTrusted, fields[5]) &&
        AllowsWriting(fields[2])) {
      AddOnce(writers, NameOfTrustee(fields[5]));
    }
    open = sddl.find(L'(', end);
  }
}

}  // namespace

std::vector<std::wstring> ForeignWriters(const std::wstring& sddl) {
  std::vector<std::wstring> writers;
  AddFromList(sddl, writers);
  const std::wstring owner = OwnerOf(sddl);
  if (!owner.empty() && !IsAmong(kTrusted, owner)) {
    AddOnce(writers, NameOfTrustee(owner));
  }
  return writers;
}

}  // namespace vpn
