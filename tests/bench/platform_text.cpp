// The platform's text conversions and its base64 decoder, for the benchmarks: plain ones in the
// place of the simulated machine's, which log each call and build several strings for it. The
// decoder is the packaged one that the figures compare with.
#include <windows.h>
#include <wincrypt.h>

#include <openssl/evp.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

// The length in bytes of the character that begins with `lead`; what is ill-formed goes byte by
// byte, which is good enough for texts that the benchmarks make themselves.
int LengthOf(unsigned char lead) {
  if (lead < 0xC0) {
    return 1;
  }
  return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

unsigned CodeAt(const unsigned char* bytes, int length) {
  unsigned code = length == 1 ? bytes[0] : bytes[0] & (0x7FU >> length);
  for (int i = 1; i < length; ++i) {
    code = code << 6 | (bytes[i] & 0x3FU);
  }
  return code;
}

// Puts a unit where there is room, and counts it in any case.
struct Units {
  wchar_t* text;
  int room;
  int count = 0;

  void put(unsigned unit) {
    if (count < room) {
      text[count] = static_cast<wchar_t>(unit);
    }
    ++count;
  }
};

struct Bytes {
  char* text;
  int room;
  int count = 0;

  void put(unsigned byte) {
    if (count < room) {
      text[count] = static_cast<char>(byte);
    }
    ++count;
  }
  void putContinued(unsigned code, int shift) {
    for (; shift >= 0; shift -= 6) {
      put(0x80 | (code >> shift & 0x3F));
    }
  }
};

int Result(int count, int room) {
  return room == 0 || count <= room ? count : 0;
}

}  // namespace

int MultiByteToWideChar(UINT /*codePage*/, DWORD /*flags*/, LPCCH bytes, int byteCount, LPWSTR text,
                        int unitCount) {
  const auto* at = reinterpret_cast<const unsigned char*>(bytes);
  const auto* const end =
      at + (byteCount == -1 ? std::strlen(bytes) + 1 : static_cast<size_t>(byteCount));
  Units out{text, unitCount};
  while (at < end) {
    for (; at < end && *at < 0x80; ++at) {
      out.put(*at);
    }
    if (at == end) {
      break;
    }
    const int length = std::min<int>(LengthOf(*at), static_cast<int>(end - at));
    const unsigned code = CodeAt(at, length);
    if (code >= 0x10000) {
      out.put(0xD800 + ((code - 0x10000) >> 10));
      out.put(0xDC00 + ((code - 0x10000) & 0x3FF));
    } else {
      out.put(code);
    }
    at += length;
  }
  return Result(out.count, unitCount);
}

int WideCharToMultiByte(UINT /*codePage*/, DWORD /*flags*/, LPCWCH text, int unitCount, LPSTR bytes,
                        int byteCount, LPCCH /*defaultChar*/, LPBOOL /*usedDefaultChar*/) {
  const wchar_t* const end =
      text + (unitCount == -1 ? std::wcslen(text) + 1 : static_cast<size_t>(unitCount));
  Bytes out{bytes, byteCount};
  for (const wchar_t* at = text; at < end; ++at) {
    auto code = static_cast<unsigned>(*at);
    const bool pair = code >= 0xD800 && code < 0xDC00 && at + 1 < end;
    if (pair) {
      code = 0x10000 + ((code - 0xD800) << 10) + (static_cast<unsigned>(*++at) - 0xDC00);
    }
    if (code < 0x80) {
      out.put(code);
    } else if (code < 0x800) {
      out.put(0xC0 | code >> 6);
      out.putContinued(code, 0);
    } else if (!pair) {
      out.put(0xE0 | code >> 12);
      out.putContinued(code, 6);
    } else {
      out.put(0xF0 | code >> 18);
      out.putContinued(code, 12);
    }
  }
  return Result(out.count, byteCount);
}

BOOL CryptStringToBinaryA(LPCSTR text, DWORD length, DWORD /*flags*/, BYTE* binary, DWORD* size,
                          DWORD* /*skipped*/, DWORD* /*usedFlags*/) {
  const auto padding = static_cast<DWORD>(std::count(text + length - 2, text + length, '='));
  const DWORD needed = length / 4 * 3 - padding;
  if (binary != nullptr) {
    std::vector<unsigned char> bytes(length / 4 * 3);  // the padding is written as well
    if (EVP_DecodeBlock(bytes.data(), reinterpret_cast<const unsigned char*>(text),
                        static_cast<int>(length)) < 0) {
      return FALSE;
    }
    std::memcpy(binary, bytes.data(), needed);
  }
  *size = needed;
  return length % 4 == 0 ? TRUE : FALSE;
}
