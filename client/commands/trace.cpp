#include <algorithm>
#include <utility>

#include "client/commands/commands.h"
#include "client/exit_codes.h"
#include "client/json/json_text.h"
#include "client/report/whole_file.h"
#include "client/service/presence.h"
#include "client/text/amounts.h"
#include "client/trace/trace_file.h"
#include "client/trace/trace_json.h"
#include "client/trace/trace_page.h"
#include "client/trace/waterfall.h"
#include "src/common/text.h"

namespace vpn {
namespace {

struct ReadTrace {
  std::wstring path;
  bool isReadable = false;
  bool isCut = false;
  TraceText text;
};

ReadTrace ReadWholeTrace() {
  ReadTrace trace;
  trace.path = TracePath(FindServiceDirectory());
  FileTail tail;
  trace.isReadable = ReadFileTail(trace.path, kTraceLimit, tail);
  trace.isCut = tail.isCut;
  trace.text = ParseTrace(std::move(tail.text), tail.isCut);
  return trace;
}

size_t FirstShown(const ReadTrace& trace, std::uint32_t last) {
  const size_t count = trace.text.connects.size();
  return last == 0 || last >= count ? 0 : count - last;
}

Json TraceFileObject(const ReadTrace& trace, size_t first) {
  Json object = NewJson();
  PutText(object, "file", trace.path);
  PutFlag(object, "readable", trace.isReadable);
  PutFlag(object, "earlierLeftOut", trace.isCut);
  PutNumber(object, "strangeLines", static_cast<std::int64_t>(trace.text.strangeLines));
  Json& connects = PutList(object, "connects");
  for (size_t at = first; at < trace.text.connects.size(); ++at) {
    FillTrace(trace.text.connects[at], AppendObject(connects));
  }
  return object;
}

void ShowConnect(const ReadTrace& trace, size_t at, const StepMedians& before, Output& out) {
  const std::vector<ConnectTrace>& connects = trace.text.connects;
  const ConnectTrace& connect = connects[at];
  out.write(L"Connect " + std::to_wstring(at + 1) + L" of " + std::to_wstring(connects.size()));
  out.line(connect.isComplete()
               ? L", complete, " + SecondsText(connect.totalTime())
               : L", not complete, last mark after " + SecondsText(connect.totalTime()));
  for (const WaterfallRow& row : DrawWaterfall(connect, before.times(), out.columns())) {
    out.write(L"  ");
    out.line(row.text, row.isEnd ? Ink::kBad : row.isLongest ? Ink::kCaution : Ink::kPlain);
  }
}

void ShowConnects(const ReadTrace& trace, size_t first, Output& out) {
  StepMedians before;
  for (size_t at = 0; at < trace.text.connects.size(); ++at) {
    if (at >= first) {
      out.write(at == first ? L"" : L"\n");
      ShowConnect(trace, at, before, out);
    }
    before.add(trace.text.connects[at]);
  }
}

void ShowRemarks(const ReadTrace& trace, Output& err) {
  if (trace.isCut) {
    err.line(L"The file is larger than 1 MiB; what is older was left out.");
  }
  if (trace.text.strangeLines > 0) {
    err.line(CountText(trace.text.strangeLines, L"line", L"lines") +
             L" of the file can't be read and count for nothing.");
  }
}

int TellNothing(const ReadTrace& trace, Screen& screen) {
  screen.err.line(trace.isReadable ? L"The trace holds no connect: " + trace.path
                                   : L"The trace can't be read: " + trace.path);
  screen.err.line(L"  What to do: connect once; each connect writes its steps there.");
  return kExitRefused;
}

int WritePage(const ReadTrace& trace, size_t first, const CommandLine& line, Screen& screen) {
  const std::vector<ConnectTrace> shown(
      trace.text.connects.begin() + static_cast<std::ptrdiff_t>(first), trace.text.connects.end());
  if (!WriteWholeFile(line.file, TracePage(shown))) {
    screen.err.line(L"The page can't be written: " + line.file);
    screen.err.line(L"  What to do: name a file in a directory of your own, on a disk with room.");
    return kExitRefused;
  }
  screen.out.line(CountText(shown.size(), L"connect", L"connects") + L" written to " + line.file);
  return kExitDone;
}

}  // namespace

int RunTrace(const CommandLine& line, Screen& screen) {
  const ReadTrace trace = ReadWholeTrace();
  const bool wantsPage = !line.file.empty();
  const size_t first =
      FirstShown(trace, line.last == 0 && !wantsPage && !line.json ? 1 : line.last);
  if (line.json) {
    screen.out.write(JsonText(TraceFileObject(trace, first)));
  }
  if (trace.text.connects.empty()) {
    return TellNothing(trace, screen);
  }
  ShowRemarks(trace, screen.err);
  if (wantsPage) {
    return WritePage(trace, first, line, screen);
  }
  if (!line.json) {
    ShowConnects(trace, first, screen.out);
  }
  return kExitDone;
}

}  // namespace vpn
