// The first view: what the recording holds, whether it can be trusted, and where each eye was lost.
import { button, make, styleValue, terms } from "../dom";
import type { BlockCheck, Check, Facts, Finding, Summary } from "../protocol";
import { counted, lasting, share, sized, told } from "../words";

export type GoTo = (from: number, to: number) => void;

function factRows(facts: Facts): [string, string][] {
  const { elements: counts, display } = facts;
  const rows: [string, string][] = [
    ["File", `${facts.file}, ${sized(facts.bytes)}${facts.compressed ? ", compressed" : ""}`],
    ["Recorded", facts.date ?? "not told"],
    ["Tracker", `generation ${facts.generation}, format revision ${facts.revision}`],
    ["Duration", facts.duration === null ? "–" : lasting(facts.duration)],
    ["Samples", told(counts.samples)],
    ["Fixations", told(counts.fixations)],
    ["Saccades", told(counts.saccades)],
    ["Blinks", told(counts.blinks)],
    ["Messages", told(counts.messages)],
    ["Button changes", told(counts.buttons)],
    ["Blocks", told(counts.blocks)],
  ];
  if (display) rows.push(["Display", `${display.join(", ")} px (left, top, right, bottom)`]);
  facts.calibrations.forEach(({ text }) => rows.push(["Calibration", text]));
  facts.validations.forEach(({ text }) => rows.push(["Validation", text]));
  return rows;
}

/** Facts, by name, as the tests and screen readers find them. */
export function factsView(facts: Facts): HTMLElement {
  const list = terms(factRows(facts));
  for (const row of list.children)
    row.lastElementChild?.setAttribute("data-fact", row.firstElementChild?.textContent ?? "");
  return make("section", { "aria-label": "Facts" }, make("h2", {}, "What it holds"), list);
}

function findingItem(finding: Finding, goTo: GoTo): HTMLElement {
  const { start } = finding;
  if (start === null) return make("li", {}, finding.text);
  const end = Math.max(finding.end ?? start, start);
  return make("li", {}, button(finding.text, () => goTo(start, end)));
}

function verdictOf(check: Check): string {
  if (check.state === "sound") return "Sound: nothing is missing, damaged or repaired.";
  return `${counted(check.findings.length, "finding")}. Look at each before you trust the recording there.`;
}

const findingsAtOnce = 100;

export function verdictView(check: Check, goTo: GoTo): HTMLElement {
  const list = make("ul", { class: "findings" });
  const show = (from: number): void => {
    const next = check.findings.slice(from, from + findingsAtOnce);
    list.append(...next.map((finding) => findingItem(finding, goTo)));
    const left = check.findings.length - from - next.length;
    if (left <= 0) return;
    const more = make("li");
    more.append(button(`Show more (${told(left)})`, () => { more.remove(); show(from + findingsAtOnce); }));
    list.append(more);
  };
  show(0);
  const mark = make("span", { class: "mark", "aria-hidden": "true" }, check.state === "sound" ? "✓" : "!");
  return make(
    "section",
    { "aria-label": "Verdict", class: `verdict ${check.state}` },
    make("h2", {}, "Can it be trusted?"),
    make("p", { "data-verdict": check.state }, mark, verdictOf(check)),
    list,
  );
}

const blockColumns = ["Block", "From (s)", "Length", "Samples", "Left lost", "Right lost"];

function blockCells(block: BlockCheck, index: number): string[] {
  const lost = (count: number | null) => (count === null ? "–" : share(count, block.samples));
  return [
    told(index + 1),
    (block.start / 1000).toFixed(1),
    block.end === null ? "no end" : lasting(block.end - block.start),
    `${told(block.samples)} of ${told(block.expected)}`,
    lost(block.left_lost),
    lost(block.right_lost),
  ];
}

const blocksShown = 200;

export function blocksView(check: Check, goTo: GoTo): HTMLElement {
  const head = make("tr", {}, ...blockColumns.map((name) => make("th", { scope: "col" }, name)));
  const body = make("tbody");
  check.blocks.slice(0, blocksShown).forEach((block, index) => {
    const [number = "", ...cells] = blockCells(block, index);
    const go = button(number, () => goTo(block.start, block.end ?? block.start), `Block ${number}: show`);
    body.append(make("tr", {}, make("th", { scope: "row" }, go), ...cells.map((cell) => make("td", {}, cell))));
  });
  return make(
    "section",
    { "aria-label": "Blocks" },
    make("h2", {}, "Blocks"),
    make("div", { class: "scroll", tabindex: "0", role: "region", "aria-label": "Table of blocks" },
      make("table", {}, make("thead", {}, head), body)),
  );
}

const lossHeight = 60;

/** Bars of the share of lost samples over time, of one eye. */
function lossBars(summary: Summary, eye: "left" | "right"): HTMLCanvasElement {
  const { recorded } = summary.loss;
  const lost = summary.loss[eye];
  const total = lost.reduce((sum, count) => sum + count, 0);
  const all = recorded.reduce((sum, count) => sum + count, 0);
  const canvas = make("canvas", {
    role: "img",
    "aria-label": `${eye} eye lost in ${share(total, all)} of the samples; bars over time`,
  });
  canvas.width = recorded.length;
  canvas.height = lossHeight;
  const pen = canvas.getContext("2d");
  if (pen === null) return canvas;
  recorded.forEach((count, bin) => {
    pen.fillStyle = styleValue("--faint");
    if (count > 0) pen.fillRect(bin, 0, 1, lossHeight);
    pen.fillStyle = styleValue(`--${eye}`);
    const height = count > 0 ? (lossHeight * (lost[bin] ?? 0)) / count : 0;
    pen.fillRect(bin, lossHeight - height, 1, height);
  });
  return canvas;
}

export function lossView(summary: Summary, goTo: GoTo): HTMLElement {
  const eyes = (["left", "right"] as const).filter((_, eye) => summary.curves[3 * eye]);
  const whole = () => goTo(summary.first, summary.last);
  return make(
    "section",
    { "aria-label": "Loss over time" },
    make("h2", {}, "Where the eyes were lost"),
    make("p", { class: "hint" }, "The share of samples without a position, from the first to the last sample."),
    ...eyes.map((eye) =>
      make("figure", { class: "loss" }, make("figcaption", {}, `${eye} eye`), lossBars(summary, eye))),
    button("Show the whole trace", whole),
  );
}
