#include "serve/page.h"

namespace orv::app::serve {

// One page for everything: the list of reports on the left, the chosen
// report's form, its run and its pages on the right. The script asks the
// server's API (/api/...) and draws the form from the method's parameters.
const char* PageHtml() {
  return R"PAGE(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>Orvenda reports</title>
<style>
  :root { --ink: #1d2733; --soft: #5b6b7c; --line: #d5dde6; --accent: #2a6fb0; --bad: #b3261e; --ground: #f4f6f9; }
  * { box-sizing: border-box; }
  body { margin: 0; font: 14px/1.4 "DejaVu Sans", "Liberation Sans", sans-serif; color: var(--ink); background: var(--ground); display: flex; height: 100vh; }
  #side { width: 320px; min-width: 260px; background: #fff; border-right: 1px solid var(--line); display: flex; flex-direction: column; }
  #side header { padding: 12px 14px 8px; border-bottom: 1px solid var(--line); }
  #side h1 { font-size: 17px; margin: 0 0 8px; }
  #search { width: 100%; padding: 6px 8px; border: 1px solid var(--line); border-radius: 4px; font: inherit; }
  #catalog { overflow-y: auto; overflow-x: hidden; flex: 1; padding: 4px 0 16px; }
  .method b { overflow-wrap: anywhere; }
  .family { font-weight: bold; color: var(--soft); font-size: 12px; text-transform: uppercase; letter-spacing: .04em; padding: 12px 14px 4px; }
  .method { display: block; width: 100%; text-align: left; border: 0; background: none; padding: 5px 14px; cursor: pointer; font: inherit; color: inherit; }
  .method:hover, .method.chosen { background: #e8f0f8; }
  .method b { display: block; font-weight: 600; }
  .method span { color: var(--soft); font-size: 12px; }
  .method.unbuilt { opacity: .5; }
  #main { flex: 1; overflow-y: auto; padding: 18px 24px; }
  #intro { color: var(--soft); }
  h2 { margin: 0 0 4px; font-size: 20px; }
  #summary { color: var(--soft); margin: 0 0 14px; }
  form { background: #fff; border: 1px solid var(--line); border-radius: 6px; padding: 14px 16px; max-width: 760px; }
  .field { display: grid; grid-template-columns: 190px 1fr; gap: 4px 12px; padding: 5px 0; align-items: start; }
  .field label { font-weight: 600; padding-top: 5px; }
  .field .hint { grid-column: 2; color: var(--soft); font-size: 12px; }
  .field .error { grid-column: 2; color: var(--bad); font-size: 13px; }
  .field input[type=text], .field input[type=date], .field select { font: inherit; padding: 4px 6px; border: 1px solid var(--line); border-radius: 4px; width: 100%; max-width: 420px; }
  .field input[type=checkbox] { justify-self: start; margin: 7px 0 0; width: 16px; height: 16px; }
  details.more { margin-top: 6px; border-top: 1px solid var(--line); padding-top: 6px; }
  details.more summary { cursor: pointer; color: var(--accent); }
  .field.bad input, .field.bad select { border-color: var(--bad); }
  .picker { position: relative; max-width: 420px; }
  .choices { position: absolute; z-index: 3; left: 0; right: 0; background: #fff; border: 1px solid var(--line); border-radius: 4px; box-shadow: 0 4px 12px rgba(0,0,0,.12); max-height: 240px; overflow-y: auto; }
  .choices div { padding: 4px 8px; cursor: pointer; }
  .choices div:hover { background: #e8f0f8; }
  .chip { display: inline-block; background: #e8f0f8; border-radius: 12px; padding: 2px 8px; margin: 4px 4px 0 0; }
  .chip button { border: 0; background: none; cursor: pointer; color: var(--soft); }
  select[multiple] { min-height: 110px; }
  .buttons { margin-top: 12px; display: flex; gap: 8px; align-items: center; flex-wrap: wrap; }
  button.main, a.button, .buttons button { font: inherit; padding: 6px 14px; border-radius: 4px; border: 1px solid var(--accent); background: var(--accent); color: #fff; cursor: pointer; text-decoration: none; }
  a.button.quiet, button.quiet { background: #fff; color: var(--accent); }
  #run-area { margin-top: 16px; max-width: 1100px; }
  #progress { height: 10px; background: #e1e7ee; border-radius: 5px; overflow: hidden; max-width: 760px; }
  #bar { height: 100%; width: 0; background: var(--accent); transition: width .2s; }
  #state { color: var(--soft); margin: 6px 0; }
  .message { background: #fff8e1; border: 1px solid #f0d98c; border-radius: 4px; padding: 8px 10px; margin: 6px 0; max-width: 760px; white-space: pre-wrap; }
  .message.failure, #failure { background: #fdecea; border-color: #f3b8b3; color: var(--bad); }
  #failure { border: 1px solid #f3b8b3; border-radius: 4px; padding: 10px 12px; margin: 8px 0; max-width: 760px; white-space: pre-wrap; }
  #question { background: #e8f0f8; border: 1px solid #b7cde4; border-radius: 4px; padding: 10px 12px; margin: 8px 0; max-width: 760px; }
  #viewer { display: flex; gap: 12px; margin-top: 10px; }
  #thumbs { width: 118px; flex: none; max-height: 80vh; overflow-y: auto; }
  #thumbs img { width: 100px; display: block; margin: 0 0 8px; border: 2px solid transparent; background: #fff; cursor: pointer; box-shadow: 0 1px 3px rgba(0,0,0,.2); }
  #thumbs img.current { border-color: var(--accent); }
  #thumbs .n { font-size: 11px; color: var(--soft); margin: -6px 0 6px; }
  #sheet { flex: 1; overflow: auto; max-height: 80vh; background: #c9d1da; padding: 12px; border-radius: 4px; }
  #page { display: block; margin: 0 auto; background: #fff; box-shadow: 0 2px 8px rgba(0,0,0,.3); }
  .tools { display: flex; gap: 6px; align-items: center; flex-wrap: wrap; margin-top: 10px; }
  .tools button, .tools select { font: inherit; padding: 4px 10px; }
  [hidden] { display: none !important; }
</style>
</head>
<body>
<nav id="side">
  <header>
    <h1>Reports</h1>
    <input id="search" type="search" placeholder="Search reports" autocomplete="off">
  </header>
  <div id="catalog"></div>
</nav>
<main id="main">
  <p id="intro">Choose a report on the left. Its form asks for what the report needs; the pages appear here when it has run.</p>
  <section id="report" hidden>
    <h2 id="title"></h2>
    <p id="summary"></p>
    <form id="form" autocomplete="off">
      <div id="fields"></div>
      <div class="buttons"><button class="main" id="run" type="submit">Run the report</button><span id="form-error" class="error" style="color:var(--bad)"></span></div>
    </form>
  </section>
  <section id="run-area" hidden>
    <div id="progress"><div id="bar"></div></div>
    <div id="state"></div>
    <div class="buttons" id="stop"><button id="cancel" class="quiet" type="button">Cancel the run</button></div>
    <div id="question" hidden><div id="question-text"></div>
      <div class="buttons"><button id="yes" type="button">Yes</button><button id="no" class="quiet" type="button">No</button></div></div>
    <div id="messages"></div>
    <div id="failure" hidden></div>
    <div id="result" hidden>
      <div class="tools">
        <button id="prev" type="button" title="Previous page">&#9664;</button>
        <span id="page-no"></span>
        <button id="next" type="button" title="Next page">&#9654;</button>
        <button id="zoom-out" type="button" title="Smaller">&minus;</button>
        <span id="zoom-level"></span>
        <button id="zoom-in" type="button" title="Larger">+</button>
        <a id="download-pdf" class="button" download>Download PDF</a>
        <a id="download-csv" class="button quiet" download>Download CSV</a>
        <a id="download-zip" class="button quiet" download hidden>One PDF per statement (zip)</a>
        <select id="printer"></select>
        <button id="print" type="button">Print</button>
        <span id="print-state"></span>
      </div>
      <div id="viewer">
        <div id="thumbs"></div>
        <div id="sheet"><img id="page" alt="page"></div>
      </div>
    </div>
  </section>
</main>
<script>
"use strict";
const $ = (id) => document.getElementById(id);
const state = { methods: [], info: {}, method: null, run: null, page: 1, pages: 0, zoom: 1.0, providers: null };

async function api(path, options) {
  const r = await fetch(path, Object.assign({ credentials: "same-origin" }, options || {}));
  const type = r.headers.get("Content-Type") || "";
  const body = type.startsWith("application/json") ? await r.json() : await r.text();
  return { ok: r.ok, status: r.status, body };
}

function el(tag, attrs, ...children) {
  const e = document.createElement(tag);
  for (const [k, v] of Object.entries(attrs || {})) {
    if (k === "class") e.className = v; else if (k.startsWith("on")) e.addEventListener(k.slice(2), v); else e.setAttribute(k, v);
  }
  for (const c of children) e.append(c);
  return e;
}

// ------------------------------------------------------------ the catalogue
function drawCatalog() {
  const q = $("search").value.trim().toLowerCase();
  const box = $("catalog");
  box.textContent = "";
  for (const family of state.info.families) {
    const rows = state.methods.filter((m) => m.family === family && !m.params.some((p) => p.kind === "object") &&
      (!q || m.name.toLowerCase().includes(q) || m.summary.toLowerCase().includes(q) || family.toLowerCase().includes(q)));
    if (!rows.length) continue;
    box.append(el("div", { class: "family" }, family));
    for (const m of rows) {
      const b = el("button", { class: "method" + (m.built ? "" : " unbuilt"), id: "method-" + m.name, type: "button",
        onclick: () => choose(m.name) }, el("b", {}, m.name), el("span", {}, m.summary + (m.built ? "" : " (not built yet)")));
      if (state.method && state.method.name === m.name) b.classList.add("chosen");
      box.append(b);
    }
  }
}

// ------------------------------------------------------------ the form
function defaultDate(p) {
  const n = p.name.toLowerCase();
  const today = state.info.today;
  if (/start|from|begin/.test(n)) return today.slice(0, 4) + "-01-01";
  return today;
}

function fieldFor(p) {
  const id = "f-" + p.name;
  const wrap = el("div", { class: "field", id: "field-" + p.name });
  const label = el("label", { for: id }, p.name + (p.optional ? " (optional)" : ""));
  let input, read;
  switch (p.kind) {
    case "date":
      input = el("input", { type: "date", id, min: "1753-01-01", max: "9999-12-31" });
      input.value = defaultDate(p);
      read = () => input.value;
      break;
    case "boolean":
      input = el("input", { type: "checkbox", id });
      read = () => (input.checked ? "True" : "False");
      break;
    case "enum":
      input = el("select", { id });
      for (const v of p.values) input.append(el("option", { value: v.name }, v.name));
      read = () => input.value;
      break;
    case "user":
      input = el("input", { type: "text", id });
      input.value = state.info.user || "";
      read = () => input.value;
      break;
    case "patient": case "patients":
      ({ input, read } = patientPicker(id, p.kind === "patients"));
      break;
    case "providers": case "provider-list":
      ({ input, read } = providerPicker(id, p));
      break;
    case "filter":
      if (!state.info.allow_filters) return null;
      input = el("input", { type: "text", id, placeholder: "a SQL condition, empty for all" });
      read = () => input.value;
      break;
    default:
      input = el("input", { type: "text", id });
      read = () => input.value;
  }
  wrap.append(label, input);
  if (p.meaning) wrap.append(el("div", { class: "hint" }, p.meaning));
  wrap.append(el("div", { class: "error", id: "e-" + p.name }));
  wrap.read = read;
  return wrap;
}

function patientPicker(id, many) {
  const box = el("div", { class: "picker" });
  const text = el("input", { type: "text", id, placeholder: "Type part of a name, or a number" });
  const list = el("div", { class: "choices", hidden: "" });
  const chosen = el("div", { id: id + "-chosen" });
  const ids = [];
  let timer = null;
  const show = (items) => {
    list.textContent = "";
    if (!items.length) list.append(el("div", { class: "none" }, "No patient matches."));
    for (const it of items) {
      list.append(el("div", { class: "choice", "data-id": it.id, onclick: () => pick(it) },
        it.name + (it.birth ? "  (" + it.birth + ")" : "") + "  #" + it.id));
    }
    list.hidden = false;
  };
  const pick = (it) => {
    if (!many) { ids.length = 0; chosen.textContent = ""; }
    if (!ids.includes(it.id)) {
      ids.push(it.id);
      const chip = el("span", { class: "chip" }, it.name + " #" + it.id,
        el("button", { type: "button", title: "Remove", onclick: () => { ids.splice(ids.indexOf(it.id), 1); chip.remove(); } }, "\u00d7"));
      chosen.append(chip);
    }
    text.value = "";
    list.hidden = true;
  };
  text.addEventListener("input", () => {
    clearTimeout(timer);
    const q = text.value.trim();
    if (q.length < 2) { list.hidden = true; return; }
    timer = setTimeout(async () => {
      const r = await api("/api/patients?q=" + encodeURIComponent(q));
      if (r.ok) show(r.body);
    }, 150);
  });
  // The list closes when the field is left (after a click on it has landed).
  text.addEventListener("blur", () => setTimeout(() => { list.hidden = true; }, 200));
  box.append(text, list, chosen);
  // A name typed but not picked is no patient: the field says so.
  const read = () => {
    if (!ids.length && text.value.trim()) throw new FieldError("Pick a patient from the list (\u201c" + text.value.trim() + "\u201d is not one yet).");
    return ids.join(",");
  };
  return { input: box, read };
}

function providerPicker(id, p) {
  const sel = el("select", { id, multiple: "" });
  const fill = (list) => {
    for (const e of list) sel.append(el("option", { value: e.id }, e.name + " #" + e.id + (e.active ? "" : " (inactive)")));
  };
  if (state.providers) fill(state.providers);
  else api("/api/providers").then((r) => { if (r.ok) { state.providers = r.body; fill(r.body); } });
  const read = () => {
    const ids = [...sel.selectedOptions].map((o) => o.value);
    if (p.kind === "provider-list") return ids.join(",");
    return ids.map((n) => p.column + " = " + n).join(" OR ");
  };
  return { input: sel, read };
}

class FieldError extends Error {}

function choose(name) {
  const m = state.methods.find((x) => x.name === name);
  state.method = m;
  drawCatalog();
  $("intro").hidden = true;
  $("report").hidden = false;
  $("title").textContent = m.name;
  $("summary").textContent = m.summary + (m.built ? "" : "  This report is not built yet.");
  const box = $("fields");
  box.textContent = "";
  // What a report needs stands first; its options fold away below.
  const more = el("details", { class: "more" }, el("summary", {}, "More options"));
  for (const p of m.params) {
    const f = fieldFor(p);
    if (f) { f.param = p; f.classList.add("param"); (p.optional ? more : box).append(f); }
  }
  if (more.children.length > 1) box.append(more);
  $("run").disabled = !m.built;
  $("form-error").textContent = "";
  // The pages of another report's run go with it.
  state.run = null;
  $("run-area").hidden = true;
  history.replaceState(null, "", "#" + m.name);
}

function clearErrors() {
  for (const e of document.querySelectorAll(".field .error")) e.textContent = "";
  for (const f of document.querySelectorAll(".field.bad")) f.classList.remove("bad");
  $("form-error").textContent = "";
}

function showFieldError(name, text) {
  const e = $("e-" + name);
  if (!e) { $("form-error").textContent = text; return; }
  e.textContent = text;
  $("field-" + name).classList.add("bad");
  const fold = $("field-" + name).closest("details");
  if (fold) fold.open = true;
}

async function submit(ev) {
  ev.preventDefault();
  clearErrors();
  const args = {};
  let bad = false;
  for (const f of $("fields").querySelectorAll(".param")) {
    const p = f.param;
    try {
      const v = f.read();
      if (p.kind === "date" && !v && !p.optional) throw new FieldError("Give a date.");
      // An optional argument left empty is not passed, as on the command line.
      if (v === "" && p.optional) continue;
      args[p.name] = v;
    } catch (e) {
      if (!(e instanceof FieldError)) throw e;
      showFieldError(p.name, e.message);
      bad = true;
    }
  }
  // Required filters the page does not show are "none".
  for (const p of state.method.params) if (!(p.name in args) && !p.optional && p.kind === "filter") args[p.name] = "";
  if (bad) return;
  const r = await api("/api/runs", { method: "POST", headers: { "Content-Type": "application/json" }, body: JSON.stringify({ method: state.method.name, args }) });
  if (!r.ok) {
    const fields = (r.body && r.body.fields) || {};
    let any = false;
    for (const [name, text] of Object.entries(fields)) { showFieldError(name, text); any = true; }
    if (!any) $("form-error").textContent = (r.body && r.body.error) || String(r.body);
    return;
  }
  startWatching(r.body.id);
}

// ------------------------------------------------------------ a run
function startWatching(id) {
  state.run = id;
  state.pages = 0;
  $("run-area").hidden = false;
  $("result").hidden = true;
  $("failure").hidden = true;
  $("question").hidden = true;
  $("messages").textContent = "";
  $("print-state").textContent = "";
  $("bar").style.width = "0";
  $("state").textContent = "Waiting for its turn\u2026";
  $("run").disabled = true;
  $("stop").hidden = false;
  $("cancel").disabled = false;
  poll();
}

async function poll() {
  const id = state.run;
  const r = await api("/api/runs/" + id);
  if (id !== state.run) return;
  if (!r.ok) { $("state").textContent = (r.body && r.body.error) || "The run is gone."; $("run").disabled = false; return; }
  const s = r.body;
  $("bar").style.width = s.progress + "%";
  $("messages").textContent = "";
  for (const m of s.messages) $("messages").append(el("div", { class: "message" + (m.failure ? " failure" : "") }, (m.title ? m.title + ": " : "") + m.text));
  $("question").hidden = s.state !== "question";
  if (s.state === "question") $("question-text").textContent = s.question;
  if (s.state === "queued") $("state").textContent = "Waiting for its turn\u2026";
  else if (s.state === "running" || s.state === "question")
    $("state").textContent = $("cancel").disabled ? "Cancelling\u2026" : "Running: " + s.progress + "%";
  $("stop").hidden = s.state === "done" || s.state === "failed";
  if (s.state === "done") return finished(s);
  if (s.state === "failed") {
    $("run").disabled = false;
    $("question").hidden = true;
    $("state").textContent = s.cancelled ? "Cancelled." : "The report did not finish.";
    $("failure").hidden = !!s.cancelled;
    $("failure").textContent = s.error;
    return;
  }
  setTimeout(poll, 200);
}

async function cancelRun() {
  $("cancel").disabled = true;
  $("state").textContent = "Cancelling\u2026";
  await api("/api/runs/" + state.run + "/cancel", { method: "POST" });
}

async function answer(yes) {
  $("question").hidden = true;
  await api("/api/runs/" + state.run + "/answer", { method: "POST", headers: { "Content-Type": "application/json" }, body: JSON.stringify({ answer: yes ? "yes" : "no" }) });
}

function finished(s) {
  $("run").disabled = false;
  state.pages = s.pages;
  const took = s.seconds < 1 ? "under a second" : s.seconds.toFixed(1) + " s";
  $("state").textContent = s.pages ? "Done in " + took + ": " + s.pages + (s.pages === 1 ? " page." : " pages.") :
    (s.result !== undefined ? "Result: " + s.result : "Done; the report drew nothing.");
  if (!s.pages) return;
  const base = "/api/runs/" + s.id;
  $("download-pdf").href = base + "/document.pdf";
  $("download-csv").href = base + "/document.csv";
  $("download-zip").href = base + "/statements.zip";
  $("download-zip").hidden = !["rptStatements", "rptBulkStatements"].includes(s.method);
  const thumbs = $("thumbs");
  thumbs.textContent = "";
  for (let n = 1; n <= s.pages; n++) {
    // Thumbnails load as they scroll into view: a long report's pages are
    // rendered only when someone looks at them.
    thumbs.append(el("img", { src: base + "/pages/" + n + ".png?dpi=14", loading: "lazy", "data-page": n, alt: "page " + n, onclick: () => show(n) }),
      el("div", { class: "n" }, String(n)));
  }
  $("result").hidden = false;
  show(1);
  $("run-area").scrollIntoView({ block: "start" });
}

function show(n) {
  state.page = Math.min(Math.max(1, n), state.pages);
  const dpi = Math.round(96 * state.zoom);
  $("page").src = "/api/runs/" + state.run + "/pages/" + state.page + ".png?dpi=" + dpi;
  $("page-no").textContent = "Page " + state.page + " of " + state.pages;
  $("zoom-level").textContent = Math.round(state.zoom * 100) + "%";
  for (const t of $("thumbs").querySelectorAll("img")) t.classList.toggle("current", Number(t.dataset.page) === state.page);
}

function zoom(factor) {
  state.zoom = Math.min(2.5, Math.max(0.5, Math.round(state.zoom * factor * 4) / 4));
  show(state.page);
}

async function print() {
  const printer = $("printer").value;
  if (!printer) return;
  $("print-state").textContent = "Sending\u2026";
  const r = await api("/api/runs/" + state.run + "/print", { method: "POST", headers: { "Content-Type": "application/json" }, body: JSON.stringify({ printer }) });
  $("print-state").textContent = r.ok ? "Sent to " + printer + "." : (r.body && r.body.error) || "Not printed.";
}

async function start() {
  const r = await api("/api/methods");
  if (!r.ok) { $("intro").textContent = (r.body && r.body.error) || "The server did not answer."; return; }
  state.info = r.body;
  state.methods = r.body.methods;
  drawCatalog();
  const printers = await api("/api/printers");
  const list = (printers.ok && printers.body.printers) || [];
  if (!list.length) $("printer").append(el("option", { value: "" }, "(no printer on this machine)"));
  for (const p of list) $("printer").append(el("option", { value: p }, p));
  $("print").disabled = !list.length;
  const wanted = decodeURIComponent(location.hash.slice(1));
  if (wanted && state.methods.some((m) => m.name === wanted)) choose(wanted);
  document.body.dataset.ready = "1";
}

// A link to "#rptFeeGuide" opens that report's form.
window.addEventListener("hashchange", () => {
  const wanted = decodeURIComponent(location.hash.slice(1));
  if (state.methods.some((m) => m.name === wanted) && (!state.method || state.method.name !== wanted)) choose(wanted);
});
$("search").addEventListener("input", drawCatalog);
$("form").addEventListener("submit", submit);
$("cancel").addEventListener("click", cancelRun);
$("yes").addEventListener("click", () => answer(true));
$("no").addEventListener("click", () => answer(false));
$("prev").addEventListener("click", () => show(state.page - 1));
$("next").addEventListener("click", () => show(state.page + 1));
$("zoom-in").addEventListener("click", () => zoom(1.25));
$("zoom-out").addEventListener("click", () => zoom(0.8));
$("print").addEventListener("click", print);
start();
</script>
</body>
</html>
)PAGE";
}

}  // namespace orv::app::serve
