#include "Reports/HtmlStyle.h"

namespace slatewise::HtmlStyle {

// Lists off the screen are neither laid out nor painted until they are scrolled to, which is what
// keeps a page of 100,000 rows usable; the height beside "content-visibility" stands in for them.
// Single rows would not do: a browser looks at each of those that might come into sight every time
// it paints.
// What lies outside such a list is clipped, so no row may be wider than the window: first the hash
// gets a line of its own, then each row becomes a block.
// Names come from foreign disks: each is isolated, so that a mark that turns the direction of
// writing ends with its name.
// Indentation ends where a name would have no room left: in a deep tree it would push names out of
// their column, and they are what people look for. Where the window is narrow its steps shrink
// first, and the lines that mark them end where it does.
// On paper the tree is a table of one cell, for only a table's head stands on every page.

const std::string_view shared = R"css(
:root{--accent:#6e4efb;--accent-deep:#4b2cd4;--muted:#667085;--fg:#1a1a1a;--bg:#fff;--soft:#f3f4f6;--folder:#fafafa;--hover:#f4f0ff;--hair:#eef0f3;--dim:#b0b7bf;--title:#4b5563;--hash:#444;--skip:#667085;--ok:#17713a;--info:#175cd3;--bad:#b42318;--amber:#8a5300;--amber-bg:#fff4d6;--red-bg:#fdecea;color-scheme:light dark}
@media screen and (prefers-color-scheme:dark){
:root:root{--accent:#9d86ff;--accent-deep:#b9a8ff;--muted:#98a2b3;--line:#3a3f4a;--fg:#e8eaed;--bg:#15171c;--soft:#22252d;--folder:#1b1e25;--hover:#2a2540;--hair:#262a33;--dim:#667085;--title:#c3c9d4;--hash:#c3c9d4;--skip:#98a2b3;--ok:#5bd08a;--info:#84b6ff;--bad:#ff9b90;--amber:#ffcf70;--amber-bg:#3a2e10;--red-bg:#43201d}
}
*{box-sizing:border-box}
body{margin:0;font-family:-apple-system,BlinkMacSystemFont,"Segoe UI",sans-serif;color:var(--fg);background:var(--bg)}
header{padding:14px 14px 10px}
.verdict{display:flex;flex-wrap:wrap;align-items:baseline;gap:2px 14px;margin-bottom:8px;padding:9px 14px;border-radius:8px;color:#fff;background:#b42318}
.verdict strong{font-size:20px;font-weight:800;letter-spacing:.04em}
.verdict span{font-size:14px;font-weight:550}
.verdict.verified{background:#17713a}
.verdict.hashed{background:#175cd3}
.facts{display:flex;flex-wrap:wrap;gap:4px 22px;margin:0 0 8px}
.facts dt{font-size:11px;color:var(--muted)}
.facts dd{margin:0;font-size:13px;font-weight:600;font-variant-numeric:tabular-nums;overflow-wrap:anywhere;unicode-bidi:isolate}
.problems{margin:8px 0 0;padding:8px 14px;border-left:6px solid #e0a100;border-radius:4px;font-size:13px;color:var(--amber);background:var(--amber-bg)}
.problems.failure{border-color:#b42318;color:var(--bad);background:var(--red-bg)}
.problems li{margin-top:3px;font-weight:550;overflow-wrap:anywhere}
.problems li,.problems li span{unicode-bidi:isolate}
.report-title{margin:0 0 4px;font-size:22px;font-weight:720;letter-spacing:-0.02em;line-height:1.15}
.when,.session{font-size:12px;color:var(--muted);font-variant-numeric:tabular-nums;overflow-wrap:anywhere}
.session b{color:var(--fg);font-weight:650}
.path{display:flex;flex-wrap:wrap;margin:6px 0 4px;font-size:14px;font-weight:650;word-break:break-all}
.path .sep{color:var(--accent-deep);padding:0 8px}
.counts{font-size:13px;color:var(--title);font-variant-numeric:tabular-nums}
.toolbar{display:flex;flex-wrap:wrap}
.toolbar button{border:1px solid var(--line);background:var(--bg);color:inherit;font-family:inherit;cursor:pointer}
.toolbar button:hover{border-color:var(--accent);color:var(--accent-deep)}
:focus-visible{outline:2px solid var(--accent);outline-offset:-2px}
ul{list-style:none;margin:0;padding:0}
.head,summary.row,.file.row{display:grid;grid-template-columns:var(--cols);width:100%}
.head>*,.row>*{min-width:0}
.heads{position:sticky;top:0;z-index:1}
.head{color:var(--title);text-transform:uppercase;background:var(--soft);border-bottom:1px solid var(--line)}
.row{border-bottom:1px solid var(--hair)}
summary.row{background-color:var(--folder);cursor:pointer;list-style:none}
summary.row::-webkit-details-marker{display:none}
summary.row:hover,.file.row:hover{background-color:var(--hover)}
.name{display:flex}
.label{min-width:0;text-align:left;unicode-bidi:isolate}
summary.row .label{color:var(--accent-deep);font-weight:650;overflow-wrap:anywhere}
.twist{flex:none;color:var(--muted)}
.num{display:flex;flex-direction:column;align-items:flex-end;text-align:right;font-variant-numeric:tabular-nums;white-space:nowrap}
.num small{display:block;font-size:11px;font-weight:400;color:var(--muted)}
.hash{font-family:ui-monospace,SFMono-Regular,Menlo,monospace;color:var(--hash);white-space:nowrap;overflow:hidden;text-overflow:ellipsis}
.muted{color:var(--dim)}
.skip{color:var(--skip)}
.ok{color:var(--ok)}
.row .hashed{color:var(--info)}
.alarm{color:var(--bad);background:var(--red-bg);font-weight:750}
.fps.mismatch{color:var(--bad);font-weight:650}
footer{display:flex;color:var(--muted)}
footer .sp{flex:1}
footer a{color:var(--accent-deep);text-decoration:none}
.tree>ul,details>ul{content-visibility:auto;contain-intrinsic-height:auto calc(var(--n,24)*var(--high))}
@media screen and (max-width:899px){
.heads{display:none}
summary.row,.file.row{display:flex;flex-wrap:wrap;align-items:baseline;gap:2px 14px}
.row>.name.name.name{flex:1 0 100%;padding-left:0!important}
.row>*{max-width:100%;text-align:left!important;padding-left:0!important}
.file.row>:not(.name)::before{margin-right:6px;white-space:nowrap;font:400 10px sans-serif;letter-spacing:0;color:var(--muted)}
.row>.num{flex-direction:row;align-items:baseline;gap:6px}
.row .label{white-space:normal!important;overflow-wrap:anywhere}
.row>.hash{flex:1 0 100%;white-space:normal;overflow-wrap:anywhere}
summary.row>.muted,.row>span:empty{display:none}
details>ul{margin-left:9px;border-left:2px solid var(--line)}
details details details details details details details details>ul{margin-left:0;border-left:0}
}
@media screen and (min-width:900px) and (max-width:1649px){
.row>.hash{white-space:normal;overflow:visible;overflow-wrap:anywhere}
}
@page{size:A4 landscape;margin:10mm 10mm 12mm;@bottom-right{content:counter(page) " / " counter(pages);font:7px sans-serif;color:#667085}}
@media print{
:root{color-scheme:light}
*{print-color-adjust:exact;-webkit-print-color-adjust:exact}
header{padding:0 0 8px}
.verdict{padding:5px 10px;margin-bottom:5px}
.verdict strong{font-size:14px}
.verdict span,.problems{font-size:10px}
.problems{padding:4px 10px;margin-top:6px}
.facts{gap:2px 18px;margin-bottom:5px}
.facts dt{font-size:7px}
.facts dd{font-size:9px}
.report-title{font-size:15px}
.path{font-size:10px}
.when,.session,.counts{font-size:9px}
.toolbar{display:none}
.tree{display:table;table-layout:fixed;width:100%}
.heads{position:static;display:table-header-group;break-inside:avoid}
.tree>ul{display:table-row-group}
.tree>ul,details>ul{content-visibility:visible}
.row{break-inside:avoid}
.num small{font-size:8px}
footer{break-inside:avoid;padding:6px 0 0;font-size:7px}
}
)css";

const std::string_view standard = R"css(
:root{--line:#cfd3d8;--high:31px;--step:36px;--twist:36px;--room:96px;--lines:10vw;--cols:minmax(160px,1.1fr) 110px 64px 84px minmax(170px,1fr) 92px 72px 42px minmax(280px,1.4fr)}
body{font-size:13px;line-height:1.3}
.toolbar{gap:8px;margin-top:10px}
.toolbar button{border-radius:8px;padding:5px 10px;font-size:12px}
.head,summary.row,.file.row{gap:10px;padding:6px 12px;align-items:center}
.head>*:not(.n),summary.row>*:not(.n),.file.row>*:not(.n){text-align:right}
.head{font-size:11px;font-weight:650;letter-spacing:.02em}
.name{align-items:center}
summary.row .name{padding-left:min(calc(var(--d)*var(--step)),calc(100% - var(--twist) - var(--room)))}
.twist{width:var(--twist);font-size:42px;line-height:.85;text-align:center}
details:not([open])>summary .twist{transform:rotate(-90deg)}
.file.row .name{font-weight:500;padding-left:min(calc(var(--d)*var(--step) + 8px),calc(100% - var(--room)))!important}
.file.row .label{white-space:nowrap;overflow:hidden;text-overflow:ellipsis}
.file.row:hover .label{min-width:max-content;background:var(--hover);position:relative}
.tc,.dur,.fps,.df{font-variant-numeric:tabular-nums;white-space:nowrap}
.tc{font-weight:600}
.row>:nth-child(7){display:flex;justify-content:flex-end;font-size:11px;letter-spacing:-.01em;word-spacing:-.1em;white-space:nowrap}
.hash{font-size:11px}
footer{gap:8px;padding:12px 14px;font-size:12px}
footer a:hover{text-decoration:underline}
@media screen and (min-width:900px){
summary.row,.file.row{background-image:repeating-linear-gradient(90deg,var(--line) 0 1px,transparent 1px var(--step));background-repeat:no-repeat;background-position:calc(12px + var(--twist)/2) 0;background-size:min(calc(var(--d)*var(--step)),var(--lines)) 100%}
}
@media screen and (min-width:900px) and (max-width:1599px){
:root{--step:18px}
}
@media screen and (hover:none){
.file.row .label{white-space:normal;overflow:visible;overflow-wrap:anywhere}
}
@media screen and (min-width:900px) and (max-width:1189px){
:root{--step:clamp(7px,(100vw - 880px)/14,12px);--twist:22px;--room:clamp(96px,100vw - 870px,150px);--lines:calc(100vw - 754px - var(--room));--cols:minmax(150px,1fr) 110px 64px 84px 170px 92px 72px 42px;--high:46px}
.head>:last-child{display:none}
summary.row>:last-child{display:none}
.file.row>:last-child{grid-column:1/-1;text-align:left!important;padding-left:min(calc(var(--d)*var(--step) + 8px),25%)}
.twist{font-size:26px}
.file.row .label,.file.row:hover .label{min-width:0;white-space:normal;overflow:visible;overflow-wrap:anywhere}
}
@media screen and (max-width:899px){
:root{--high:94px;--twist:22px}
.twist{font-size:26px}
.row>:nth-child(7){align-items:baseline;font-size:inherit;letter-spacing:0;word-spacing:0}
}
@media print{
:root{--twist:14px;--cols:minmax(0,1fr) 86px 48px 64px 136px 64px 66px 24px 172px}
body{font-size:9px}
.head,summary.row,.file.row{gap:8px;padding:3px 4px}
.head{font-size:8px}
.twist{font-size:16px}
summary.row .name{padding-left:min(calc(var(--d)*12px),calc(100% - 90px))}
.file.row .name{padding-left:min(calc(var(--d)*12px + 2px),calc(100% - 80px))!important}
.file.row .label{white-space:normal;overflow:visible;overflow-wrap:anywhere}
.row>:nth-child(7){font-size:8px}
.hash{font-size:8px;white-space:normal;overflow:visible;overflow-wrap:anywhere}
}
)css";

const std::string_view detailed = R"css(
:root{--line:#d0d5dd;--high:42px;--card:#ece6ff;--card-line:#cfc3ff;--card-fg:#2a1a72;--cols:minmax(120px,1.1fr) 78px minmax(110px,.9fr) minmax(130px,1fr) 80px minmax(180px,1.1fr)}
@media screen and (prefers-color-scheme:dark){
:root:root{--card:#2a2248;--card-line:#473a7a;--card-fg:#ded6ff}
}
body{font-size:11px;line-height:1.28}
.toolbar{gap:6px;margin-top:8px}
.toolbar button{border-radius:6px;padding:3px 8px;font-size:11px}
.head,summary.row,.file.row{gap:6px;padding:4px 8px;align-items:start}
.head{font-size:9px;font-weight:700;letter-spacing:.03em;padding-top:5px;padding-bottom:5px}
.card-row{padding:7px 10px;background:var(--card);border-bottom:1px solid var(--card-line);color:var(--card-fg)}
.card-name{display:block;font-weight:750;font-size:12px;overflow-wrap:anywhere}
.card-facts{display:block;margin-top:3px;font-size:9px;font-weight:500;line-height:1.35;overflow-wrap:anywhere}
.name{align-items:flex-start;gap:4px;font-weight:600}
summary.row .name{padding-left:min(calc(var(--d)*14px),calc(100% - 104px))}
.file.row .name{padding-left:min(calc(var(--d)*14px + 4px),calc(100% - 92px))!important}
.label{overflow-wrap:anywhere}
.file-id{display:flex;flex-direction:column;gap:1px;min-width:0}
.mtime{display:block;font-size:8px;font-weight:400;color:var(--muted);font-variant-numeric:tabular-nums;letter-spacing:.01em}
.twist{width:14px}
.head>:nth-child(2){text-align:right}
.head>:nth-child(3),.row>:nth-child(3){padding-left:8px}
.cell{white-space:pre-line;font-variant-numeric:tabular-nums}
.cell:not(.alarm){overflow-wrap:anywhere}
.cell.alarm{padding:0 3px}
.hash{font-size:9px}
footer{gap:8px;padding:8px 10px;font-size:10px}
@media screen and (max-width:899px){
:root{--high:86px}
body{font-size:13px}
.mtime{font-size:11px}
.card-facts,.hash{font-size:11px}
.cell{white-space:normal}
summary.row>:nth-child(5){display:none}
}
@media print{
:root{--cols:minmax(0,1.4fr) 88px minmax(0,1fr) 140px 74px 172px}
body{font-size:9px}
.hash{font-size:8px;white-space:normal;overflow-wrap:anywhere;overflow:visible}
}
)css";

} // namespace slatewise::HtmlStyle
