#include "tests/sim/streams.h"

#include <sys/types.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <utility>

#include "tests/sim/kept_files.h"
#include "tests/sim/text.h"

namespace sim {
namespace {

constexpr char kByteOrderMark[] = "\xEF\xBB\xBF";

// What stands behind one FILE*.
struct Cookie {
  std::weak_ptr<Streams*> streams;
  Stream* stream;
};

// Every cookie of the program. The FILE* of a killed process is never closed, and the sanitizers
// keep what a FILE* points to where their search for leaks does not look.
struct CookieJar {
  std::mutex mutex;
  std::map<Cookie*, std::unique_ptr<Cookie>> cookies;
};
CookieJar& TheCookieJar() {
  static CookieJar& jar = *new CookieJar;
  return jar;
}

Cookie* MakeCookie(std::weak_ptr<Streams*> streams, Stream* stream) {
  std::unique_ptr<Cookie> cookie(new Cookie{std::move(streams), stream});
  Cookie* const made = cookie.get();
  CookieJar& jar = TheCookieJar();
  const std::lock_guard<std::mutex> lock(jar.mutex);
  jar.cookies.emplace(made, std::move(cookie));
  return made;
}

std::unique_ptr<Cookie> TakeCookie(Cookie* cookie) {
  CookieJar& jar = TheCookieJar();
  const std::lock_guard<std::mutex> lock(jar.mutex);
  return std::move(jar.cookies.extract(cookie).mapped());
}

ssize_t ReadCookie(void* cookie, char* buffer, size_t size) {
  Cookie* const self = static_cast<Cookie*>(cookie);
  const std::shared_ptr<Streams*> streams = self->streams.lock();
  return streams ? static_cast<ssize_t>((*streams)->ReadBytes(*self->stream, buffer, size)) : 0;
}

ssize_t WriteCookie(void* cookie, const char* bytes, size_t size) {
  Cookie* const self = static_cast<Cookie*>(cookie);
  const std::shared_ptr<Streams*> streams = self->streams.lock();
  const bool written = streams && (*streams)->WriteBytes(*self->stream, bytes, size);
  return written ? static_cast<ssize_t>(size) : 0;
}

int SeekCookie(void* cookie, off64_t* offset, int origin) {
  Cookie* const self = static_cast<Cookie*>(cookie);
  if (origin != SEEK_SET || *offset < 0) {
    return -1;
  }
  self->stream->position = static_cast<size_t>(*offset);
  return 0;
}

int CloseCookie(void* cookie) {
  const std::unique_ptr<Cookie> self = TakeCookie(static_cast<Cookie*>(cookie));
  if (const std::shared_ptr<Streams*> streams = self->streams.lock()) {
    (*streams)->Close(*self->stream);
  }
  return 0;
}

// Moves the open counts of the file by what the stream does and denies. A lock goes with its
// stream.
void Count(Stream& stream, int step) {
  FileNode& node = *stream.node;
  if (step < 0 && node.rangeHolder == &stream) {
    node.rangeHolder = nullptr;
  }
  (stream.mode.write ? node.writers : node.readers) += step;
  node.denyRead += stream.sharing.denyRead ? step : 0;
  node.denyWrite += stream.sharing.denyWrite ? step : 0;
}

bool SharingAllows(const FileNode& node, const OpenMode& mode, Sharing sharing) {
  const bool denied = mode.write ? node.denyWrite > 0 : node.denyRead > 0;
  const bool disturbs =
      (sharing.denyRead && node.readers > 0) || (sharing.denyWrite && node.writers > 0);
  return !denied && !disturbs;
}

}  // namespace

bool ParseOpenMode(const std::wstring& text, OpenMode* mode) {
  OpenMode parsed;
  const size_t comma = std::min(text.find(L','), text.size());
  const std::wstring letters = text.substr(0, comma);
  std::wstring rest = text.substr(comma);
  std::erase(rest, L' ');
  parsed.unicode = rest == L",ccs=UTF-8";
  parsed.append = letters[0] == L'a';
  parsed.truncate = letters[0] == L'w';
  parsed.write = parsed.append || parsed.truncate;
  parsed.text = letters.find(L'b') == std::wstring::npos;
  *mode = parsed;
  const bool known = letters == L"r" || letters == L"rb" || letters == L"w" || letters == L"wb" ||
                     letters == L"a" || letters == L"ab";
  return known && (rest.empty() || (parsed.unicode && parsed.text));
}

int Streams::OpenFile(const std::wstring& path, const OpenMode& mode, Sharing sharing,
                      std::unique_ptr<Stream>* opened) {
  const MachineLock lock = core_.Lock();
  std::unique_ptr<Stream> stream = std::make_unique<Stream>();
  const int error = files_.Open(path, mode.write, &stream->node);
  if (error != 0) {
    return error;
  }
  if (!SharingAllows(*stream->node, mode, sharing)) {
    return EACCES;
  }
  stream->mode = mode;
  stream->sharing = sharing;
  stream->descriptor = nextDescriptor_++;
  Count(*stream, 1);
  stream->node->changes += mode.write ? 1 : 0;
  if (mode.truncate) {
    stream->node->content.clear();
  }
  if (mode.write && mode.unicode && stream->node->content.empty()) {
    Append(*stream, kByteOrderMark);
  }
  *opened = std::move(stream);
  return 0;
}

int Streams::Open(const std::wstring& path, const OpenMode& mode, Sharing sharing,
                  std::string origin, std::uint32_t processId, std::FILE** file) {
  const MachineLock lock = core_.Lock();
  std::unique_ptr<Stream> stream;
  const int error = OpenFile(path, mode, sharing, &stream);
  if (error != 0) {
    return error;
  }
  const std::string kind = "stream " + Narrow(stream->node->path);
  *file = Attach(std::move(stream), {kind, std::move(origin), processId});
  return 0;
}

std::FILE* Streams::OpenConsole(std::string* sink) {
  std::unique_ptr<Stream> stream = std::make_unique<Stream>();
  stream->console = sink;
  stream->mode.write = true;
  stream->mode.append = true;
  return Attach(std::move(stream), {"", "", 0});
}

std::FILE* Streams::Attach(std::unique_ptr<Stream> stream, OpenItem item) {
  const bool write = stream->mode.write;
  Cookie* const cookie = MakeCookie(self_, stream.get());
  std::FILE* const file = fopencookie(
      cookie, write ? "w" : "r",
      {ReadCookie, write ? WriteCookie : nullptr, write ? nullptr : SeekCookie, CloseCookie});
  if (write) {
    // Without a buffer every write reaches the file at once, and a stream that a dead process left
    // open has nothing to flush at the program's end.
    (void)std::setvbuf(file, nullptr, _IONBF, 0);
  }
  open_.emplace(file, Entry{std::move(stream), std::move(item)});
  return file;
}

Stream* Streams::Find(std::FILE* file) {
  const MachineLock lock = core_.Lock();
  const auto found = open_.find(file);
  return found == open_.end() ? nullptr : found->second.stream.get();
}

size_t Streams::ReadBytes(Stream& stream, char* buffer, size_t size) {
  const MachineLock lock = core_.Lock();
  const std::string& content = stream.node->content;
  const size_t from = std::min(stream.position, content.size());
  const size_t count = stream.node->readsFail ? 0 : std::min(size, content.size() - from);
  std::memcpy(buffer, content.data() + from, count);
  stream.position = from + count;
  stream.node->bytesRead += count;
  return count;
}

bool Streams::WriteBytes(Stream& stream, const char* bytes, size_t size) {
  const MachineLock lock = core_.Lock();
  if (stream.mode.unicode) {
    violations_.push_back("narrow text written to a stream that takes wide text");
    return false;
  }
  std::string text(bytes, size);
  for (size_t at = 0; stream.mode.text && (at = text.find('\n', at)) != std::string::npos;) {
    text.insert(at, 1, '\r');
    at += 2;
  }
  return Append(stream, text);
}

bool Streams::Append(Stream& stream, const std::string& bytes) {
  if (stream.console != nullptr) {
    stream.console->append(bytes);
    return true;
  }
  FileNode& node = *stream.node;
  if (node.writesFail || files_.isDiskFull) {
    return false;
  }
  if (stream.mode.append) {
    stream.position = node.content.size();
  }
  node.content.replace(std::min(stream.position, node.content.size()), bytes.size(), bytes);
  stream.position += bytes.size();
  return true;
}

bool Streams::PutUnit(Stream& stream, wchar_t unit) {
  const MachineLock lock = core_.Lock();
  if (!stream.mode.unicode) {
    // In the runtime's default mode the "C" locale takes ASCII alone.
    const char byte = static_cast<char>(unit);
    return static_cast<unsigned>(unit) < 0x80 && WriteBytes(stream, &byte, 1);
  }
  if (unit >= 0xD800 && unit <= 0xDBFF) {
    stream.highSurrogate = unit;
    return true;
  }
  std::wstring text(stream.highSurrogate != 0 ? 1 : 0, stream.highSurrogate);
  stream.highSurrogate = 0;
  if (unit == L'\n' && stream.mode.text) {
    text += L'\r';
  }
  text += unit;
  return Append(stream, Narrow(text));
}

void Streams::Close(Stream& stream) {
  const MachineLock lock = core_.Lock();
  if (stream.node) {
    Count(stream, -1);
    if (stream.mode.write) {
      KeepWrittenFile(stream.node->path, stream.node->content);
    }
  }
  std::erase_if(open_,
                [&stream](const auto& entry) { return entry.second.stream.get() == &stream; });
}

void Streams::DropAllOf(std::uint32_t processId) {
  const MachineLock lock = core_.Lock();
  for (auto& [file, entry] : open_) {
    if (entry.item.processId == processId && entry.stream->node) {
      Count(*entry.stream, -1);
      entry.stream->node = std::make_shared<FileNode>();  // what is left of it goes nowhere
      entry.item.kind.clear();
    }
  }
}

std::vector<OpenItem> Streams::Open() const {
  const MachineLock lock = core_.Lock();
  std::vector<OpenItem> items;
  for (const auto& [file, entry] : open_) {
    if (!entry.item.kind.empty()) {
      items.push_back(entry.item);
    }
  }
  return items;
}

}  // namespace sim
