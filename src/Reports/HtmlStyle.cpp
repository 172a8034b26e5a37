#include "Reports/HtmlStyle.h"

namespace slatewise::HtmlStyle {

// Folders and rows off the screen are neither laid out nor painted until they are scrolled to, which
// is what keeps a page of 100,000 rows usable; the sizes beside "content-visibility" stand in for
// them. Rows alone would not do: a browser looks at each of those that might come into sight every
// time it paints, so whole folders are set aside first.
// Names come from foreign disks: each is isolated, so that a mark that turns the direction of
// writing ends with its name.
// Indentation ends where a name would have no room left: in a deep tree it would push names out of
// their column, and they are what people look for.

const std::string_view shared = R"css(
:root{--accent:#6e4efb;--accent-deep:#4b2cd4;--muted:#667085;color-scheme:light}
*{box-sizing:border-box}
body{margin:0;font-family:-apple-system,BlinkMacSystemFont,"Segoe UI",sans-serif;color:#1a1a1a;background:#fff}
header{padding:14px 14px 10px}
.report-title{margin:0 0 4px;font-size:22px;font-weight:720;letter-spacing:-0.02em;line-height:1.15}
.when,.session{font-size:12px;color:var(--muted);font-variant-numeric:tabular-nums}
.session b{color:#1a1a1a;font-weight:650}
.path{display:flex;flex-wrap:wrap;margin:6px 0 4px;font-size:14px;font-weight:650;word-break:break-all}
.path .sep{color:var(--accent-deep);padding:0 8px}
.counts{font-size:13px;color:#344054;font-variant-numeric:tabular-nums}
.toolbar{display:flex}
.toolbar button{border:1px solid var(--line);background:#fff;color:inherit;font-family:inherit;cursor:pointer}
.toolbar button:hover{border-color:var(--accent);color:var(--accent-deep)}
:focus-visible{outline:2px solid var(--accent);outline-offset:-2px}
ul{list-style:none;margin:0;padding:0}
.head,summary.row,.file.row{display:grid;grid-template-columns:var(--cols);width:100%}
.head>*,.row>*{min-width:0}
.head{position:sticky;top:0;z-index:1;color:#4b5563;text-transform:uppercase;background:#f3f4f6;border-bottom:1px solid var(--line)}
.row{border-bottom:1px solid #eef0f3}
summary.row{background:#fafafa;cursor:pointer;list-style:none}
summary.row::-webkit-details-marker{display:none}
summary.row:hover,.file.row:hover{background:#f4f0ff}
.name{display:flex}
.label{min-width:0;text-align:left;unicode-bidi:isolate}
summary.row .label{color:var(--accent-deep);font-weight:650;overflow-wrap:anywhere}
.twist{flex:none;color:var(--muted)}
.num{display:flex;flex-direction:column;align-items:flex-end;text-align:right;font-variant-numeric:tabular-nums;white-space:nowrap}
.num small{display:block;font-size:11px;font-weight:400;color:var(--muted)}
.hash{font-family:ui-monospace,SFMono-Regular,Menlo,monospace;color:#444;white-space:nowrap;overflow:hidden;text-overflow:ellipsis}
.muted{color:#b0b7bf}
footer{display:flex;color:var(--muted)}
footer .sp{flex:1}
footer a{color:var(--accent-deep);text-decoration:none}
details>ul,.file.row{content-visibility:auto}
details>ul{contain-intrinsic-height:auto 900px}
@page{size:A4 landscape;margin:10mm}
@media print{
*{print-color-adjust:exact;-webkit-print-color-adjust:exact}
header{padding:0 0 8px}
.report-title{font-size:18px}
.path{display:flex;flex-wrap:wrap;font-size:11px}
.when,.session,.counts{font-size:9px}
.toolbar{display:none}
.head{position:static}
details>ul,.file.row{content-visibility:visible}
.row{break-inside:avoid}
.head,.card-row,summary.row{break-after:avoid}
.num small{font-size:8px}
footer{break-inside:avoid;padding:8px 0;font-size:8px}
}
)css";

const std::string_view standard = R"css(
:root{--line:#cfd3d8;--cols:minmax(160px,1.1fr) 110px 64px 72px minmax(170px,1fr) 92px 72px 42px minmax(280px,1.4fr)}
body{font-size:13px;line-height:1.3}
.toolbar{gap:8px;margin-top:10px}
.toolbar button{border-radius:8px;padding:5px 10px;font-size:12px}
.head,summary.row,.file.row{gap:10px;padding:6px 12px;align-items:center}
.head>*:not(.n),summary.row>*:not(.n),.file.row>*:not(.n){text-align:right}
.head{font-size:11px;font-weight:650;letter-spacing:.02em}
.file.row{contain-intrinsic-height:auto 31px}
.row>*{overflow-wrap:anywhere}
.name{align-items:center}
.twist{width:36px;font-size:42px;line-height:.85;text-align:center}
details:not([open])>summary .twist{transform:rotate(-90deg)}
.file.row .name{font-weight:500;padding-left:min(calc(var(--d)*36px + 8px),calc(100% - 96px))!important}
.file.row .label{white-space:nowrap;overflow:hidden;text-overflow:ellipsis}
.file.row:hover .label{min-width:max-content;background:#f4f0ff;position:relative}
.tc,.dur,.fps,.df{font-variant-numeric:tabular-nums;white-space:nowrap}
.tc{font-weight:600}
.row>:nth-child(7){display:flex;justify-content:flex-end;font-size:11px;letter-spacing:-.01em;word-spacing:-.1em;white-space:nowrap}
.fps.mismatch{color:#b42318;font-weight:650}
.hash{font-size:11px}
.skip{color:#667085}
footer{gap:8px;padding:12px 14px;font-size:12px}
footer a:hover{text-decoration:underline}
@media print{
:root{--cols:minmax(0,1fr) 86px 48px 58px 136px 64px 66px 24px 172px}
body{font-size:9px}
.head,summary.row,.file.row{gap:8px;padding:3px 4px}
.head{font-size:8px}
.twist{width:14px;font-size:16px}
.file.row .name{padding-left:min(calc(var(--d)*12px + 2px),calc(100% - 80px))!important}
.file.row .label{white-space:normal;overflow:visible}
.row>:nth-child(7){font-size:8px}
.hash{font-size:8px;white-space:normal;overflow:visible}
}
)css";

const std::string_view detailed = R"css(
:root{--line:#d0d5dd;--cols:minmax(120px,1.1fr) 78px minmax(110px,.9fr) minmax(130px,1fr) 70px minmax(180px,1.1fr)}
body{font-size:11px;line-height:1.28}
.toolbar{gap:6px;margin-top:8px}
.toolbar button{border-radius:6px;padding:3px 8px;font-size:11px}
.head,summary.row,.file.row{gap:6px;padding:4px 8px;align-items:start}
.head{font-size:9px;font-weight:700;letter-spacing:.03em;padding-top:5px;padding-bottom:5px}
.card-row{padding:7px 10px;background:#ece6ff;border-bottom:1px solid #cfc3ff;color:#2a1a72}
.card-name{display:block;font-weight:750;font-size:12px;overflow-wrap:anywhere}
.card-facts{display:block;margin-top:3px;font-size:9px;font-weight:500;line-height:1.35;overflow-wrap:anywhere}
.file.row{contain-intrinsic-height:auto 42px}
.name{align-items:flex-start;gap:4px;font-weight:600}
.label{overflow-wrap:anywhere}
.file-id{display:flex;flex-direction:column;gap:1px;min-width:0}
.mtime{display:block;font-size:8px;font-weight:400;color:var(--muted);font-variant-numeric:tabular-nums;letter-spacing:.01em}
.twist{width:14px}
.head>:nth-child(3),.row>:nth-child(3){padding-left:8px}
.cell{white-space:pre-line;overflow-wrap:anywhere;font-variant-numeric:tabular-nums}
.fps.mismatch{color:#b42318;font-weight:650}
.hash{font-size:9px}
footer{gap:8px;padding:8px 10px;font-size:10px}
@media print{
:root{--cols:minmax(0,1.4fr) 88px minmax(0,1fr) 140px 70px 172px}
body{font-size:9px}
.hash{font-size:8px;white-space:normal;overflow-wrap:anywhere;overflow:visible}
}
)css";

} // namespace slatewise::HtmlStyle
