// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string_view>

namespace kv::polarization {

/// The style sheet of the page. Colours are from the set of Okabe and Ito, which people of all
/// colour visions tell apart, darker or lighter for their ground; lines differ in their dashes too.
inline constexpr std::string_view kReportStyle = R"css(
:root { color-scheme: light dark; --ground: #fff; --ink: #1b1f24; --soft: #57606a; --rule: #d0d7de;
  --shade: #f3f5f7; --good: #00704f; --bad: #b04000; --before: #c25700; --after: #0062a3;
  --bars: #8fb8d9; }
@media screen and (prefers-color-scheme: dark) {
  :root { --ground: #14171a; --ink: #e4e8ec; --soft: #a0a9b3; --rule: #3a424b; --shade: #1f242a;
    --good: #3ecf9d; --bad: #ff9a5c; --before: #f0a04b; --after: #66b7f0; --bars: #3f7099; } }
* { box-sizing: border-box; }
body { margin: 0 auto; padding: 1rem; max-width: 64rem; background: var(--ground); color: var(--ink);
  font: 1rem/1.5 system-ui, "Segoe UI", Roboto, "Helvetica Neue", "Noto Sans", sans-serif;
  overflow-wrap: anywhere; }
h1 { font-size: 1.6rem; line-height: 1.2; margin: .5rem 0 1rem; }
h2 { font-size: 1.25rem; margin: 2.5rem 0 .5rem; padding-top: .5rem; border-top: 1px solid var(--rule); }
h3 { font-size: 1rem; margin: 1.5rem 0 .5rem; }
p { margin: .5rem 0; max-width: 48rem; }
.verdict { max-width: none; padding: .8rem 1rem; font-size: 1.15rem; font-weight: 600;
  background: var(--shade); border-left: .4rem solid; }
.verdict.good { border-color: var(--good); } .verdict.bad { border-color: var(--bad); }
.good .mark { color: var(--good); } .bad .mark { color: var(--bad); font-weight: 600; }
dl { display: grid; grid-template-columns: max-content 1fr; gap: .2rem 1rem; margin: 1rem 0; }
dt { color: var(--soft); } dd { margin: 0; }
.wide { overflow-x: auto; margin: .8rem 0; }
table { border-collapse: collapse; font-size: .9rem; font-variant-numeric: tabular-nums;
  overflow-wrap: normal; }
th, td { padding: .3rem .7rem; text-align: right; vertical-align: top;
  border-bottom: 1px solid var(--rule); white-space: nowrap; }
tr > :first-child, th[scope=row], .words { text-align: left; }
th[scope=col] { color: var(--soft); font-weight: 600; vertical-align: bottom; white-space: normal; }
th[scope=row] { font-weight: 500; white-space: normal; }
td.words { white-space: normal; min-width: 12rem; } th.words { min-width: 15rem; overflow-wrap: anywhere; }
th:last-child.words, .findings th:last-child, .frames th:last-child { text-align: left; }
.findings tr > :nth-child(2), .frames tr > :nth-child(2) { text-align: left; }
.findings tr.bad, .frames tr.bad { background: var(--shade); }
.row { display: grid; gap: 1rem; grid-template-columns: repeat(auto-fit, minmax(min(100%, 17rem), 1fr)); }
.four { grid-template-columns: repeat(4, 1fr); gap: .6rem; }
.two { grid-template-columns: repeat(2, 1fr); }
figure { margin: .5rem 0; break-inside: avoid; } figure.large { max-width: 42rem; }
figcaption { color: var(--soft); font-size: .85rem; line-height: 1.35; }
img { display: block; width: 100%; height: auto; image-rendering: pixelated; border: 1px solid var(--rule); }
svg { display: block; width: 100%; height: auto; overflow: visible; }
svg text { font-size: 12px; fill: var(--ink); } svg .title { fill: var(--soft); }
.two svg text { font-size: 10px; } .four svg text { font-size: 16px; }
svg .middle { text-anchor: middle; } svg .end { text-anchor: end; } svg .start { text-anchor: start; }
svg.scale rect { shape-rendering: crispEdges; } svg.scale { max-width: 22rem; margin: .6rem 0; }
.grid { stroke: var(--rule); } .axis { stroke: var(--soft); } .bars { fill: var(--bars); }
.line { fill: none; stroke-width: 2; } .used { fill: var(--after); } .refused { stroke: var(--bad); }
.before { stroke: var(--before); stroke-dasharray: 7 3; } .after { stroke: var(--after); }
.averaged { stroke-width: 1; }
.noise { stroke: var(--ink); stroke-width: 1.5; stroke-dasharray: 2 3; }
.key span { display: inline-flex; align-items: center; gap: .4rem; margin-right: 1.2rem; }
.key svg { width: 2rem; flex: none; }
.formula { font-style: italic; padding-left: 1.5rem; white-space: pre-wrap; }
.method { font-size: .9rem; }
@media screen and (max-width: 44rem) {
  .two svg text { font-size: 12px; } .four svg text { font-size: 18px; }
  .findings, .findings tbody, .findings tr, .findings td, .findings th { display: block; }
  .findings thead { display: none; } .findings tr { padding: .6rem; border-bottom: 1px solid var(--rule); }
  .findings td, .findings th, .findings tr > :nth-child(n) { padding: 0; border: 0; text-align: left;
    white-space: normal; min-width: 0; }
  .findings td::before { content: attr(data-label); color: var(--soft); }
  .four { grid-template-columns: repeat(2, 1fr); } .two { grid-template-columns: 1fr; }
  dl { grid-template-columns: 1fr; gap: 0; } dd { margin-bottom: .5rem; } }
@media print {
  @page { margin: 15mm; }
  body { padding: 0; max-width: none; font-size: 9.5pt; } .wide { overflow: visible; break-inside: avoid; }
  .wide.long { break-inside: auto; }
  h2, h3, h2 + p { break-after: avoid; } tr, .row, .verdict { break-inside: avoid; }
  * { print-color-adjust: exact; -webkit-print-color-adjust: exact; } }
)css";

}  // namespace kv::polarization
