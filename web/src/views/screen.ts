// The screen: fixations of a trial in their order, and where the eyes were over the whole recording.
import { labelled, make, styleValue } from "../dom";
import type { Trial } from "../places";
import type { Facts } from "../protocol";
import type { Source } from "../source";
import { cellNumber, columnsOf, parse } from "../tsv";
import { counted } from "../words";

interface Fixation {
  trial: number;
  eye: string;
  x: number;
  y: number;
  duration: number;
}

type Edges = [number, number, number, number];

const width = 800;
const cells = 96; // of the heat map, across
const whole = "all";

async function fixationsOf(source: Source): Promise<Fixation[]> {
  const table = parse(await source.table("fixations"));
  const [trial, eye, x, y, duration] = columnsOf(table, "trial", "eye", "x", "y", "duration");
  return table.rows
    .map((row) => ({
      trial: cellNumber(trial?.(row)),
      eye: eye?.(row) ?? "",
      x: cellNumber(x?.(row)),
      y: cellNumber(y?.(row)),
      duration: cellNumber(duration?.(row)),
    }))
    .filter(({ x: across, y: down }) => !Number.isNaN(across) && !Number.isNaN(down));
}

/** The display, or what holds all fixations when the recording does not tell it. */
function edgesOf(facts: Facts, fixations: Fixation[]): Edges {
  if (facts.display && facts.display[2] > facts.display[0] && facts.display[3] > facts.display[1]) return facts.display;
  const extent = (values: number[]): [number, number] => [
    values.reduce((a, b) => Math.min(a, b), 0),
    values.reduce((a, b) => Math.max(a, b), 1),
  ];
  const [left, right] = extent(fixations.map(({ x }) => x));
  const [top, bottom] = extent(fixations.map(({ y }) => y));
  return [left, top, right, bottom];
}

export class ScreenView {
  readonly element: HTMLElement;
  private readonly canvas = make("canvas", { role: "img", class: "display", "aria-label": "Fixations on the display" });
  private readonly told = make("p", { class: "hint", "aria-live": "polite" });
  private readonly choice: HTMLSelectElement;
  private readonly eye = make("select", { onchange: () => this.draw() });
  private fixations: Fixation[] = [];
  private edges: Edges = [0, 0, 1, 1];

  constructor(
    private readonly source: Source,
    private readonly facts: Facts,
    trials: Trial[],
  ) {
    this.choice = make("select", { onchange: () => this.draw() }, make("option", { value: whole }, "all: heat map"));
    for (const { number, text } of trials)
      this.choice.append(make("option", { value: String(number) }, `${number} ${text.slice(0, 40)}`));
    this.element = make(
      "section",
      { "aria-label": "Screen" },
      make("div", { class: "controls" }, labelled("Trial", this.choice), labelled("Eye", this.eye)),
      this.told,
      this.canvas,
    );
  }

  async load(): Promise<void> {
    this.fixations = await fixationsOf(this.source);
    this.edges = edgesOf(this.facts, this.fixations);
    const eyes = ["left", "right"].filter((name) => this.fixations.some(({ eye }) => eye === name));
    this.eye.replaceChildren(...eyes.map((name) => make("option", { value: name }, name)));
    this.draw();
  }

  draw(): void {
    const [left, top, right, bottom] = this.edges;
    this.canvas.width = width;
    this.canvas.height = Math.round((width * (bottom - top)) / (right - left));
    const pen = this.canvas.getContext("2d");
    if (pen === null) return;
    const isWhole = this.choice.value === whole;
    const chosen = this.fixations.filter(
      ({ trial, eye }) => eye === this.eye.value && (isWhole || String(trial) === this.choice.value));
    if (isWhole) this.drawHeat(pen, chosen);
    else this.drawPath(pen, chosen);
    const what = isWhole ? "Heat map of" : "In order:";
    this.told.textContent = `${what} ${counted(chosen.length, "fixation")} of the ${this.eye.value} eye`;
    this.canvas.setAttribute("aria-label", this.told.textContent);
  }

  private placeOf({ x, y }: Fixation): [number, number] {
    const [left, top, right] = this.edges;
    const scale = width / (right - left);
    return [(x - left) * scale, (y - top) * scale];
  }

  private drawPath(pen: CanvasRenderingContext2D, path: Fixation[]): void {
    pen.strokeStyle = styleValue("--muted");
    pen.beginPath();
    path.forEach((fixation) => pen.lineTo(...this.placeOf(fixation)));
    pen.stroke();
    pen.font = "12px sans-serif";
    pen.textAlign = "center";
    path.forEach((fixation, index) => {
      const [x, y] = this.placeOf(fixation);
      pen.globalAlpha = 0.45;
      pen.fillStyle = styleValue(`--${fixation.eye}`);
      pen.beginPath();
      pen.arc(x, y, 4 + Math.sqrt(Math.max(0, fixation.duration)), 0, 2 * Math.PI);
      pen.fill();
      pen.globalAlpha = 1;
      pen.fillStyle = styleValue("--ink");
      pen.fillText(String(index + 1), x, y + 4);
    });
  }

  private drawHeat(pen: CanvasRenderingContext2D, all: Fixation[]): void {
    const cell = width / cells;
    const rows = Math.max(1, Math.ceil(this.canvas.height / cell));
    const heat = new Float64Array(cells * rows);
    for (const fixation of all) {
      const [x, y] = this.placeOf(fixation);
      warm(heat, rows, x / cell, y / cell, Math.max(0, fixation.duration));
    }
    const most = heat.reduce((a, b) => Math.max(a, b), Number.MIN_VALUE);
    const small = new OffscreenCanvas(cells, rows);
    const image = new ImageData(cells, rows);
    heat.forEach((value, index) => image.data.set(heatColour(value / most), 4 * index));
    small.getContext("2d")?.putImageData(image, 0, 0);
    pen.imageSmoothingQuality = "high";
    pen.drawImage(small, 0, 0, width, rows * cell);
  }
}

const spread = 2; // cells

/** Adds a round hill of the height `amount` around a place. */
function warm(heat: Float64Array, rows: number, x: number, y: number, amount: number): void {
  const reach = 3 * spread;
  for (let row = Math.max(0, Math.floor(y - reach)); row <= Math.min(rows - 1, y + reach); ++row)
    for (let column = Math.max(0, Math.floor(x - reach)); column <= Math.min(cells - 1, x + reach); ++column) {
      const distance = (column + 0.5 - x) ** 2 + (row + 0.5 - y) ** 2;
      const index = row * cells + column;
      heat[index] = (heat[index] ?? 0) + amount * Math.exp(-distance / (2 * spread ** 2));
    }
}

/** From dark blue over green to yellow, evenly brighter: also without colours it can be read. Little heat is faint. */
function heatColour(share: number): [number, number, number, number] {
  const stops = [[68, 1, 84], [59, 82, 139], [33, 145, 140], [94, 201, 98], [253, 231, 37]];
  const place = Math.sqrt(share) * (stops.length - 1);
  const below = Math.min(Math.floor(place), stops.length - 2);
  const mixed = (part: number): number => {
    const low = stops[below]?.[part] ?? 0;
    const high = stops[below + 1]?.[part] ?? 0;
    return Math.round(low + (place - below) * (high - low));
  };
  return [mixed(0), mixed(1), mixed(2), Math.min(255, 2500 * share)];
}
