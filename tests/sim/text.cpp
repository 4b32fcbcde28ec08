#include "tests/sim/text.h"

#include <cwctype>

namespace sim {
namespace {

constexpr unsigned kReplacement = 0xFFFD;

struct Lead {
  int continuations;  // 0 for a byte that can't start a sequence
  unsigned bits;
  unsigned char lowest;   // bounds of a valid second byte, which exclude overlong forms,
  unsigned char highest;  // surrogates and everything above U+10FFFF
};

Lead ReadLead(unsigned char byte) {
  if (byte >= 0xC2 && byte <= 0xDF) {
    return {1, byte & 0x1Fu, 0x80, 0xBF};
  }
  if (byte >= 0xE0 && byte <= 0xEF) {
    const unsigned char lowest = byte == 0xE0 ? 0xA0 : 0x80;
    const unsigned char highest = byte == 0xED ? 0x9F : 0xBF;
    return {2, byte & 0x0Fu, lowest, highest};
  }
  if (byte >= 0xF0 && byte <= 0xF4) {
    const unsigned char lowest = byte == 0xF0 ? 0x90 : 0x80;
    const unsigned char highest = byte == 0xF4 ? 0x8F : 0xBF;
    return {3, byte & 0x07u, lowest, highest};
  }
  return {0, 0, 0, 0};
}

bool IsContinuation(unsigned char byte) {
  return (byte & 0xC0) == 0x80;
}

// Reads one code point at `at`, which moves on by what was read. A continuation byte is used up
// with its lead even where the two can't stand together.
unsigned Decode(std::string_view bytes, size_t& at) {
  const unsigned char first = static_cast<unsigned char>(bytes[at++]);
  if (first < 0x80) {
    return first;
  }
  Lead lead = ReadLead(first);
  if (lead.continuations == 0) {
    return kReplacement;
  }
  for (int i = 0; i < lead.continuations; ++i) {
    const unsigned char next = at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0;
    if (!IsContinuation(next)) {
      return kReplacement;
    }
    ++at;
    if (i == 0 && (next < lead.lowest || next > lead.highest)) {
      return kReplacement;
    }
    lead.bits = (lead.bits << 6) | (next & 0x3Fu);
  }
  return lead.bits;
}

void AppendUnits(std::wstring& text, unsigned point) {
  if (point < 0x10000) {
    text += static_cast<wchar_t>(point);
    return;
  }
  text += static_cast<wchar_t>(0xD800 + ((point - 0x10000) >> 10));
  text += static_cast<wchar_t>(0xDC00 + ((point - 0x10000) & 0x3FF));
}

void AppendBytes(std::string& bytes, unsigned point) {
  const auto tail = [&](int shift) {
    bytes += static_cast<char>(0x80 | ((point >> shift) & 0x3F));
  };
  if (point < 0x80) {
    bytes += static_cast<char>(point);
  } else if (point < 0x800) {
    bytes += static_cast<char>(0xC0 | (point >> 6));
    tail(0);
  } else if (point < 0x10000) {
    bytes += static_cast<char>(0xE0 | (point >> 12));
    tail(6);
    tail(0);
  } else {
    bytes += static_cast<char>(0xF0 | (point >> 18));
    tail(12);
    tail(6);
    tail(0);
  }
}

bool IsHigh(unsigned unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}
bool IsLow(unsigned unit) {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}

}  // namespace

std::wstring Widen(std::string_view bytes) {
  std::wstring text;
  for (size_t at = 0; at < bytes.size();) {
    AppendUnits(text, Decode(bytes, at));
  }
  return text;
}

std::string Narrow(std::wstring_view units) {
  std::string bytes;
  for (size_t i = 0; i < units.size(); ++i) {
    unsigned point = static_cast<unsigned>(units[i]);
    const unsigned next = i + 1 < units.size() ? static_cast<unsigned>(units[i + 1]) : 0;
    if (IsHigh(point) && IsLow(next)) {
      point = 0x10000 + ((point - 0xD800) << 10) + (next - 0xDC00);
      ++i;
    } else if (IsHigh(point) || IsLow(point)) {
      point = kReplacement;
    }
    AppendBytes(bytes, point);
  }
  return bytes;
}

std::wstring Units(std::wstring_view text) {
  std::wstring units;
  for (const wchar_t character : text) {
    AppendUnits(units, static_cast<unsigned>(character));
  }
  return units;
}

std::wstring Fold(std::wstring text) {
  for (wchar_t& unit : text) {
    unit = static_cast<wchar_t>(std::towupper(static_cast<std::wint_t>(unit)));
  }
  return text;
}

namespace {

bool Matches(std::wstring_view pattern, std::wstring_view name) {
  while (!pattern.empty()) {
    if (pattern.front() == L'*') {
      for (size_t skipped = 0; skipped <= name.size(); ++skipped) {
        if (Matches(pattern.substr(1), name.substr(skipped))) {
          return true;
        }
      }
      return false;
    }
    if (name.empty() || (pattern.front() != L'?' && pattern.front() != name.front())) {
      return false;
    }
    pattern.remove_prefix(1);
    name.remove_prefix(1);
  }
  return name.empty();
}

}  // namespace

bool MatchesWildcards(const std::wstring& pattern, const std::wstring& name) {
  const std::wstring folded = Fold(pattern);
  // The platform reads "*.*" as every name, with or without a dot.
  return folded == L"*.*" || Matches(folded, Fold(name));
}

}  // namespace sim
