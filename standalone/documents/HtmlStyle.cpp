// Two rules carry the page. Text has a measure of some 70 characters and tables take the room that they need; and what
// a row means is said by weight and a mark, so that it survives a printer without colours. Headings have the room, and
// the balance of lines, with which those of a lower and an upper limit break alike side by side.
#include "standalone/documents/HtmlStyle.h"

namespace orv {

const std::string_view HtmlStyle = R"css(
:root {
  color-scheme: light dark;
  --paper: #fdfdfb; --ink: #1d1d1b; --soft: #5d5d58; --rule: #c9c8c1; --strong-rule: #1d1d1b; --mark: #f3efdf;
}
@media (prefers-color-scheme: dark) {
  :root {
    --paper: #17181a; --ink: #e6e4df; --soft: #a09e97; --rule: #3f4043; --strong-rule: #b9b7b0; --mark: #2c2a20;
  }
}
* { box-sizing: border-box; }
html { -webkit-text-size-adjust: 100%; text-size-adjust: 100%; }
body {
  margin: 0; background: var(--paper); color: var(--ink);
  font: 1.0625rem/1.55 Charter, "Bitstream Charter", "Source Serif Pro", Georgia, "Times New Roman", serif;
}
main { max-width: 78rem; margin: 0 auto; padding: 2.5rem clamp(1rem, 4vw, 3rem) 4rem; }
h1, h2 { line-height: 1.2; font-weight: 600; text-wrap: balance; overflow-wrap: anywhere; }
h1 { margin: 0 0 1.25rem; font-size: 2rem; letter-spacing: -0.01em; }
h2 { margin: 3rem 0 0.5rem; font-size: 1.3rem; break-after: avoid; }
p { max-width: 44rem; margin: 0.25rem 0; overflow-wrap: anywhere; }
p.title { color: var(--soft); break-after: avoid; }
dl { display: grid; grid-template-columns: max-content minmax(0, 1fr); gap: 0.1rem 1.5rem; max-width: 44rem; margin: 0; }
dt { color: var(--soft); }
dd { margin: 0; white-space: pre-line; overflow-wrap: anywhere; font-variant-numeric: lining-nums tabular-nums; }
table, pre, dl { font-size: 0.9375rem; }
.box { max-width: 100%; margin: 0.75rem 0 0; overflow-x: auto; }
table + table { margin-top: 1.25rem; }
.box:focus-visible { outline: 2px solid var(--soft); outline-offset: 4px; }
table { border-collapse: collapse; font-variant-numeric: lining-nums tabular-nums; line-height: 1.35; }
table { border-top: 2px solid var(--strong-rule); border-bottom: 2px solid var(--strong-rule); }
caption { padding: 0 0 0.4rem; color: var(--soft); font-size: 0.95em; text-align: left; white-space: nowrap; }
th, td { padding: 0.28rem 0.6rem; text-align: right; vertical-align: baseline; white-space: nowrap; font-weight: 400; }
th:first-child, td:first-child { padding-left: 0.4rem; }
th:last-child, td:last-child { padding-right: 0.4rem; }
thead tr > * {
  max-width: 9rem; border-bottom: 1px solid var(--strong-rule); color: var(--soft); white-space: normal;
  vertical-align: bottom; overflow-wrap: break-word; text-wrap: balance; line-height: 1.2;
}
tbody tr + tr > * { border-top: 1px solid var(--rule); }
.t { max-width: 24rem; text-align: left; white-space: normal; overflow-wrap: break-word; }
td.m, th.m { background: var(--mark); font-weight: 700; }
th.m:first-child { box-shadow: inset 3px 0 0 var(--ink); }
pre {
  margin: 0; padding: 0.9rem 1rem; border: 1px solid var(--rule); line-height: 1.4; tab-size: 4;
  font-family: ui-monospace, "DejaVu Sans Mono", Menlo, Consolas, monospace; font-size: 0.8125rem;
}
@media screen and (max-width: 60rem) {
  table { width: max-content; }
}
@media (max-width: 40rem) {
  body { font-size: 1rem; }
  main { padding-top: 1.5rem; }
  h1 { font-size: 1.6rem; }
  h2 { margin-top: 2.25rem; }
  .t { max-width: 10rem; }
}
@page { margin: 18mm 15mm 20mm; }
@media print {
  :root {
    color-scheme: light;
    --paper: #fff; --ink: #000; --soft: #444; --rule: #bbb; --strong-rule: #000; --mark: #eee;
  }
  body { font-size: 10pt; }
  main { max-width: none; padding: 0; }
  h1 { font-size: 18pt; }
  h2 { margin-top: 16pt; font-size: 12.5pt; }
  table, dl { font-size: 8.5pt; }
  pre { border: 0; padding: 0; font-size: 8pt; white-space: pre-wrap; overflow-wrap: anywhere; }
  .box { overflow: visible; }
  .wide table { font-size: 7pt; }
  .wide th, .wide td { padding-left: 0.25rem; padding-right: 0.25rem; }
  .t { max-width: 11rem; }
  thead { display: table-header-group; }
  tr, caption { break-inside: avoid; }
  caption, thead, tbody tr:nth-child(-n + 2) { break-after: avoid; }
  table:not(:has(tr:nth-child(20))) { break-inside: avoid; }
  .m { -webkit-print-color-adjust: exact; print-color-adjust: exact; }
}
)css";

}  // namespace orv
