// The looks of the page: light or dark as the reader's system has it, and narrow windows.
#ifndef TAVRIN_CLIENT_TRACE_PAGE_STYLE_H_
#define TAVRIN_CLIENT_TRACE_PAGE_STYLE_H_

#include <string_view>

namespace vpn {

inline constexpr std::string_view kPageStyle = R"css(
:root { color-scheme: light dark; --back: #ffffff; --text: #1f2328; --faint: #656d76;
  --line: #d8dee4; --bar: #3b82c4; --longest: #d97706; --bad: #cf222e; }
@media (prefers-color-scheme: dark) {
  :root { --back: #15191f; --text: #e6edf3; --faint: #9198a1; --line: #30363d; --bar: #58a6ff;
    --longest: #f0a030; --bad: #ff7b72; }
}
body { margin: 0 auto; max-width: 60rem; padding: 1.5rem 1rem 3rem; background: var(--back);
  color: var(--text); font: 15px/1.45 "Segoe UI", "Noto Sans", sans-serif; }
h1 { font-size: 1.4rem; margin: 0 0 .3rem; }
h2 { font-size: 1.05rem; margin: 2rem 0 .4rem; }
.overview, .median { color: var(--faint); }
.end { color: var(--bad); margin: .2rem 0; }
.chart { overflow-x: auto; border-bottom: 1px solid var(--line); }
.chart svg { display: block; }
table { width: 100%; border-collapse: collapse; table-layout: fixed; }
th, td { padding: .15rem .4rem; text-align: left; font-weight: normal; vertical-align: middle; }
th:nth-child(1) { width: 13rem; }
th:nth-child(2) { width: 5rem; }
th:nth-child(4) { width: 7rem; }
thead th, tr:first-child th { color: var(--faint); border-bottom: 1px solid var(--line); }
.number { text-align: right; font-variant-numeric: tabular-nums; }
td.track { padding: 0; }
td.track svg { display: block; width: 100%; height: 16px; }
.bar, .column { fill: var(--bar); }
.longest { fill: var(--longest); }
.open, .failed { fill: var(--bad); }
@media (max-width: 40rem) {
  th:nth-child(1) { width: 9.5rem; }
  th:nth-child(2) { width: 4.2rem; }
  th.median, td.median { display: none; }
}
)css";

}  // namespace vpn

#endif  // TAVRIN_CLIENT_TRACE_PAGE_STYLE_H_
